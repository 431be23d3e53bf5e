#pragma once
#include <QAbstractTableModel>
#include <QDateTime>
#include <QList>
#include <QString>

// The messages of the event bus as a table: one row per message, oldest first, with its
// time, its kind and its text. Holds at most maxRows() rows; beyond, the oldest go.
// Used on the GUI thread only (ZNGuiEventBus brings messages there).
class ZNMessageLog : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { TimeColumn = 0, KindColumn = 1, TextColumn = 2, ColumnCount = 3 };
    struct Entry {
        QDateTime time;
        int kind = 0;
        QString text;
    };
    static constexpr int kDefaultMaxRows = 10000;

    explicit ZNMessageLog(QObject* parent = nullptr);

    // The name of a message kind as the log shows it: "Information", "Error", "File
    // error", "Progress", "Detail"; "Kind N" for another one.
    static QString kindName(int kind);

    void append(int kind, const QString& text, const QDateTime& time = QDateTime::currentDateTime());
    void clear();
    const QList<Entry>& entries() const { return m_entries; }
    int maxRows() const { return m_maxRows; }
    void setMaxRows(int rows);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void dropOldest(int count);

    QList<Entry> m_entries;
    int m_maxRows = kDefaultMaxRows;
};
