#include "znpropertybrowser.h"

#include <QHeaderView>
#include <QScrollBar>

#include "znpropertydelegate.h"

namespace {
constexpr int kIndentation = 12;  // pixels; compact
} // namespace

ZNPropertyBrowser::ZNPropertyBrowser(QWidget* parent)
    : QTreeView(parent), m_model(new ZNPropertyModel(this)), m_delegate(new ZNPropertyDelegate(this))
{
    setObjectName(QStringLiteral("propertyBrowser"));
    setModel(m_model);
    setItemDelegate(m_delegate);
    setAlternatingRowColors(true);
    setUniformRowHeights(true);
    setIndentation(kIndentation);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::AllEditTriggers);
    header()->setSectionResizeMode(ZNPropertyModel::LabelColumn, QHeaderView::ResizeToContents);
    header()->setStretchLastSection(true);
    connect(m_model, &ZNPropertyModel::propertyEdited, this, &ZNPropertyBrowser::propertyEdited);
    connect(this, &QTreeView::collapsed, this,
            [this](const QModelIndex& index) { m_collapsed.insert(index.data().toString()); });
    connect(this, &QTreeView::expanded, this,
            [this](const QModelIndex& index) { m_collapsed.remove(index.data().toString()); });
}

void ZNPropertyBrowser::setSheet(const ZNPropertySheet& sheet)
{
    if (m_model->hasLayoutOf(sheet)) {
        m_model->setSheet(sheet);
        return;
    }
    const QStringList before = groupNames();
    const int scroll = verticalScrollBar()->value();
    const QSet<QString> collapsed = m_collapsed;  // expand() below reports into m_collapsed
    m_model->setSheet(sheet);
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex group = m_model->index(row, ZNPropertyModel::LabelColumn);
        setFirstColumnSpanned(row, QModelIndex(), true);
        setExpanded(group, !collapsed.contains(group.data().toString()));
    }
    m_collapsed = collapsed;
    // The scroll range follows the new rows only once they are laid out.
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(groupNames() == before ? scroll : 0);
}

void ZNPropertyBrowser::clear() { m_model->clear(); }

bool ZNPropertyBrowser::setValue(const QString& id, const QVariant& value) { return m_model->setValue(id, value); }

bool ZNPropertyBrowser::setEnabled(const QString& id, bool enabled) { return m_model->setEnabled(id, enabled); }

QModelIndex ZNPropertyBrowser::indexOf(const QString& id, int column) const { return m_model->indexOf(id, column); }

QStringList ZNPropertyBrowser::groupNames() const
{
    QStringList names;
    for (int row = 0; row < m_model->rowCount(); ++row) names << m_model->index(row, 0).data().toString();
    return names;
}
