#include <gtest/gtest.h>

#include <random>

#include <QDomDocument>
#include <QPen>

#include <znxml.h>
#include <znxmltree.h>

namespace {

// The text of `xml` as the DOM parser and printer see it: what the tree must give.
QByteArray domText(const QByteArray& xml)
{
    QDomDocument doc;
    if (!doc.setContent(xml)) return "not parsed";
    return doc.toByteArray();
}

QByteArray treeText(const QByteArray& xml)
{
    ZNXmlTree tree;
    if (!tree.setContent(xml)) return "not parsed";
    return tree.toByteArray();
}

QByteArray nested(int depth)
{
    return QByteArray("<e>").repeated(depth) + QByteArray("</e>").repeated(depth);
}

// A text node appended in either kind of document.
void appendText(QDomDocument& doc, QDomElement& e, const QString& text)
{
    e.appendChild(doc.createTextNode(text));
}
void appendText(ZNXmlTree&, ZNXmlElement& e, const QString& text) { e.appendText(text); }

} // namespace

TEST(XmlTree, ReadsEveryWellFormedDocument)
{
    // The plain form goes through the tree's own scanner, the rest through the toolkit's
    // stream reader; either way the elements, attributes and text must be the document's.
    // Where no text is expected, the DOM parser's reading is the reference. The tree
    // drops what a header never needs (declarations, comments, namespace declarations)
    // and, as a stream reader,
    // normalises white space inside attribute values, which the DOM parser does not.
    struct Case {
        const char* xml;
        const char* expected;
    } cases[] = {
        {"<a/>", nullptr},
        // (The DOM prints attributes in hash order: several are checked by hand.)
        {"<a x=\"1\" y='2'><b><c z = \"3\"/></b>\n <d/></a>",
         "<a x=\"1\" y=\"2\">\n <b>\n  <c z=\"3\"/>\n </b>\n <d/>\n</a>\n"},
        {"<a v=\"&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#xa;&#9;&#xd;\"/>", nullptr},
        {"<a>x &amp; y &#x3c;z&#62;</a>", nullptr},
        {"<a>&lt; &gt; <b/> &amp;</a>", nullptr},
        {"<a>one\ttwo\nthree</a>", nullptr},
        {"<a>text<b/>more</a>", nullptr},
        {"<a>]]&gt; is fine</a>", nullptr},
        {"<a v=\"]]>\"/>", nullptr},
        {"<a v=\"\xc3\xa9t\xc3\xa9\">\xe2\x82\xac</a>", nullptr},
        {"<a xmlns:p=\"urn:x\"><p:b p:v=\"1\"/></a>", "<a>\n <p:b p:v=\"1\"/>\n</a>\n"},
        {"<a>&#x20AC;</a>", nullptr},
        {"<_a.b-c d.e=\"1\"/>", nullptr},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a v=\"1\"/>", "<a v=\"1\"/>\n"},
        {"<!-- before --><a><!-- inside --><b/></a>", "<a>\n <b/>\n</a>\n"},
        {"<a><![CDATA[<raw> & ]]></a>", "<a>&lt;raw> &amp; </a>\n"},
        {"<a>\r\n<b v=\"x\r\ny\"/>\r\n</a>", "<a>\n <b v=\"x y\"/>\n</a>\n"},
        {"<a v=\"tab\there\"/>", "<a v=\"tab here\"/>\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.xml);
        EXPECT_EQ(treeText(c.xml), c.expected ? QByteArray(c.expected) : domText(c.xml));
        ZNXmlTree reference;
        EXPECT_TRUE(reference.setContentWithToolkit(c.xml));
        EXPECT_EQ(reference.toByteArray(), treeText(c.xml)) << "the scanner and the toolkit agree";
    }
}

