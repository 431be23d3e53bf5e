#include "znxmltree.h"

#include <algorithm>
#include <cstring>

#include <QXmlStreamReader>

template <class Text>
int ZNXmlTree::addNode(Text name, bool isText)
{
    Node node;
    node.name = store(name);
    node.isText = isText;
    m_nodes.push_back(node);
    return static_cast<int>(m_nodes.size()) - 1;
}

template <class Name, class Value>
void ZNXmlTree::addAttribute(int node, Name name, Value value)
{
    Attribute a;
    a.name = store(name);
    a.value = store(value);
    m_attributes.push_back(a);
    Node& n = m_nodes[node];
    appendToList(n.firstAttribute, n.lastAttribute, static_cast<int>(m_attributes.size()) - 1,
                 [this](int k) -> int& { return m_attributes[k].next; });
}

// ----- building -----

// Builds a tree from the events of a reader: start and end of elements, their
// attributes and text. Refuses a second document element, text outside it, a repeated
// attribute and nesting deeper than ZNXmlTree::kMaxDepth.
class ZNXmlTreeBuilder {
public:
    explicit ZNXmlTreeBuilder(ZNXmlTree& tree) : m_tree(tree) { m_tree.clear(); }

    template <class Text>
    bool start(Text tag)
    {
        if (m_open.size() >= static_cast<size_t>(ZNXmlTree::kMaxDepth)) return false;
        if (m_open.empty() && m_tree.m_root >= 0) return false;
        const int node = m_tree.addNode(tag, false);
        if (m_open.empty())
            m_tree.m_root = node;
        else
            m_tree.link(m_open.back(), node);
        m_open.push_back(node);
        return true;
    }

    template <class Name, class Value>
    bool attribute(Name name, Value value)
    {
        if (m_open.empty() || m_tree.findAttribute(m_open.back(), name) >= 0) return false;
        m_tree.addAttribute(m_open.back(), name, value);
        return true;
    }

    bool text(QStringView text)
    {
        if (m_open.empty()) return false;
        m_tree.link(m_open.back(), m_tree.addNode(text, true));
        return true;
    }

    // The name of the innermost open element; empty when none is open.
    QStringView openTag() const
    {
        return m_open.empty() ? QStringView() : m_tree.view(m_tree.m_nodes[m_open.back()].name);
    }

    bool end()
    {
        if (m_open.empty()) return false;
        m_open.pop_back();
        return true;
    }

    bool finished() const { return m_open.empty() && m_tree.m_root >= 0; }

private:
    ZNXmlTree& m_tree;
    std::vector<int> m_open;  // the open elements, innermost last
};

namespace {

bool isBlank(QStringView text)
{
    for (QChar c : text)
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') &&
            c != QLatin1Char('\r'))
            return false;
    return true;
}

// ----- the fast scanner -----

// Reads the plain form of XML: elements with ASCII names (letters, digits, '_', '.', '-'),
// quoted attributes, and text, both in printable ASCII with the five named references
// and character references to printable ASCII, tab, line feed and carriage return.
// Anything else makes it give up (false), and the toolkit's reader decides.
class Scanner {
public:
    Scanner(const QByteArray& text, ZNXmlTreeBuilder& builder)
        : m_p(text.constData()), m_end(text.constData() + text.size()), m_builder(builder)
    {
    }

    bool run()
    {
        while (m_p < m_end) {
            if (*m_p != '<') {
                if (!readText()) return false;
            } else if (m_p + 1 < m_end && m_p[1] == '/') {
                if (!readEndTag()) return false;
            } else if (!readStartTag()) {
                return false;
            }
        }
        return m_builder.finished();
    }

private:
    static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n'; }
    static bool isNameStart(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    }
    static bool isNameChar(char c)
    {
        return isNameStart(c) || (c >= '0' && c <= '9') || c == '.' || c == '-';
    }
    // Characters that may stand for themselves in text and attribute values.
    static bool isPlain(char c) { return c >= 0x20 && c < 0x7f && c != '<' && c != '&'; }

    void skipSpaces()
    {
        while (m_p < m_end && isSpace(*m_p)) ++m_p;
    }

    QLatin1String readName()
    {
        const char* start = m_p;
        if (m_p < m_end && isNameStart(*m_p))
            while (++m_p < m_end && isNameChar(*m_p)) {
            }
        return QLatin1String(start, static_cast<int>(m_p - start));
    }

