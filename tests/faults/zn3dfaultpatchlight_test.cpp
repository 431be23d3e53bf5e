#include <gtest/gtest.h>

#include <cstdlib>

#include <QDir>
#include <QFile>

#include <testservices.h>
#include <testxml.h>
#include <zn3dfaultpatchlight.h>
#include <znsettings.h>
#include <znxml.h>

namespace {

// Writes (or, with an empty text, removes) the user's 3D viewer parameters file for the
// lifetime of the object.
class ViewerParameters {
public:
    explicit ViewerParameters(const QByteArray& text)
    {
        QDir().mkpath(ZNSettings::userSettingsDirectory());
        QFile f(path());
        if (text.isEmpty()) {
            f.remove();
            return;
        }
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
    }
    ~ViewerParameters() { QFile::remove(path()); }
    static QString path()
    {
        return ZNSettings::userSettingsFile(ZNSettings::viewer3dParametersFileName());
    }
};

QByteArray showIntersection(const char* value)
{
    return QByteArray("<viewer><ShowPickingIntersection value=\"") + value + "\"/></viewer>";
}

// A descriptor whose every field differs from the defaults.
ZN3DFaultPatchLight customised()
{
    ZN3DFaultPatchLight d(QPen(QColor(1, 2, 3), 4, Qt::DashLine), 12, QStringLiteral("North"),
                          50, 10, 9, true, geom::Rect2d(1, 2, 3, 4));
    d.setSpare(3);
    d.setInterpolationSize(33);
    d.setMeshingMethod(0);
    d.setDrawPickedPoint(true);
    d.setDrawPickingIntersection(false);
    d.setShowPreview(false);
    d.setTransparency(0.25f);
    d.setLink(77);
    d.getPatchList().add(5);
    d.getPatchList().add(9);
    return d;
}

QDomElement headerOf(QDomDocument& doc, const ZN3DFaultPatchLight& d)
{
    QDomElement e = d.createHeader(doc);
    doc.appendChild(e);
    return e;
}

// Everything the header carries, as text: two descriptors with the same text agree on
// every written field.
QString headerText(const ZN3DFaultPatchLight& d)
{
    QDomDocument doc;
    headerOf(doc, d);
    return doc.toString();
}

} // namespace

TEST(FaultDescriptor, StartsWithTheDocumentedDefaultsAndUnnamed)
{
    const ZN3DFaultPatchLight d;
    EXPECT_EQ(d.getZNObjectType(), QStringLiteral("ZN3DFaultPatchLight"));
    EXPECT_EQ(d.getFaultId(), -1);
    EXPECT_EQ(d.GetFaultName(), QStringLiteral("Unnamed"));
    EXPECT_FALSE(d.IsNamed());
    EXPECT_TRUE(d.getPatchList().empty());
    EXPECT_EQ(d.getPatchList().growthStep(), 1);
    EXPECT_EQ(d.getUtmPrecision(), 100);
    EXPECT_EQ(d.getTimePrecision(), 25);
    EXPECT_EQ(d.getFilterSize(), 7);
    EXPECT_EQ(d.getSpare(), 0);
    EXPECT_EQ(d.getInterpolationSize(), 11);
    EXPECT_EQ(d.getMeshingMethod(), 1);
    EXPECT_FALSE(d.getDrawPickedPoint());
    EXPECT_TRUE(d.getDrawPickingIntersection());
    EXPECT_TRUE(d.getShowPreview());
    EXPECT_EQ(d.getTransparency(), 0.5f);
    EXPECT_EQ(d.getLink(), 0u);
    EXPECT_FALSE(d.isSaved());
    EXPECT_EQ(d.getPen().style(), Qt::SolidLine);
    EXPECT_EQ(d.getPen().width(), 1);
}

TEST(FaultDescriptor, ChannelFormulaScalesDrawsTo256AtTheLargestDraw)
{
    const struct { int draw, channel; } cases[] = {
        {0, 0}, {127, 0}, {128, 1}, {16384, 128}, {32639, 254}, {32640, 255}, {32766, 255},
        {32767, 256},
    };
    for (const auto& c : cases) EXPECT_EQ(ZN3DFaultPatchLight::randomChannel(c.draw), c.channel) << c.draw;
}

TEST(FaultDescriptor, PenColourTakesRedGreenBlueFromThreeSuccessiveDraws)
{
    std::srand(2024);
    int expected[3];
    for (int& c : expected) c = ZN3DFaultPatchLight::randomChannel(std::rand() % 32768);
    std::srand(2024);
    const ZN3DFaultPatchLight d;
    ASSERT_TRUE(d.getPen().color().isValid());
    EXPECT_EQ(d.getPen().color(), QColor(expected[0], expected[1], expected[2], 255));
}

