#pragma once
#include <QAbstractItemModel>

#include <property/znpropertysheet.h>

// The item model of the property browser over one property sheet: a two-level tree
// whose top-level rows are the sheet's groups and whose child rows are their
// properties; column 0 holds a row's label, column 1 its value.
//
// Values handed out and stored always have their kind's type (int for Int and Enum,
// double, bool, QString, QColor); numeric values are clamped to the row's "minimum" and
// "maximum", an enumeration index outside its names is refused. A value is editable
// through setData (the user's edits, reported by propertyEdited when, and only when,
// the value changes) or through setValue (the host's updates, never reported).
class ZNPropertyModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { LabelColumn, ValueColumn, ColumnCount };

    explicit ZNPropertyModel(QObject* parent = nullptr);

    // Shows `sheet` in place of what is shown. When it has the same groups and row ids in
    // the same order, the rows are updated in place (dataChanged, no reset), so views keep
    // their expanded groups, scroll position and current row; otherwise the model resets.
    void setSheet(const ZNPropertySheet& sheet);
    // What is shown, with the current values and enabled flags.
    ZNPropertySheet sheet() const;
    void clear();
    // True when `sheet` has the groups and row ids shown, in the same order.
    bool hasLayoutOf(const ZNPropertySheet& sheet) const;

    // The host's update of the row `id`: its value, converted to the kind's type (and
    // clamped), or its enabled flag. Never reported by propertyEdited; false when there is
    // no such row or the value does not convert.
    bool setValue(const QString& id, const QVariant& value);
    bool setEnabled(const QString& id, bool enabled);

    // The row an index stands for; null for a group row or an invalid index. Owned by
    // the model and valid until the next setSheet or clear.
    const ZNProperty* property(const QModelIndex& index) const;
    // The index of the row `id` in `column`; invalid when there is no such row.
    QModelIndex indexOf(const QString& id, int column = ValueColumn) const;
    // True for the index of a group row.
    static bool isGroup(const QModelIndex& index);

    // `value` in the type of `property`'s kind, numbers clamped to its range; an invalid
    // QVariant when it does not convert (or an enumeration index is out of range).
    static QVariant typedValue(const ZNProperty& property, const QVariant& value);
    // The text of a value cell ("" for Bool, shown as a check box).
    static QString displayText(const ZNProperty& property);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // The user's edit of a value cell: Qt::EditRole (any kind) or Qt::CheckStateRole
    // (Bool). Stores the typed value and emits propertyEdited once when it differs from
    // the stored one; false, nothing emitted, when it is the same, does not convert, or
    // the row is read-only or disabled.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

signals:
    // The user changed the value of the row `id` to `value` (of the kind's type).
    void propertyEdited(const QString& id, const QVariant& value);

private:
    ZNProperty* mutableProperty(const QModelIndex& index);
    // Stores `value` into the row at `index` (a value cell) when it is new; true then.
    bool store(const QModelIndex& index, const QVariant& value);
    void emitRowChanged(const QModelIndex& valueIndex);

    QList<ZNPropertySheet::Group> m_groups;
};