    // Decodes the reference after '&' into `out`; false for anything not in the plain form.
    bool readReference(QString& out)
    {
        const char* semicolon = m_p;
        while (semicolon < m_end && semicolon - m_p < 12 && *semicolon != ';') ++semicolon;
        if (semicolon >= m_end || *semicolon != ';') return false;
        const QLatin1String name(m_p, static_cast<int>(semicolon - m_p));
        char c = 0;
        if (name == QLatin1String("lt")) c = '<';
        else if (name == QLatin1String("gt")) c = '>';
        else if (name == QLatin1String("amp")) c = '&';
        else if (name == QLatin1String("quot")) c = '"';
        else if (name == QLatin1String("apos")) c = '\'';
        else if (name.size() > 1 && name[0] == QLatin1Char('#')) {
            bool ok = false;
            const bool hex = name[1] == QLatin1Char('x');
            const QString digits = name.mid(hex ? 2 : 1);
            for (QChar d : digits)
                if (!(d.isDigit() || (hex && QStringLiteral("abcdefABCDEF").contains(d)))) return false;
            const int code = digits.toInt(&ok, hex ? 16 : 10);
            if (!ok || !(code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0x7f)))
                return false;
            c = static_cast<char>(code);
        } else {
            return false;
        }
        out.append(QLatin1Char(c));
        m_p = semicolon + 1;
        return true;
    }

    // Reads characters up to `stop` (not consumed) into `out`, decoding references. Text
    // may hold tabs and line feeds; attribute values may not (the reader would normalise
    // them to spaces).
    bool readCharacters(char stop, bool isText, QString& out)
    {
        out.resize(0);  // keeps the buffer, unlike clear()
        while (m_p < m_end && *m_p != stop) {
            const char* run = m_p;
            while (m_p < m_end && *m_p != stop && isPlain(*m_p)) ++m_p;
            const QLatin1String plain(run, static_cast<int>(m_p - run));
            // "]]>" may not stand in text; a reference ("]]&gt;") is the way to write it.
            if (isText && std::memchr(run, ']', static_cast<size_t>(plain.size())) &&
                plain.contains(QLatin1String("]]>")))
                return false;
            out.append(plain);
            if (m_p >= m_end || *m_p == stop) break;
            if (*m_p == '&') {
                ++m_p;
                if (!readReference(out)) return false;
            } else if (isText && (*m_p == '\t' || *m_p == '\n')) {
                out.append(QLatin1Char(*m_p++));
            } else {
                return false;  // '<' in a value, a control character, a non-ASCII byte
            }
        }
        return true;
    }

    bool readText()
    {
        // Most text is the indentation between elements: skipped without a copy.
        const char* start = m_p;
        skipSpaces();
        if (m_p >= m_end || *m_p == '<') return true;
        m_p = start;
        if (!readCharacters('<', true, m_scratch)) return false;
        return isBlank(m_scratch) || m_builder.text(m_scratch);
    }

    bool readStartTag()
    {
        ++m_p;  // '<'
        const QLatin1String tag = readName();
        if (tag.isEmpty() || !m_builder.start(tag)) return false;
        while (true) {
            const char* beforeSpaces = m_p;
            skipSpaces();
            if (m_p >= m_end) return false;
            if (*m_p == '>') {
                ++m_p;
                return true;
            }
            if (*m_p == '/') {
                if (++m_p >= m_end || *m_p != '>') return false;
                ++m_p;
                return m_builder.end();
            }
            if (m_p == beforeSpaces) return false;  // attributes are separated by spaces
            const QLatin1String name = readName();
            if (name.isEmpty()) return false;
            skipSpaces();
            if (m_p >= m_end || *m_p != '=') return false;
            ++m_p;
            skipSpaces();
            if (m_p >= m_end || (*m_p != '"' && *m_p != '\'')) return false;
            const char quote = *m_p++;
            // Most values hold no reference: they are stored from the input itself.
            const char* value = m_p;
            while (m_p < m_end && *m_p != quote && isPlain(*m_p)) ++m_p;
            if (m_p < m_end && *m_p == quote) {
                const QLatin1String plain(value, static_cast<int>(m_p++ - value));
                if (!m_builder.attribute(name, plain)) return false;
                continue;
            }
            m_p = value;
            if (!readCharacters(quote, false, m_scratch) || m_p >= m_end) return false;
            ++m_p;  // closing quote
            if (!m_builder.attribute(name, QStringView(m_scratch))) return false;
        }
    }

    bool readEndTag()
    {
        m_p += 2;  // "</"
        const QLatin1String tag = readName();
        if (tag.isEmpty() || m_builder.openTag() != tag) return false;
        skipSpaces();
        if (m_p >= m_end || *m_p != '>') return false;
        ++m_p;
        return m_builder.end();
    }

    const char* m_p;
    const char* m_end;
    ZNXmlTreeBuilder& m_builder;
    QString m_scratch;
};