TEST(FaultDescriptor, ConstructorTakesPenIdNameAndThreePrecisionsAndIgnoresTheRest)
{
    const QPen pen(Qt::green, 3);
    const ZN3DFaultPatchLight a(pen, 4, QStringLiteral("F"), 1, 2, 3, true, geom::Rect2d(0, 0, 9, 9));
    const ZN3DFaultPatchLight b(pen, 4, QStringLiteral("F"), 1, 2, 3, false, geom::Rect2d());
    for (const ZN3DFaultPatchLight* d : {&a, &b}) {
        EXPECT_EQ(d->getPen(), pen);
        EXPECT_EQ(d->getFaultId(), 4);
        EXPECT_EQ(d->GetFaultName(), QStringLiteral("F"));
        EXPECT_EQ(d->getUtmPrecision(), 1);
        EXPECT_EQ(d->getTimePrecision(), 2);
        EXPECT_EQ(d->getFilterSize(), 3);
        EXPECT_EQ(d->getInterpolationSize(), 11);
        EXPECT_TRUE(d->IsNamed());
    }
}

TEST(FaultDescriptor, CopyTakesThePatchListOnlyWhenAskedAndNeverTheSavedFlag)
{
    const ZN3DFaultPatchLight source = customised();
    for (bool withPatchList : {false, true}) {
        SCOPED_TRACE(withPatchList);
        ZN3DFaultPatchLight target;
        target.getPatchList().add(42);
        target.setSaved(true);
        target.copy(&source, withPatchList);
        EXPECT_EQ(headerText(target), headerText(source));
        EXPECT_EQ(target.getSpare(), 3);
        EXPECT_EQ(target.getLink(), 77u);
        EXPECT_TRUE(target.isSaved());
        const QList<int> expected = withPatchList ? QList<int>{5, 9} : QList<int>{42};
        QList<int> patches;
        for (int p : target.getPatchList()) patches << p;
        EXPECT_EQ(patches, expected);
    }
}

TEST(FaultDescriptor, CopyFromNullIsReportedAndChangesNothing)
{
    ZN3DFaultPatchLight d = customised();
    StderrCapture err;
    d.copy(nullptr, true);
    EXPECT_TRUE(err.text().contains(QStringLiteral("ERROR: assert fail (other != nullptr)")));
    EXPECT_EQ(d.getFaultId(), 12);
    EXPECT_EQ(d.getPatchList().size(), 2);
}

TEST(FaultDescriptor, IsNamedOnlyForANameOtherThanEmptyOrUnnamed)
{
    ZN3DFaultPatchLight d;
    for (const char* name : {"", "Unnamed"}) {
        d.SetFaultName(QString::fromLatin1(name));
        EXPECT_FALSE(d.IsNamed()) << name;
    }
    for (const char* name : {"unnamed", "F1", " Unnamed"}) {
        d.SetFaultName(QString::fromLatin1(name));
        EXPECT_TRUE(d.IsNamed()) << name;
    }
}

TEST(FaultDescriptorHeader, WritesEveryKeyInOrder)
{
    QDomDocument doc;
    const QDomElement e = headerOf(doc, customised());
    EXPECT_EQ(e.tagName(), QStringLiteral("ZN3DFaultPatchLight"));
    EXPECT_EQ(childTags(e), (QStringList{"pen", "faultId", "faultName", "utmPrecision", "timePrecision",
                                 "filterSize", "interpolationSize", "meshingMethod",
                                 "drawPickedPoint", "drawPickingIntersection", "showPreview",
                                 "transparency"}));
    EXPECT_EQ(ZNXml::readString(e, "drawPickedPoint"), QStringLiteral("1"));
    EXPECT_EQ(ZNXml::readString(e, "drawPickingIntersection"), QStringLiteral("0"));
    EXPECT_EQ(ZNXml::readString(e, "faultId"), QStringLiteral("12"));
}

TEST(FaultDescriptorHeader, NameIsWrittenAsItsCompleteBaseName)
{
    const struct { const char* stored; const char* written; } cases[] = {
        {"Fault.1", "Fault"}, {"dir/Fault", "Fault"}, {"F1.v2", "F1"}, {"F1", "F1"},
        {"a.b.c", "a.b"}, {"dir/sub/F.x", "F"},
        // The file-name rules judge what follows either separator: so does the writer.
        {"dir\\F1.v2", "F1"}, {"A\x1f\\B", "B"}, {"a.b\\c/d.e", "d"},
    };
    for (const auto& c : cases) {
        ZN3DFaultPatchLight d;
        d.SetFaultName(QString::fromLatin1(c.stored));
        QDomDocument doc;
        EXPECT_EQ(ZNXml::readString(headerOf(doc, d), "faultName"), QString::fromLatin1(c.written))
            << c.stored;
    }
}

