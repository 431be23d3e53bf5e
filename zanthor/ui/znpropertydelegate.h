#pragma once
#include <QStyledItemDelegate>

// The editors of the property browser's value cells, chosen by the row's kind:
// String a line edit, Int a spin box and Double a double spin box (both honouring
// "minimum", "maximum" and "singleStep"), Enum a combo box of the "enumNames" with the
// "enumIcons" (committed as soon as the user picks an entry). Bool and Color rows have
// no editor widget: a click on a Bool cell (or Space) toggles it, a click on a Color
// cell (or Space, F2) opens a colour dialog and stores the colour chosen.
//
// A commit hands the model the editor's value only when the user changed it, so that
// an editor that rounds (a double spin box's decimals) never reports a change of its own;
// the model then ignores any value equal to the stored one.
//
// The editor is chosen by kind alone: a row's `editor` name ("StyleSettings") asks for
// what its kind already gives (an enumeration with icons, an integer with its range).
// Works on a ZNPropertyModel; on any other model it behaves as QStyledItemDelegate.
class ZNPropertyDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit ZNPropertyDelegate(QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Digits after the point a Double row's editor shows for `value` and `step`: enough
    // to show both exactly, at least 1 and at most 6.
    static int decimalsFor(double value, double step);

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    // Opens a colour dialog on the colour of the row at `index` and stores the colour
    // chosen; nothing when the dialog is cancelled.
    void chooseColor(QAbstractItemModel* model, const QModelIndex& index, QWidget* parent);
};