// ----- printing -----


} // namespace

// The printer writes UTF-8 bytes straight into the output, through a cursor into room
// made ahead (the output grows by doubling; the destructor trims it).
class ZNXmlPrinter {
public:
    explicit ZNXmlPrinter(QByteArray& out) : m_out(out) {}
    ~ZNXmlPrinter() { m_out.resize(m_used); }

    void indent(int depth)
    {
        char* out = room(depth);
        std::memset(out, ' ', static_cast<size_t>(depth));
        m_used += depth;
    }
    void raw(const char* text)
    {
        const int n = static_cast<int>(std::strlen(text));
        std::memcpy(room(n), text, static_cast<size_t>(n));
        m_used += n;
    }
    void raw(char c)
    {
        *room(1) = c;
        ++m_used;
    }

    // Text as it stands (names).
    void plain(QStringView text) { escaped(text, Mode::Plain); }
    // Escapes as the DOM printer does: '<', '&' always; '>' after "]]"; carriage returns;
    // in attribute values also '"', tabs and line feeds.
    void attributeValue(QStringView text) { escaped(text, Mode::Attribute); }
    void text(QStringView text) { escaped(text, Mode::Text); }

private:
    enum class Mode { Plain, Attribute, Text };
    // Bytes one UTF-16 unit may take: the longest escape ("&quot;"); UTF-8 takes at most 3
    // bytes per unit (4 per surrogate pair).
    static constexpr int kMaxBytesPerUnit = 6;

    char* room(int bytes)
    {
        if (m_used + bytes > m_out.size())
            m_out.resize(std::max(2 * m_out.size(), m_used + bytes + kInitialRoom));
        return m_out.data() + m_used;
    }
    static constexpr int kInitialRoom = 4096;

    void escaped(QStringView text, Mode mode)
    {
        const int n = static_cast<int>(text.size());
        char* const begin = room(kMaxBytesPerUnit * n);
        char* out = begin;
        for (int i = 0; i < n; ++i) {
            const ushort u = text[i].unicode();
            if (u >= 0x80) {
                out = utf8(text, i, out);
                continue;
            }
            const char c = static_cast<char>(u);
            if (mode == Mode::Plain || !needsEscape(text, i, mode)) {
                *out++ = c;
                continue;
            }
            const char* escape = c == '<'    ? "&lt;"
                                 : c == '>'  ? "&gt;"
                                 : c == '&'  ? "&amp;"
                                 : c == '"'  ? "&quot;"
                                 : c == '\t' ? "&#x9;"
                                 : c == '\n' ? "&#xa;"
                                              : "&#xd;";
            while (*escape) *out++ = *escape++;
        }
        m_used += static_cast<int>(out - begin);
    }

    // Writes the non-ASCII unit at `i` (with its low surrogate, which `i` then passes) as
    // the toolkit's encoder does: a lone surrogate becomes '?'.
    static char* utf8(QStringView text, int& i, char* out)
    {
        uint code = text[i].unicode();
        if (QChar::isHighSurrogate(code) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            code = QChar::surrogateToUcs4(text[i], text[i + 1]);
            ++i;
        } else if (QChar::isSurrogate(code)) {
            *out++ = '?';
            return out;
        }
        if (code < 0x800) {
            *out++ = static_cast<char>(0xc0 | (code >> 6));
        } else if (code < 0x10000) {
            *out++ = static_cast<char>(0xe0 | (code >> 12));
            *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        } else {
            *out++ = static_cast<char>(0xf0 | (code >> 18));
            *out++ = static_cast<char>(0x80 | ((code >> 12) & 0x3f));
            *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        }
        *out++ = static_cast<char>(0x80 | (code & 0x3f));
        return out;
    }

    static bool needsEscape(QStringView text, int i, Mode mode)
    {
        switch (text[i].unicode()) {
        case '<':
        case '&':
        case '\r':
            return true;
        case '>':
            return i >= 2 && text[i - 1] == QLatin1Char(']') && text[i - 2] == QLatin1Char(']');
        case '"':
        case '\t':
        case '\n':
            return mode == Mode::Attribute;
        default:
            return false;
        }
    }

    QByteArray& m_out;
    int m_used = 0;  // bytes written; the rest of m_out is room
};

// ----- the element handle -----

QString ZNXmlElement::tagName() const
{
    return isNull() ? QString() : m_tree->view(m_tree->m_nodes[m_index].name).toString();
}

bool ZNXmlElement::hasTag(QStringView tag) const
{
    return !isNull() && m_tree->view(m_tree->m_nodes[m_index].name) == tag;
}