TEST(FaultDescriptorHeader, RoundTripRestoresEverySettingButThePickingIntersection)
{
    ViewerParameters none({});
    const ZN3DFaultPatchLight source = customised();  // picking intersection false
    QDomDocument doc;
    const QDomElement e = parseXml(doc, headerText(source));

    ZN3DFaultPatchLight d;
    d.getHeader(&e);
    EXPECT_TRUE(d.getDrawPickingIntersection());  // "0" in the header, not read back
    d.setDrawPickingIntersection(false);
    EXPECT_EQ(headerText(d), headerText(source));
    EXPECT_EQ(d.getSpare(), 0);  // never written
    EXPECT_EQ(d.getLink(), 0u);
    EXPECT_TRUE(d.getPatchList().empty());
}

TEST(FaultDescriptorHeader, MissingKeysKeepTheirValuesExceptMeshingMethodWhichBecomesZero)
{
    ViewerParameters none({});
    ZN3DFaultPatchLight d = customised();
    d.setMeshingMethod(1);
    ZN3DFaultPatchLight expected = customised();
    expected.setMeshingMethod(0);
    QDomDocument doc;
    const QDomElement e = parseXml(doc, "<ZN3DFaultPatchLight/>");
    d.getHeader(&e);
    EXPECT_EQ(d.getMeshingMethod(), 0);
    EXPECT_EQ(headerText(d), headerText(expected));
}

TEST(FaultDescriptorHeader, PickingIntersectionComesFromTheUserViewerParameters)
{
    QDomDocument doc;
    const QDomElement e =
        parseXml(doc, "<ZN3DFaultPatchLight><drawPickingIntersection value=\"1\"/></ZN3DFaultPatchLight>");
    const struct { QByteArray file; bool before, after; } cases[] = {
        {showIntersection("0"), true, false},
        {showIntersection("1"), false, true},
        {{}, false, false},                           // no file: kept
        {{}, true, true},
        {"<viewer><Other value=\"0\"/></viewer>", true, true},  // no key: kept
        {"this is not xml", true, true},
        {showIntersection("maybe"), true, true},      // not a bool: kept
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.constData());
        ViewerParameters parameters(c.file);
        ZN3DFaultPatchLight d;
        d.setDrawPickingIntersection(c.before);
        d.getHeader(&e);
        EXPECT_EQ(d.getDrawPickingIntersection(), c.after);
    }
}

TEST(FaultDescriptorHeader, DamagedValuesKeepTheCurrentFields)
{
    ViewerParameters none({});
    QDomDocument doc;
    const QDomElement e = parseXml(doc,
        "<ZN3DFaultPatchLight><faultId value=\"abc\"/><utmPrecision value=\"99999999999\"/>"
        "<meshingMethod value=\"x\"/><drawPickedPoint value=\"2\"/>"
        "<transparency value=\"1e300\"/><pen><style value=\"42\"/></pen></ZN3DFaultPatchLight>");
    ZN3DFaultPatchLight d = customised();
    d.getHeader(&e);
    EXPECT_EQ(d.getFaultId(), 12);
    EXPECT_EQ(d.getUtmPrecision(), 50);
    EXPECT_EQ(d.getMeshingMethod(), 0);
    EXPECT_TRUE(d.getDrawPickedPoint());
    EXPECT_EQ(d.getTransparency(), 0.25f);
    EXPECT_EQ(d.getPen().style(), Qt::DashLine);

    d.getHeader(nullptr);
    EXPECT_EQ(d.getFaultId(), 12);
}

TEST(FaultDescriptorHeader, IdentityReadsTheIdAndNameAsTheWholeHeaderDoesAndNothingElse)
{
    ViewerParameters none({});
    const char* headers[] = {
        "<ZN3DFaultPatchLight><faultId value=\"7\"/><faultName value=\"East\"/><utmPrecision value=\"60\"/>"
        "</ZN3DFaultPatchLight>",
        "<ZN3DFaultPatchLight><faultId value=\"abc\"/><faultName value=\"\"/></ZN3DFaultPatchLight>",
        "<ZN3DFaultPatchLight><faultId value=\"99999999999\"/></ZN3DFaultPatchLight>",
        "<ZN3DFaultPatchLight/>",
    };
    for (const char* text : headers) {
        SCOPED_TRACE(text);
        ZNXmlTree tree;
        ASSERT_TRUE(tree.setContent(text));
        const ZNXmlElement e = tree.documentElement();
        ZN3DFaultPatchLight whole = customised(), identity = customised();
        identity.setMeshingMethod(1);  // what a whole header read would change
        whole.getHeader(&e, std::nullopt);
        identity.getIdentity(&e);
        EXPECT_EQ(identity.getFaultId(), whole.getFaultId());
        EXPECT_EQ(identity.GetFaultName(), whole.GetFaultName());
        EXPECT_EQ(identity.getUtmPrecision(), 50);  // the rest untouched
        EXPECT_EQ(identity.getMeshingMethod(), 1);
    }
    ZN3DFaultPatchLight d = customised();
    d.getIdentity(nullptr);
    EXPECT_EQ(d.getFaultId(), 12);
}
