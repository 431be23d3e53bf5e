#include "testxml.h"

#include <gtest/gtest.h>

QStringList childTags(const QDomElement& e)
{
    QStringList tags;
    for (QDomElement c = e.firstChildElement(); !c.isNull(); c = c.nextSiblingElement())
        tags << c.tagName();
    return tags;
}

QDomElement parseXml(QDomDocument& holder, const QString& xml)
{
    EXPECT_TRUE(holder.setContent(xml)) << xml.toStdString();
    return holder.documentElement();
}