bool ZNXmlElement::hasAttribute(const QString& name) const
{
    return !isNull() && m_tree->findAttribute(m_index, name) >= 0;
}

QString ZNXmlElement::attribute(const QString& name, const QString& fallback) const
{
    const int a = isNull() ? -1 : m_tree->findAttribute(m_index, name);
    return a < 0 ? fallback : m_tree->view(m_tree->m_attributes[a].value).toString();
}

bool ZNXmlElement::attributeText(const QString& name, QStringView& text) const
{
    const int a = isNull() ? -1 : m_tree->findAttribute(m_index, name);
    if (a < 0) return false;
    text = m_tree->view(m_tree->m_attributes[a].value);
    return true;
}

void ZNXmlElement::setAttribute(const QString& name, const QString& value)
{
    if (isNull()) return;
    const int a = m_tree->findAttribute(m_index, name);
    if (a >= 0) {
        m_tree->m_attributes[a].value = m_tree->store(value);
        return;
    }
    m_tree->addAttribute(m_index, name, value);
}

ZNXmlElement ZNXmlElement::firstChildElement(const QString& tag) const
{
    if (isNull()) return {};
    const int child = m_tree->m_nodes[m_index].firstChild;
    const int found = child < 0 ? -1 : m_tree->nextElement(child, tag);
    return found < 0 ? ZNXmlElement() : ZNXmlElement(m_tree, found);
}

ZNXmlElement ZNXmlElement::nextSiblingElement(const QString& tag) const
{
    if (isNull()) return {};
    const int next = m_tree->m_nodes[m_index].next;
    const int found = next < 0 ? -1 : m_tree->nextElement(next, tag);
    return found < 0 ? ZNXmlElement() : ZNXmlElement(m_tree, found);
}

void ZNXmlElement::appendChild(const ZNXmlElement& child)
{
    if (isNull() || child.m_tree != m_tree || child.m_index == m_tree->m_root ||
        m_tree->m_nodes[child.m_index].parent >= 0)
        return;
    // An unattached element is the top of its own subtree: appending it under one of its
    // own descendants (or itself) would close a loop.
    int top = m_index;
    while (m_tree->m_nodes[top].parent >= 0) top = m_tree->m_nodes[top].parent;
    if (top == child.m_index) return;
    m_tree->link(m_index, child.m_index);
}

void ZNXmlElement::appendText(const QString& text)
{
    if (isNull()) return;
    m_tree->link(m_index, m_tree->addNode(QStringView(text), true));
}

QString ZNXmlElement::text() const
{
    QString out;
    if (isNull()) return out;
    for (int c = m_tree->m_nodes[m_index].firstChild; c >= 0; c = m_tree->m_nodes[c].next)
        if (m_tree->m_nodes[c].isText) out.append(m_tree->view(m_tree->m_nodes[c].name));
    return out;
}

// ----- the tree -----

ZNXmlTree::Span ZNXmlTree::store(QStringView text)
{
    const Span span{m_chars.size(), static_cast<int>(text.size())};
    m_chars.append(text.data(), static_cast<int>(text.size()));
    return span;
}

ZNXmlTree::Span ZNXmlTree::store(QLatin1String text)
{
    // Widened by hand: QString::append pays more per call than these short texts cost.
    const Span span{m_chars.size(), text.size()};
    m_chars.resize(span.offset + span.length);
    QChar* out = m_chars.data() + span.offset;
    for (int i = 0; i < span.length; ++i) out[i] = QLatin1Char(text.data()[i]);
    return span;
}



int ZNXmlTree::nextElement(int node, const QString& tag) const
{
    for (; node >= 0; node = m_nodes[node].next)
        if (!m_nodes[node].isText && (tag.isEmpty() || view(m_nodes[node].name) == tag)) return node;
    return -1;
}

void ZNXmlTree::link(int parent, int child)
{
    Node& p = m_nodes[parent];
    appendToList(p.firstChild, p.lastChild, child, [this](int k) -> int& { return m_nodes[k].next; });
    m_nodes[child].parent = parent;
}

void ZNXmlTree::clear()
{
    m_chars.clear();
    m_nodes.clear();
    m_attributes.clear();
    m_root = -1;
}

ZNXmlElement ZNXmlTree::createElement(const QString& tag)
{
    return ZNXmlElement(this, addNode(QStringView(tag), false));
}

void ZNXmlTree::appendChild(const ZNXmlElement& root)
{
    if (m_root >= 0 || root.m_tree != this || m_nodes[root.m_index].parent >= 0) return;
    m_root = root.m_index;
}

