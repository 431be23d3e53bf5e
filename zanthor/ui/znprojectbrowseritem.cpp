#include "znprojectbrowseritem.h"

ZNProjectBrowserItem::ZNProjectBrowserItem(int kind, const QString& dataKey, const QString& text,
                                           const QString& path, int tag)
    : QStandardItem(text)
{
    setData(kind, KindRole);
    setData(dataKey, DataKeyRole);
    setData(path, PathRole);
    setData(tag, TagRole);
}

QStandardItem* ZNProjectBrowserItem::clone() const
{
    return new ZNProjectBrowserItem(*this);  // every role and flag, no children
}

ZNProjectBrowserItem* ZNProjectBrowserItem::of(QStandardItem* item)
{
    return item && item->type() == Type ? static_cast<ZNProjectBrowserItem*>(item) : nullptr;
}
