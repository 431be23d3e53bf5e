#include "znpropertymodel.h"

#include <algorithm>

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QPixmap>

#include "znobjecttree.h"

// An index's internal id is 0 for a group row and 1 + the group's index for a property
// row, so that parent() needs no lookup.
namespace {
constexpr quintptr kGroupId = 0;

// Number of choices of an enumeration row: its names, or its icons when it has more;
// 0 when it has neither (then any index >= 0 is taken).
int enumCount(const ZNProperty& p)
{
    return std::max(p.attribute(ZNProperty::enumNames()).toStringList().size(),
                    p.attribute(ZNProperty::enumIcons()).toList().size());
}

template <typename T>
T clampToRange(const ZNProperty& p, T v)
{
    const QVariant minimum = p.attribute(ZNProperty::minimum());
    const QVariant maximum = p.attribute(ZNProperty::maximum());
    if (maximum.isValid()) v = std::min(v, maximum.value<T>());
    if (minimum.isValid()) v = std::max(v, minimum.value<T>());
    return v;
}

QVariant typedColor(const QVariant& value)
{
    QColor c;
    if (value.userType() == QMetaType::QColor)
        c = value.value<QColor>();
    else if (value.userType() == QMetaType::QString)
        c = QColor(value.toString());
    return c.isValid() ? QVariant(c) : QVariant();
}

QIcon enumIcon(const ZNProperty& p, int index)
{
    const QImage image = p.attribute(ZNProperty::enumIcons()).toList().value(index).value<QImage>();
    return image.isNull() ? QIcon() : QIcon(QPixmap::fromImage(image));
}
} // namespace

ZNPropertyModel::ZNPropertyModel(QObject* parent) : QAbstractItemModel(parent) {}

QVariant ZNPropertyModel::typedValue(const ZNProperty& p, const QVariant& value)
{
    bool ok = false;
    switch (p.kind) {
    case ZNProperty::String:
        return value.canConvert<QString>() ? QVariant(value.toString()) : QVariant();
    case ZNProperty::Int: {
        const int v = value.toInt(&ok);
        return ok ? QVariant(clampToRange(p, v)) : QVariant();
    }
    case ZNProperty::Double: {
        const double v = value.toDouble(&ok);
        return ok ? QVariant(clampToRange(p, v)) : QVariant();
    }
    case ZNProperty::Bool:
        return value.canConvert<bool>() ? QVariant(value.toBool()) : QVariant();
    case ZNProperty::Enum: {
        const int v = value.toInt(&ok);
        const int count = enumCount(p);
        return ok && v >= 0 && (count == 0 || v < count) ? QVariant(v) : QVariant();
    }
    case ZNProperty::Color:
        return typedColor(value);
    }
    return QVariant();
}

QString ZNPropertyModel::displayText(const ZNProperty& p)
{
    switch (p.kind) {
    case ZNProperty::Bool:
        return QString();
    case ZNProperty::Enum: {
        const QStringList names = p.attribute(ZNProperty::enumNames()).toStringList();
        const int v = p.value.toInt();
        return v >= 0 && v < names.size() ? names[v] : QString::number(v);
    }
    case ZNProperty::Color: {
        const QColor c = p.value.value<QColor>();
        return c.name(c.alpha() < 255 ? QColor::HexArgb : QColor::HexRgb);
    }
    default:
        return p.value.toString();
    }
}

void ZNPropertyModel::setSheet(const ZNPropertySheet& sheet)
{
    QList<ZNPropertySheet::Group> typed = sheet.groups();
    for (ZNPropertySheet::Group& g : typed)
        for (ZNProperty& p : g.properties) {
            const QVariant v = typedValue(p, p.value);
            if (v.isValid()) p.value = v;
        }
    if (!hasLayoutOf(sheet)) {
        beginResetModel();
        m_groups = typed;
        endResetModel();
        return;
    }
    m_groups = typed;
    for (int g = 0; g < m_groups.size(); ++g) {
        const QModelIndex group = index(g, LabelColumn);
        emit dataChanged(group, group);
        const int rows = rowCount(group);
        if (rows > 0) emit dataChanged(index(0, LabelColumn, group), index(rows - 1, ValueColumn, group));
    }
}

ZNPropertySheet ZNPropertyModel::sheet() const
{
    ZNPropertySheet sheet;
    for (const ZNPropertySheet::Group& g : m_groups) {
        sheet.addGroup(g.name);
        for (const ZNProperty& p : g.properties)
            sheet.addProperty(g.name, p.id, p.label, p.kind, p.value) = p;
    }
    return sheet;
}

void ZNPropertyModel::clear()
{
    beginResetModel();
    m_groups.clear();
    endResetModel();
}

bool ZNPropertyModel::hasLayoutOf(const ZNPropertySheet& sheet) const
{
    const QList<ZNPropertySheet::Group>& mine = m_groups;
    const QList<ZNPropertySheet::Group>& theirs = sheet.groups();
    if (mine.size() != theirs.size()) return false;
    for (int g = 0; g < mine.size(); ++g) {
        if (mine[g].name != theirs[g].name || mine[g].properties.size() != theirs[g].properties.size())
            return false;
        for (int r = 0; r < mine[g].properties.size(); ++r)
            if (mine[g].properties[r].id != theirs[g].properties[r].id) return false;
    }
    return true;
}