TEST(XmlTree, RefusesWhatIsNotWellFormedAndLeavesAnEmptyDocument)
{
    const QByteArray refused[] = {
        "",
        "   ",
        "<a>",
        "<a></b>",
        "<a/><b/>",
        "x<a/>",
        "<a/>x",
        "<a v=\"1\" v=\"2\"/>",
        "<a v=\"<\"/>",
        "<a v=1/>",
        "<a v=\"1\"w=\"2\"/>",
        "<a>&</a>",
        "<a>&unknown;</a>",
        "<a>]]></a>",
        "<a>\x01</a>",
        "<1a/>",
        "</a>",
        nested(ZNXmlTree::kMaxDepth + 1),
        nested(200000),
    };
    for (const QByteArray& xml : refused) {
        SCOPED_TRACE(xml.left(60).constData());
        ZNXmlTree tree;
        ASSERT_TRUE(tree.setContent("<old/>"));
        EXPECT_FALSE(tree.setContent(xml));
        EXPECT_TRUE(tree.documentElement().isNull());
        EXPECT_TRUE(tree.toByteArray().isEmpty());
    }
    ZNXmlTree deepest;
    EXPECT_TRUE(deepest.setContent(nested(ZNXmlTree::kMaxDepth)));
}

TEST(XmlTree, PrintsWhatTheDomPrintsForTheSameElements)
{
    QDomDocument dom;
    ZNXmlTree tree;
    auto build = [](auto& doc) {
        auto root = doc.createElement("globalObject");
        doc.appendChild(root);
        auto set = doc.createElement("Set");
        root.appendChild(set);
        ZNXml::appendInt(doc, set, "count", -3);
        ZNXml::appendDouble(doc, set, "scale", 1.0 / 3.0);
        ZNXml::appendString(doc, set, "name", QString::fromUtf8("a<b>&\"c\"\t\n\r ]]> \xc3\xa9"));
        // Two- to four-byte characters, and a lone surrogate (printed '?').
        ZNXml::appendString(doc, set, "wide", QString::fromUtf8("\xe2\x82\xac\xf0\x9f\x98\x80") + QChar(0xd800));
        ZNXml::appendPen(doc, set, "pen", QPen(QColor(1, 2, 3), 1.5));
        auto note = doc.createElement("note");
        set.appendChild(note);
        appendText(doc, note, QStringLiteral("x < y & ]]> \r z"));
        auto mixed = doc.createElement("mixed");
        set.appendChild(mixed);
        appendText(doc, mixed, QStringLiteral("t"));
        mixed.appendChild(doc.createElement("child"));
        set.appendChild(doc.createElement("empty"));
    };
    build(dom);
    build(tree);
    EXPECT_EQ(tree.toByteArray(), dom.toByteArray());
    EXPECT_EQ(tree.toDocument().toByteArray(), dom.toByteArray());
    // And reads back to the same document.
    EXPECT_EQ(treeText(tree.toByteArray()), dom.toByteArray());
}

TEST(XmlTree, ElementsBehaveAsDomElements)
{
    ZNXmlTree tree;
    ASSERT_TRUE(tree.setContent("<r><k v=\"1\"/>text<k v=\"2\"/><o/><k v=\"3\"/></r>"));
    const ZNXmlElement r = tree.documentElement();
    EXPECT_EQ(r.tagName(), QStringLiteral("r"));
    EXPECT_TRUE(r.hasTag(QStringLiteral("r")));
    EXPECT_EQ(r.text(), QStringLiteral("text"));
    QStringList values;
    for (ZNXmlElement k = r.firstChildElement("k"); !k.isNull(); k = k.nextSiblingElement("k"))
        values << k.attribute("v");
    EXPECT_EQ(values, QStringList({"1", "2", "3"}));
    EXPECT_EQ(r.firstChildElement().nextSiblingElement().nextSiblingElement().tagName(), "o");
    EXPECT_EQ(r.firstChildElement("k").attribute("missing", "d"), "d");
    EXPECT_FALSE(r.firstChildElement("k").hasAttribute("missing"));

    // A null element answers emptily and ignores changes.
    ZNXmlElement null;
    EXPECT_TRUE(null.tagName().isEmpty());
    EXPECT_TRUE(null.firstChildElement().isNull());
    null.setAttribute("v", "1");
    EXPECT_FALSE(null.hasAttribute("v"));
}

