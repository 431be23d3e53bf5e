#pragma once
#include <QByteArray>
#include <QDomDocument>
#include <QDomElement>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include "znxmltree.h"

class QIODevice;
class ZNByteSource;

// The object file container. Every persistent object is stored in one file of three
// regions:
//
//   offset 0                  the global header block: the text of a "GlobalHeader"
//                             document, zero-padded to exactly kGlobalHeaderSize bytes;
//   offset kGlobalHeaderSize  the XML header document (root "globalObject" holding the
//                             object's own header element), headerSize bytes;
//   then                      a reserve of zero bytes (the "WithTampon" form) so that a
//                             header can grow later without moving the data;
//   data offset .. end        the object's binary data, written by the object.
//
// The global header holds, in this order, the key-value elements "headerOffset",
// "headerSize", "Version", "DataOffset" and "VersionNumber". Files written here are
// always of the "WithTampon" form.
//
// Every function treats the file as hostile: sizes read from it are checked against the
// file's size before anything is allocated. Problems are reported on the event bus with
// the kind ZNEventBus::FileError and, where a function takes `error`, as one of the codes
// below (left untouched on success).
class ZNObjectFile {
public:
    static constexpr int kGlobalHeaderSize = 2500;  // bytes of the global header block
    static constexpr int kVersionNumber = 1;        // "VersionNumber" written
    static constexpr qint64 kNoDataOffset = -1;     // not an object file

    // Error codes of the container; errorText gives their user-visible texts.
    enum Error {
        ErrorHeaderResize = 0,  // the new header does not fit before the data
        ErrorOpen = 1,          // the file could not be opened
        ErrorWrite = 2,         // a write failed
    };
    // The text of an error code; empty for an unknown code.
    static QString errorText(int code);

    // Makes `doc` an empty header document and returns its "globalObject" root, into
    // which the object appends its own header element.
    static QDomElement createHeaderDocument(QDomDocument& doc);
    // The same for a header built as a flat tree.
    static ZNXmlElement createHeaderDocument(ZNXmlTree& doc);
    // The bytes stored for a header document (UTF-8 text); their count is "headerSize".
    static QByteArray headerBytes(const QDomDocument& doc);

    // The global header block, exactly kGlobalHeaderSize bytes: the "GlobalHeader" text of
    // the "WithTampon" form with the given sizes, then zeros.
    static QByteArray globalHeaderBlock(qint64 headerSize, qint64 dataOffset);

    // Byte offset of the data: "DataOffset" in the "WithTampon" form, headerSize + 2500
    // otherwise. kNoDataOffset when the file cannot be read, has no "headerSize", or
    // holds sizes that cannot describe a file (negative, or a data offset inside the
    // header). The offset is not checked against the file's size.
    static qint64 getDataOffset(const QString& path);
    // The same from an open, readable device or byte source (read from its start;
    // position changed).
    static qint64 getDataOffset(QIODevice& file);
    static qint64 getDataOffset(ZNByteSource& file);

    // The XML header of an object file, read without touching the data.
    struct Header {
        QDomDocument document;    // "globalObject" holding the object header
        QDomElement objectHeader; // the object's own header: first element of "globalObject"
        QString type;             // its tag, the object's type name
        qint64 headerSize = 0;    // bytes of the header document
        qint64 dataOffset = kNoDataOffset;
    };
    // Reads the header of the file at `path` into `header`. False, `header` untouched,
    // when the file cannot be opened, is not an object file, its header does not fit
    // inside the file, is not XML, or holds no object header element; also, when `type`
    // is given, when the object is of another type: then no DOM document is built (the
    // long header of another object costs only its flat tree).
    static bool readHeader(const QString& path, Header& header, const QString& type = QString());
    // The same from a byte source holding a whole object file (read from its start;
    // position changed).
    static bool readHeader(ZNByteSource& file, Header& header, const QString& type = QString());
    // The header as a flat tree (ZNXmlTree): what readers of long headers use, at a
    // fraction of a DOM document's cost. Not copyable: its elements point into its tree.
    struct TreeHeader {
        TreeHeader() = default;
        TreeHeader(const TreeHeader&) = delete;
        TreeHeader& operator=(const TreeHeader&) = delete;
        ZNXmlTree tree;             // "globalObject" holding the object header
        ZNXmlElement objectHeader;  // first element of "globalObject"
        qint64 headerSize = 0;
        qint64 dataOffset = kNoDataOffset;
    };
    // Reads the header as readHeader does, into a flat tree; false in the same cases (the
    // tree is then undefined, the other fields untouched).
    static bool readHeader(ZNByteSource& file, TreeHeader& header);
    // The bytes of the XML header document and the data offset, read without parsing
    // (what the readers above parse). False (`text` empty) in the cases where readHeader
    // fails before parsing.
    static bool readHeaderText(ZNByteSource& file, QByteArray& text, qint64& dataOffset);
    // The object type of the file at `path`; empty when readHeader fails.
    static QString readObjectType(const QString& path);

    // Replaces the XML header of an existing object file without moving its data. Only
    // when the new header text (L bytes) satisfies L + 2501 < data offset are the global
    // header, the new header and zeros up to the data offset written; otherwise the file
    // is left unchanged and ErrorHeaderResize is reported: the object has to be saved anew.
    // Edits the file in place (no temporary), since its data must stay where it is.
    static bool rewriteHeader(const QString& path, const QDomDocument& doc, int* error = nullptr);

    // The path to open: on Windows, a path of 261 characters or more gets the long-path
    // prefix "\\?\" after conversion to native separators; elsewhere the path itself.
    static QString platformPath(const QString& path);
    // The long-path form itself, whatever the platform (see platformPath).
    static QString longPathForm(const QString& path);

    // Writes `count` zero bytes at the device's position; false when a write fails.
    static bool writeZeros(QIODevice& file, qint64 count);

    // Sends the user-visible message of a failed open or write of `path` (kind
    // FileError). `systemText` is the system's description of the failure.
    static void reportOpenError(const QString& path, const QString& systemText);
    static void reportWriteError(const QString& path);
};
