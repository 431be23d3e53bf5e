#pragma once
#include <vector>

#include <QByteArray>
#include <QDomDocument>
#include <QString>
#include <QStringView>

class ZNXmlTree;
class ZNXmlPrinter;

// An element of a ZNXmlTree: a small handle (tree and index) with the part of the DOM
// element interface the header readers and writers use, so that the same code builds and
// reads either. A default-constructed element is null; every query on a null element gives
// the empty answer and every change is ignored. Handles stay valid while their tree lives.
class ZNXmlElement {
public:
    ZNXmlElement() = default;

    bool isNull() const { return m_tree == nullptr; }
    QString tagName() const;
    // True when the tag is `tag`; cheaper than comparing tagName().
    bool hasTag(QStringView tag) const;

    bool hasAttribute(const QString& name) const;
    // The value of attribute `name`; `fallback` when there is none.
    QString attribute(const QString& name, const QString& fallback = {}) const;
    // The value of attribute `name` as a view of the tree's own characters, valid until
    // the tree changes; false (`text` untouched) when there is none.
    bool attributeText(const QString& name, QStringView& text) const;
    // Sets attribute `name`, replacing its value when present.
    void setAttribute(const QString& name, const QString& value);

    // The first child element, or the first whose tag is `tag` when one is given.
    ZNXmlElement firstChildElement(const QString& tag = {}) const;
    // The next sibling element, or the next whose tag is `tag` when one is given.
    ZNXmlElement nextSiblingElement(const QString& tag = {}) const;
    // Appends `child`, an element of the same tree not yet attached anywhere (an attached
    // element, the element itself, or one of another tree is left where it is).
    void appendChild(const ZNXmlElement& child);
    // Appends a text node (a reader of XML keeps text other than blanks).
    void appendText(const QString& text);
    // The text of the element's text nodes, concatenated.
    QString text() const;

    bool operator==(const ZNXmlElement& other) const
    {
        return m_tree == other.m_tree && m_index == other.m_index;
    }
    bool operator!=(const ZNXmlElement& other) const { return !(*this == other); }

private:
    friend class ZNXmlTree;
    ZNXmlElement(ZNXmlTree* tree, int index) : m_tree(tree), m_index(index) {}
    ZNXmlTree* m_tree = nullptr;
    int m_index = -1;
};

// An XML document held in flat arrays: elements, attributes and text, with all their
// characters in one buffer. It does for headers of many small key-value elements what a
// DOM document does, at a fraction of the allocations: building, reading and printing a
// header of one element per fault and per patch no longer costs more than its data.
//
// Its text is the DOM document's text (toByteArray gives the bytes QDomDocument would
// give for the same elements with one attribute each, indented by one space), and
// setContent reads anything the stream reader of the toolkit reads, into the same tree:
// a fast scanner reads the plain form every writer of this project produces, and hands
// anything else (declarations, comments, CDATA, non-ASCII text, namespaces, errors) to the
// toolkit's reader, which has the last word on what is well formed.
class ZNXmlTree {
public:
    // Elements nest at most this deep; a deeper (hostile) document is refused.
    static constexpr int kMaxDepth = 256;

    ZNXmlTree() = default;

    // A new element, not attached to anything.
    ZNXmlElement createElement(const QString& tag);
    // Makes `root` the document element (an element of this tree, not attached).
    void appendChild(const ZNXmlElement& root);
    ZNXmlElement documentElement() const;

    // The document's text, UTF-8, as QDomDocument::toByteArray(1) prints it.
    QByteArray toByteArray() const;
    // Replaces the document with the one `text` holds. False, and the document empty, when
    // the text is not well-formed XML, holds no element, or nests deeper than kMaxDepth.
    // Blank text is dropped; comments and processing instructions are dropped.
    bool setContent(const QByteArray& text);
    // setContent with the toolkit's stream reader alone: the reference against which the
    // fast scanner is checked (tests, fuzzing).
    bool setContentWithToolkit(const QByteArray& text);
    // The same document as a DOM document (for readers that need one).
    QDomDocument toDocument() const;

    // Number of elements and text nodes held; for tests and reserve hints.
    int nodeCount() const { return static_cast<int>(m_nodes.size()); }

private:
    friend class ZNXmlElement;
    friend class ZNXmlTreeBuilder;
    struct Span {
        int offset = 0;
        int length = 0;
    };
    struct Node {
        Span name;            // tag, or the characters of a text node
        bool isText = false;
        int parent = -1;
        int firstChild = -1, lastChild = -1, next = -1;
        int firstAttribute = -1, lastAttribute = -1;
    };
    struct Attribute {
        Span name, value;
        int next = -1;
    };

    Span store(QStringView text);
    Span store(QLatin1String text);
    QStringView view(Span span) const { return QStringView(m_chars).mid(span.offset, span.length); }
    // A new node (element or text), not attached; its index.
    template <class Text>
    int addNode(Text name, bool isText);
    template <class Name, class Value>
    void addAttribute(int node, Name name, Value value);
    template <class Text>
    int findAttribute(int node, Text name) const
    {
        for (int a = m_nodes[node].firstAttribute; a >= 0; a = m_attributes[a].next)
            if (view(m_attributes[a].name) == name) return a;
        return -1;
    }
    int nextElement(int node, const QString& tag) const;
    void link(int parent, int child);
    // Appends entry `index` to the singly linked list that runs from `first` to `last`
    // (-1 when empty); `next(k)` is entry k's link.
    template <class Next>
    static void appendToList(int& first, int& last, int index, Next next)
    {
        if (last >= 0)
            next(last) = index;
        else
            first = index;
        last = index;
    }
    void clear();
    void print(int node, int depth, ZNXmlPrinter& out) const;
    bool scan(const QByteArray& text);      // the fast path
    bool readWithToolkit(const QByteArray& text);  // false leaves a partial tree

    QString m_chars;
    std::vector<Node> m_nodes;
    std::vector<Attribute> m_attributes;
    int m_root = -1;
};