TEST(XmlTree, AppendingNeverMovesAnAttachedElementNorClosesALoop)
{
    ZNXmlTree tree;
    ZNXmlElement root = tree.createElement("root");
    tree.appendChild(root);
    ZNXmlElement a = tree.createElement("a");
    ZNXmlElement b = tree.createElement("b");
    a.appendChild(b);
    b.appendChild(a);     // a loop
    a.appendChild(a);     // itself
    root.appendChild(a);
    root.appendChild(b);  // already under a
    a.appendChild(root);  // the document element
    ZNXmlTree other;
    ZNXmlElement stranger = other.createElement("s");
    root.appendChild(stranger);  // another tree's
    b.setAttribute("v", "1");
    b.setAttribute("v", "2");  // replaces
    EXPECT_EQ(tree.toByteArray(), QByteArray("<root>\n <a>\n  <b v=\"2\"/>\n </a>\n</root>\n"));
}

TEST(XmlTree, AFaultSetSizedHeaderKeepsItsNodesFlat)
{
    // A header of many repeated elements is held in a few arrays, not one object per
    // node: this is what makes reading ten thousand descriptors cheap.
    QByteArray xml = "<globalObject><Set>";
    for (int i = 0; i < 1000; ++i)
        xml += "<D><id value=\"" + QByteArray::number(i) + "\"/><name value=\"F\"/></D>";
    xml += "</Set></globalObject>";
    ZNXmlTree tree;
    ASSERT_TRUE(tree.setContent(xml));
    EXPECT_EQ(tree.nodeCount(), 2 + 3 * 1000);
    const ZNXmlElement set = tree.documentElement().firstChildElement("Set");
    int sum = 0;
    for (ZNXmlElement d = set.firstChildElement("D"); !d.isNull(); d = d.nextSiblingElement("D"))
        sum += static_cast<int>(ZNXml::readInt(d, "id", 0));
    EXPECT_EQ(sum, 999 * 1000 / 2);
}

TEST(XmlTree, ItsScannerAgreesWithTheToolkitOnDamagedHeaders)
{
    // Random damage to a typical header, with the characters that matter to XML: the
    // tree must accept exactly the texts the toolkit's reader accepts, and read the same
    // documents from them.
    const QByteArray header =
        "<globalObject>\n <Set>\n  <count value=\"2\"/>\n  <name value='a &amp; b&#x9;'/>\n"
        "  <D>\n   <pen>\n    <color value=\"#ff102030\"/>\n   </pen>\n"
        "   <note>x &lt; y ]]&gt;</note>\n  </D>\n </Set>\n</globalObject>\n";
    const char alphabet[] = "<>/=\"'&;#x \t\n\r]ab1!?-:";
    std::mt19937 rng(7);
    auto pick = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    int accepted = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        QByteArray text = header;
        for (int edits = 1 + pick(3); edits > 0; --edits) {
            const int at = pick(text.size());
            const char c = alphabet[pick(sizeof alphabet - 1)];
            switch (pick(3)) {
            case 0: text[at] = c; break;
            case 1: text.remove(at, 1 + pick(4)); break;
            default: text.insert(at, c); break;
            }
        }
        ZNXmlTree tree, reference;
        const bool read = tree.setContent(text);
        ASSERT_EQ(read, reference.setContentWithToolkit(text)) << text.constData();
        if (!read) continue;
        ++accepted;
        ASSERT_EQ(tree.toByteArray(), reference.toByteArray()) << text.constData();
    }
    EXPECT_GT(accepted, 400) << "the damage should leave many texts well formed";
}
