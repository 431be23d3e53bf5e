#include "znpropertydelegate.h"

#include <cmath>
#include <limits>

#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QSpinBox>

#include "znpropertymodel.h"

namespace {
constexpr int kMaxDecimals = 6;
constexpr int kExtraRowHeight = 4;  // pixels, so that framed editors fit a row
constexpr int kGroupShade = 108;    // group rows: the button colour darkened by this percentage
// The editor's value when the editor was filled, to tell a real change from a commit
// of what was shown.
const char* const kInitialValue = "znInitialValue";

const ZNProperty* propertyAt(const QModelIndex& index)
{
    const auto* model = qobject_cast<const ZNPropertyModel*>(index.model());
    return model ? model->property(index) : nullptr;
}

template <typename SpinBox, typename T>
void setRange(SpinBox* box, const ZNProperty& p, T lowest, T highest)
{
    const QVariant minimum = p.attribute(ZNProperty::minimum());
    const QVariant maximum = p.attribute(ZNProperty::maximum());
    const QVariant step = p.attribute(ZNProperty::singleStep());
    box->setRange(minimum.isValid() ? minimum.value<T>() : lowest,
                  maximum.isValid() ? maximum.value<T>() : highest);
    if (step.isValid()) box->setSingleStep(step.value<T>());
}

// The value an editor holds, in its kind's type.
QVariant editorValue(QWidget* editor)
{
    if (auto* spin = qobject_cast<QSpinBox*>(editor)) {
        spin->interpretText();
        return spin->value();
    }
    if (auto* spin = qobject_cast<QDoubleSpinBox*>(editor)) {
        spin->interpretText();
        return spin->value();
    }
    if (auto* combo = qobject_cast<QComboBox*>(editor)) return combo->currentIndex();
    if (auto* line = qobject_cast<QLineEdit*>(editor)) return line->text();
    return QVariant();
}

bool isToggleKey(const QEvent* event)
{
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Space || key == Qt::Key_Select;
}

bool isLeftRelease(const QEvent* event, const QRect& rect)
{
    if (event->type() != QEvent::MouseButtonRelease) return false;
    const auto* mouse = static_cast<const QMouseEvent*>(event);
    return mouse->button() == Qt::LeftButton && rect.contains(mouse->pos());
}

bool isMousePress(const QEvent* event)
{
    return event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
}
} // namespace

ZNPropertyDelegate::ZNPropertyDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

int ZNPropertyDelegate::decimalsFor(double value, double step)
{
    for (int d = 1; d < kMaxDecimals; ++d) {
        const double scale = std::pow(10.0, d);
        auto exact = [scale](double v) {
            return std::abs(std::round(v * scale) - v * scale) <= 1e-6 * std::max(1.0, std::abs(v * scale));
        };
        if (exact(value) && exact(step)) return d;
    }
    return kMaxDecimals;
}

QWidget* ZNPropertyDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                          const QModelIndex& index) const
{
    const ZNProperty* p = propertyAt(index);
    if (!p) return QStyledItemDelegate::createEditor(parent, option, index);
    switch (p->kind) {
    case ZNProperty::String:
        return new QLineEdit(parent);
    case ZNProperty::Int: {
        auto* spin = new QSpinBox(parent);
        setRange(spin, *p, std::numeric_limits<int>::lowest(), std::numeric_limits<int>::max());
        return spin;
    }
    case ZNProperty::Double: {
        auto* spin = new QDoubleSpinBox(parent);
        // Decimals first: the range and value are rounded to them.
        spin->setDecimals(decimalsFor(p->value.toDouble(), p->attribute(ZNProperty::singleStep()).toDouble()));
        setRange(spin, *p, std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max());
        return spin;
    }
    case ZNProperty::Enum: {
        auto* combo = new QComboBox(parent);
        const QStringList names = p->attribute(ZNProperty::enumNames()).toStringList();
        const QVariantList icons = p->attribute(ZNProperty::enumIcons()).toList();
        for (int i = 0; i < std::max(names.size(), icons.size()); ++i) {
            const QImage icon = icons.value(i).value<QImage>();
            combo->addItem(icon.isNull() ? QIcon() : QIcon(QPixmap::fromImage(icon)),
                           i < names.size() ? names[i] : QString::number(i));
        }
        auto* self = const_cast<ZNPropertyDelegate*>(this);
        connect(combo, QOverload<int>::of(&QComboBox::activated), self, [self, combo] {
            emit self->commitData(combo);
            emit self->closeEditor(combo);
        });
        return combo;
    }
    case ZNProperty::Bool:
    case ZNProperty::Color:
        return nullptr;  // edited through editorEvent
    }
    return nullptr;
}

void ZNPropertyDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    const ZNProperty* p = propertyAt(index);
    if (!p) {
        QStyledItemDelegate::setEditorData(editor, index);
        return;
    }
    if (auto* spin = qobject_cast<QSpinBox*>(editor)) spin->setValue(p->value.toInt());
    if (auto* spin = qobject_cast<QDoubleSpinBox*>(editor)) spin->setValue(p->value.toDouble());
    if (auto* combo = qobject_cast<QComboBox*>(editor)) combo->setCurrentIndex(p->value.toInt());
    if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setText(p->value.toString());
    editor->setProperty(kInitialValue, editorValue(editor));
}

void ZNPropertyDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (!propertyAt(index)) {
        QStyledItemDelegate::setModelData(editor, model, index);
        return;
    }
    const QVariant value = editorValue(editor);
    if (value.isValid() && value != editor->property(kInitialValue)) model->setData(index, value, Qt::EditRole);
}

void ZNPropertyDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const
{
    if (ZNPropertyModel::isGroup(index) && qobject_cast<const ZNPropertyModel*>(index.model()))
        painter->fillRect(option.rect, option.palette.color(QPalette::Button).darker(kGroupShade));
    QStyledItemDelegate::paint(painter, option, index);
}

QSize ZNPropertyDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, kExtraRowHeight);
}

bool ZNPropertyDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                     const QStyleOptionViewItem& option, const QModelIndex& index)
{
    const ZNProperty* p = propertyAt(index);
    const bool toggles = p && p->kind == ZNProperty::Bool && (index.flags() & Qt::ItemIsUserCheckable);
    const bool picks = p && p->kind == ZNProperty::Color && (index.flags() & Qt::ItemIsEditable);
    if (!toggles && !picks) return QStyledItemDelegate::editorEvent(event, model, option, index);
    if (isMousePress(event)) return true;  // the release acts
    const bool f2 = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F2;
    if (!isLeftRelease(event, option.rect) && !isToggleKey(event) && !(picks && f2)) return false;
    if (toggles)
        model->setData(index, p->value.toBool() ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    else
        chooseColor(model, index, const_cast<QWidget*>(option.widget));
    return true;
}

void ZNPropertyDelegate::chooseColor(QAbstractItemModel* model, const QModelIndex& index, QWidget* parent)
{
    const ZNProperty* p = propertyAt(index);
    const QPersistentModelIndex at(index);
    const QColor chosen = QColorDialog::getColor(p->value.value<QColor>(), parent, p->label);
    // The dialog runs an event loop: the sheet may have been replaced meanwhile.
    if (chosen.isValid() && at.isValid()) model->setData(at, chosen, Qt::EditRole);
}
