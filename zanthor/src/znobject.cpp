#include "znobject.h"

#include "znobjectfile.h"
#include "znobjectfilewriter.h"

QDomElement ZNObject::createHeader(QDomDocument& doc) const
{
    return doc.createElement(getZNObjectType());
}

bool ZNObject::getHeader(const QDomElement* header)
{
    return header && header->tagName() == getZNObjectType();
}

bool ZNObject::writeData(QIODevice&, qint64) const { return true; }

QDomDocument ZNObject::createHeaderDocument() const
{
    QDomDocument doc;
    QDomElement root = ZNObjectFile::createHeaderDocument(doc);
    root.appendChild(createHeader(doc));
    return doc;
}

bool ZNObject::writeObjectFile(const QString& path, qint64 reserve)
{
    ZNObjectFileWriter writer(path);
    const qint64 offset = writer.create(createHeaderDocument(), reserve);
    if (offset >= 0 && !writeData(*writer.device(), offset)) writer.fail();
    const bool ok = offset >= 0 && writer.error() < 0 && writer.commit();
    m_lastFileError = ok ? -1 : writer.error();
    return ok;
}

bool ZNObject::rewriteObjectHeader(const QString& path)
{
    int error = -1;
    const bool ok = ZNObjectFile::rewriteHeader(path, createHeaderDocument(), &error);
    m_lastFileError = ok ? -1 : error;
    return ok;
}

QString ZNObject::getLastFileErrorText() const { return ZNObjectFile::errorText(m_lastFileError); }