ZNXmlElement ZNXmlTree::documentElement() const
{
    return m_root < 0 ? ZNXmlElement() : ZNXmlElement(const_cast<ZNXmlTree*>(this), m_root);
}

void ZNXmlTree::print(int node, int depth, ZNXmlPrinter& out) const
{
    // The layout of the DOM printer: every element on a line of its own, indented one
    // space per level, except next to text, which stays on the element's line.
    const Node& n = m_nodes[node];
    out.raw('<');
    out.plain(view(n.name));
    for (int a = n.firstAttribute; a >= 0; a = m_attributes[a].next) {
        out.raw(' ');
        out.plain(view(m_attributes[a].name));
        out.raw("=\"");
        out.attributeValue(view(m_attributes[a].value));
        out.raw('"');
    }
    if (n.firstChild < 0) {
        out.raw("/>");
    } else {
        out.raw('>');
        if (!m_nodes[n.firstChild].isText) out.raw('\n');
        bool previousIsText = false;
        for (int c = n.firstChild; c >= 0; c = m_nodes[c].next) {
            if (m_nodes[c].isText) {
                out.text(view(m_nodes[c].name));
                previousIsText = true;
                continue;
            }
            if (!previousIsText) out.indent(depth + 1);
            print(c, depth + 1, out);
            previousIsText = false;
        }
        if (!m_nodes[n.lastChild].isText) out.indent(depth);
        out.raw("</");
        out.plain(view(n.name));
        out.raw('>');
    }
    if (!(n.next >= 0 && m_nodes[n.next].isText)) out.raw('\n');
}

QByteArray ZNXmlTree::toByteArray() const
{
    QByteArray out;
    if (m_root < 0) return out;
    {
        ZNXmlPrinter printer(out);  // trims `out` to what it wrote when it goes
        print(m_root, 0, printer);
    }
    return out;
}

bool ZNXmlTree::scan(const QByteArray& text)
{
    ZNXmlTreeBuilder builder(*this);
    return Scanner(text, builder).run();
}

bool ZNXmlTree::readWithToolkit(const QByteArray& text)
{
    ZNXmlTreeBuilder builder(*this);
    QXmlStreamReader reader(text);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement: {
            if (!builder.start(reader.qualifiedName())) return false;
            // Held const: looping over the temporary would detach it.
            const QXmlStreamAttributes attributes = reader.attributes();
            for (const QXmlStreamAttribute& a : attributes)
                if (!builder.attribute(a.qualifiedName(), a.value())) return false;
            break;
        }
        case QXmlStreamReader::EndElement:
            builder.end();
            break;
        case QXmlStreamReader::Characters:
            if (!reader.isWhitespace() && !builder.text(reader.text())) return false;
            break;
        default:
            break;
        }
    }
    return !reader.hasError() && builder.finished();
}

bool ZNXmlTree::setContent(const QByteArray& text)
{
    if (scan(text) || readWithToolkit(text)) return true;
    clear();
    return false;
}

bool ZNXmlTree::setContentWithToolkit(const QByteArray& text)
{
    if (readWithToolkit(text)) return true;
    clear();
    return false;
}

QDomDocument ZNXmlTree::toDocument() const
{
    QDomDocument doc;
    if (m_root < 0) return doc;
    // Built with explicit stacks: the tree nests at most kMaxDepth deep, but a document
    // built by hand may nest deeper.
    struct Pending {
        int node;
        QDomNode parent;
    };
    // The document element first: a document has no node to append to before it creates one.
    const QDomElement root = doc.createElement(view(m_nodes[m_root].name).toString());
    doc.appendChild(root);
    std::vector<Pending> pending{{m_root, root}};
    while (!pending.empty()) {
        Pending p = pending.back();
        pending.pop_back();
        const Node& n = m_nodes[p.node];
        if (n.isText) {
            p.parent.appendChild(doc.createTextNode(view(n.name).toString()));
            continue;
        }
        QDomElement e = p.node == m_root ? root : doc.createElement(view(n.name).toString());
        for (int a = n.firstAttribute; a >= 0; a = m_attributes[a].next)
            e.setAttribute(view(m_attributes[a].name).toString(), view(m_attributes[a].value).toString());
        if (p.node != m_root) p.parent.appendChild(e);
        // Children are pushed last first, so that they are appended in order.
        std::vector<int> children;
        for (int c = n.firstChild; c >= 0; c = m_nodes[c].next) children.push_back(c);
        for (auto c = children.rbegin(); c != children.rend(); ++c) pending.push_back({*c, e});
    }
    return doc;
}
