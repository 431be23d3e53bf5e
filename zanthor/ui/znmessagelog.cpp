#include "znmessagelog.h"

#include <QBrush>
#include <QColor>

#include <zneventbus.h>

namespace {
const QColor kErrorColour(0xb0, 0x1c, 0x1c);  // text of error rows
}

ZNMessageLog::ZNMessageLog(QObject* parent) : QAbstractTableModel(parent) {}

QString ZNMessageLog::kindName(int kind)
{
    switch (kind) {
    case ZNEventBus::Information: return tr("Information");
    case ZNEventBus::Error: return tr("Error");
    case ZNEventBus::FileError: return tr("File error");
    case ZNEventBus::Progress: return tr("Progress");
    case ZNEventBus::Detail: return tr("Detail");
    default: return tr("Kind %1").arg(kind);
    }
}

void ZNMessageLog::append(int kind, const QString& text, const QDateTime& time)
{
    if (m_entries.size() >= m_maxRows) dropOldest(m_entries.size() - m_maxRows + 1);
    const int row = m_entries.size();
    beginInsertRows(QModelIndex(), row, row);
    m_entries.append(Entry{time, kind, text});
    endInsertRows();
}

void ZNMessageLog::clear()
{
    beginResetModel();
    m_entries.clear();
    endResetModel();
}

void ZNMessageLog::setMaxRows(int rows)
{
    m_maxRows = rows < 1 ? 1 : rows;
    if (m_entries.size() > m_maxRows) dropOldest(m_entries.size() - m_maxRows);
}

void ZNMessageLog::dropOldest(int count)
{
    if (count <= 0) return;
    beginRemoveRows(QModelIndex(), 0, count - 1);
    m_entries.erase(m_entries.begin(), m_entries.begin() + count);
    endRemoveRows();
}

int ZNMessageLog::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int ZNMessageLog::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ZNMessageLog::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size()) return QVariant();
    const Entry& e = m_entries[index.row()];
    const bool error = e.kind == ZNEventBus::Error || e.kind == ZNEventBus::FileError;
    if (role == Qt::ForegroundRole) return error ? QVariant(QBrush(kErrorColour)) : QVariant();
    if (role == Qt::ToolTipRole && index.column() == TextColumn) return e.text;
    if (role != Qt::DisplayRole) return QVariant();
    switch (index.column()) {
    case TimeColumn: return e.time.toString(QStringLiteral("HH:mm:ss"));
    case KindColumn: return kindName(e.kind);
    case TextColumn: return e.text;
    default: return QVariant();
    }
}

QVariant ZNMessageLog::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return QVariant();
    switch (section) {
    case TimeColumn: return tr("Time");
    case KindColumn: return tr("Kind");
    case TextColumn: return tr("Message");
    default: return QVariant();
    }
}
