#pragma once
#include <QDomDocument>
#include <QDomElement>
#include <QString>
#include <QtGlobal>

class QIODevice;

// The base of every persistent object of the framework. Objects are registered with the
// process services by pointer and recognised by their type name.
//
// A persistent object is stored in an object file (see ZNObjectFile): its header element
// inside the file's XML header, its binary data after it. An object supplies the three
// hooks createHeader, getHeader and writeData; the base turns them into a whole file.
// The defaults describe an object with an empty header and no data.
class ZNObject {
public:
    // Bytes of header growth room reserved by writeObjectFile unless told otherwise.
    static constexpr qint64 kDefaultHeaderReserve = 10000;

    virtual ~ZNObject() = default;

    // The object's type name as written in its file header ("ZNFaultPatchManager", ...).
    virtual QString getZNObjectType() const = 0;

    // The object's header element, created in `doc` (not yet attached). Default: an empty
    // element named after the type.
    virtual QDomElement createHeader(QDomDocument& doc) const;
    // Reads a header element back; false, the object unchanged, for one it cannot take.
    // Default: accepts any element named after the type.
    virtual bool getHeader(const QDomElement* header);
    // Writes the binary data at `offset` of `file`; false when a write fails. Default:
    // no data.
    virtual bool writeData(QIODevice& file, qint64 offset) const;

    // The whole header document: "globalObject" holding createHeader().
    QDomDocument createHeaderDocument() const;

    // Writes the object's file at `path`: header document, `reserve` bytes of header
    // growth room, then the data. The target is replaced only when everything was
    // written. False on failure, with getLastFileError() telling why.
    bool writeObjectFile(const QString& path, qint64 reserve = kDefaultHeaderReserve);
    // Replaces the header of the object's existing file at `path` in place, leaving the
    // data where it is. False when the new header does not fit before the data (error
    // ZNObjectFile::ErrorHeaderResize: save the object anew) or on a file error.
    bool rewriteObjectHeader(const QString& path);

    // Code of the last failure of writeObjectFile or rewriteObjectHeader
    // (ZNObjectFile::Error), -1 when the last call succeeded or none was made.
    int getLastFileError() const { return m_lastFileError; }
    // Its text; empty when there was none.
    QString getLastFileErrorText() const;

private:
    int m_lastFileError = -1;
};