bool ZNPropertyModel::setValue(const QString& id, const QVariant& value)
{
    const QModelIndex at = indexOf(id);
    ZNProperty* p = mutableProperty(at);
    if (!p) return false;
    const QVariant v = typedValue(*p, value);
    if (!v.isValid()) return false;
    if (v != p->value) {
        p->value = v;
        emitRowChanged(at);
    }
    return true;
}

bool ZNPropertyModel::setEnabled(const QString& id, bool enabled)
{
    const QModelIndex at = indexOf(id);
    ZNProperty* p = mutableProperty(at);
    if (!p) return false;
    if (p->enabled != enabled) {
        p->enabled = enabled;
        emitRowChanged(at);
    }
    return true;
}

const ZNProperty* ZNPropertyModel::property(const QModelIndex& index) const
{
    return const_cast<ZNPropertyModel*>(this)->mutableProperty(index);
}

ZNProperty* ZNPropertyModel::mutableProperty(const QModelIndex& index)
{
    if (!index.isValid() || index.model() != this || isGroup(index)) return nullptr;
    const int group = static_cast<int>(index.internalId() - 1);
    if (group >= m_groups.size() || index.row() >= m_groups[group].properties.size()) return nullptr;
    return &m_groups[group].properties[index.row()];
}

QModelIndex ZNPropertyModel::indexOf(const QString& id, int column) const
{
    const QList<ZNPropertySheet::Group>& groups = m_groups;
    for (int g = 0; g < groups.size(); ++g)
        for (int r = 0; r < groups[g].properties.size(); ++r)
            if (groups[g].properties[r].id == id) return createIndex(r, column, quintptr(g + 1));
    return QModelIndex();
}

bool ZNPropertyModel::isGroup(const QModelIndex& index)
{
    return index.isValid() && index.internalId() == kGroupId;
}

QModelIndex ZNPropertyModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent)) return QModelIndex();
    if (!parent.isValid()) return createIndex(row, column, kGroupId);
    return createIndex(row, column, quintptr(parent.row() + 1));
}

QModelIndex ZNPropertyModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || isGroup(child)) return QModelIndex();
    return createIndex(static_cast<int>(child.internalId() - 1), LabelColumn, kGroupId);
}

int ZNPropertyModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid()) return m_groups.size();
    if (isGroup(parent) && parent.column() == LabelColumn)
        return m_groups.value(parent.row()).properties.size();
    return 0;
}

int ZNPropertyModel::columnCount(const QModelIndex&) const { return ColumnCount; }

QVariant ZNPropertyModel::data(const QModelIndex& index, int role) const
{
    if (isGroup(index)) {
        if (index.column() != LabelColumn) return QVariant();
        if (role == Qt::DisplayRole) return m_groups.value(index.row()).name;
        if (role == Qt::FontRole) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return QVariant();
    }
    const ZNProperty* p = property(index);
    if (!p) return QVariant();
    if (role == Qt::ToolTipRole) return p->label != p->id ? QVariant(p->id) : QVariant();
    if (index.column() == LabelColumn) {
        if (role == Qt::DisplayRole) return p->label;
        if (role != Qt::DecorationRole) return QVariant();
        const QImage icon = p->attribute(ZNProperty::icon()).value<QImage>();
        return icon.isNull() ? QVariant() : QVariant(QIcon(QPixmap::fromImage(icon)));
    }
    switch (role) {
    case Qt::DisplayRole:
        return displayText(*p);
    case Qt::EditRole:
        return p->value;
    case Qt::CheckStateRole:
        if (p->kind == ZNProperty::Bool) return p->value.toBool() ? Qt::Checked : Qt::Unchecked;
        return QVariant();
    case Qt::DecorationRole:
        if (p->kind == ZNProperty::Enum) return enumIcon(*p, p->value.toInt());
        if (p->kind == ZNProperty::Color) return ZNObjectTree::swatch(p->value.value<QColor>());
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant ZNPropertyModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return QVariant();
    return section == LabelColumn ? tr("Property") : tr("Value");
}

Qt::ItemFlags ZNPropertyModel::flags(const QModelIndex& index) const
{
    if (isGroup(index)) return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    const ZNProperty* p = property(index);
    if (!p) return Qt::NoItemFlags;
    if (!p->enabled) return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == ValueColumn && !p->readOnly)
        f |= p->kind == ZNProperty::Bool ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
    return f;
}

bool ZNPropertyModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const ZNProperty* p = property(index);
    if (!p || index.column() != ValueColumn) return false;
    const Qt::ItemFlags f = flags(index);
    if (role == Qt::CheckStateRole && (f & Qt::ItemIsUserCheckable))
        return store(index, value.toInt() == Qt::Checked);
    if (role == Qt::EditRole && (f & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)))
        return store(index, value);
    return false;
}

bool ZNPropertyModel::store(const QModelIndex& index, const QVariant& value)
{
    ZNProperty* p = mutableProperty(index);
    const QVariant v = typedValue(*p, value);
    if (!v.isValid() || v == typedValue(*p, p->value)) return false;
    p->value = v;
    emitRowChanged(index);
    const QString id = p->id;  // the receiver may replace the sheet
    emit propertyEdited(id, v);
    return true;
}

void ZNPropertyModel::emitRowChanged(const QModelIndex& valueIndex)
{
    emit dataChanged(valueIndex.sibling(valueIndex.row(), LabelColumn),
                     valueIndex.sibling(valueIndex.row(), ValueColumn));
}
