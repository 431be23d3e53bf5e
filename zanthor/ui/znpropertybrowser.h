#pragma once
#include <QSet>
#include <QTreeView>

#include <property/znpropertysheet.h>

#include "znpropertymodel.h"

class ZNPropertyDelegate;

// The host's property browser: shows one property sheet (its groups as bold top-level
// rows spanning both columns, their rows below with the label in the first column and
// the value in the second) and lets the user edit the values with the editors of
// ZNPropertyDelegate. Read-only rows are shown but never edited; disabled rows are
// greyed out and not editable.
//
// Every edit that changes a value is reported once by propertyEdited, with the value in
// its kind's type; an edit that leaves the value as it was reports nothing. The host's
// own updates (setSheet, setValue, setEnabled) report nothing.
class ZNPropertyBrowser : public QTreeView {
    Q_OBJECT
public:
    explicit ZNPropertyBrowser(QWidget* parent = nullptr);

    // Shows `sheet` in place of what is shown. A sheet with the same groups and rows
    // (the refresh after an edit) updates the rows in place; otherwise the groups the user
    // collapsed stay collapsed, new ones are expanded, and the scroll position is kept
    // when the same groups come back.
    void setSheet(const ZNPropertySheet& sheet);
    // What is shown, with the current values and enabled flags.
    ZNPropertySheet sheet() const { return m_model->sheet(); }
    void clear();

    // The value of the row `id` (converted to its kind's type), or its enabled flag, as
    // the host updates them; never reported. False when there is no such row or the
    // value does not convert.
    bool setValue(const QString& id, const QVariant& value);
    bool setEnabled(const QString& id, bool enabled);
    using QWidget::setEnabled;

    ZNPropertyModel* propertyModel() const { return m_model; }
    ZNPropertyDelegate* propertyDelegate() const { return m_delegate; }
    // The index of the row `id` in `column`; invalid when there is no such row.
    QModelIndex indexOf(const QString& id, int column = ZNPropertyModel::ValueColumn) const;

signals:
    // The user changed the value of the row `id` to `value` (int for Int and Enum,
    // double, bool, QString, QColor).
    void propertyEdited(const QString& id, const QVariant& value);

private:
    QStringList groupNames() const;

    ZNPropertyModel* m_model;
    ZNPropertyDelegate* m_delegate;
    QSet<QString> m_collapsed;  // names of the groups the user collapsed
};
