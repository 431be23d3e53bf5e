#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include <unistd.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <core/multiarray.h>
#include <zniconhandler.h>
#include <znfaultpatchmanager.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>
#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>
#include <znprojectbrowserpluginfault.h>
#include <znprojectbrowserpluginreadfaultthread.h>

#include <testfiles.h>
#include <testservices.h>

namespace {

const auto kExactPath = Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive);

// A picked fault set of one fault per name (an empty name leaves the fault unnamed), each
// fault one stick of two points.
std::unique_ptr<ZNFaultPatchManager> faultSet(const QStringList& names)
{
    core::MultiArray<core::vec3> rows(names.size());
    for (int f = 0; f < names.size(); ++f) {
        rows.addElement(f, core::vec3(10.0 * f, 0.0, 0.0), false);
        rows.addElement(f, core::vec3(10.0 * f, 50.0, 5.0), false);
    }
    auto set = std::make_unique<ZNFaultPatchManager>(rows, georef::UnitObject());
    for (int f = 0; f < names.size(); ++f)
        if (!names[f].isEmpty()) set->findFaultLight(f + 1)->SetFaultName(names[f]);
    return set;
}

bool writeFaultSet(const QString& path, const QStringList& names, bool picked = true)
{
    auto set = faultSet(names);
    set->setPicked(picked);
    return set->writePickedFault(path, false, nullptr, false);
}

// An object file of `header` (the object's own element) and `data`.
bool writeObjectFile(const QString& path, const QDomElement& header, const QByteArray& data)
{
    QDomDocument doc;
    ZNObjectFile::createHeaderDocument(doc).appendChild(doc.importNode(header, true));
    ZNObjectFileWriter writer(path);
    return writer.create(doc, 0) >= 0 && writer.device()->write(data) == data.size() && writer.commit();
}

QStringList childTexts(const QStandardItem* item)
{
    QStringList texts;
    for (int row = 0; item && row < item->rowCount(); ++row) texts << item->child(row)->text();
    return texts;
}

// The browser with a branch of fault sets, as a host sets it up.
struct Browser {
    ZNProjectBrowserModel model;
    ZNProjectBrowserPluginFault plugin{&model};
    ZNProjectBrowserItem* branch = model.addBranch(&plugin, "Fault Sets", {"*.faultset"});

    QStandardItem* itemOf(const QString& path)
    {
        const QModelIndexList found = model.match(model.index(0, 0), ZNProjectBrowserItem::PathRole, path, 1, kExactPath);
        return found.isEmpty() ? nullptr : model.itemFromIndex(found.first());
    }
    bool waitForReaders(int ms = 60000)
    {
        return QTest::qWaitFor([this] { return plugin.readerCount() == 0; }, ms);
    }
};

} // namespace

TEST(ProjectBrowserFaultNames, NamedFaultsInOrderThenOneEntryCountingTheUnnamed)
{
    QTemporaryDir dir;
    struct Case {
        const char* what;
        QStringList names;
        bool picked;
        QStringList expected;
    };
    const Case cases[] = {
        {"two named, one unnamed", {"North", "", "South"}, true, {"North", "South", "Unnamed (1)"}},
        {"all named", {"A", "B"}, true, {"A", "B"}},
        {"none named", {"", "Unnamed", ""}, true, {"Unnamed (3)"}},
        {"an automatic fault set", {"North", "South"}, false, {}},
    };
    for (const Case& c : cases) {
        const QString path = dir.filePath(QString::fromLatin1(c.what) + ".faultset");
        ASSERT_TRUE(writeFaultSet(path, c.names, c.picked)) << c.what;
        EXPECT_EQ(ZNProjectBrowserPluginReadFaultThread::readFaultNames(path), c.expected) << c.what;
    }
}

// New faults take their colours from the process's random generator; a reader running
// beside the GUI thread must not move its sequence.
TEST(ProjectBrowserFaultNames, ReadingNamesLeavesTheRandomSequenceAlone)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("set.faultset");
    ASSERT_TRUE(writeFaultSet(path, {"A", "B", "", "C"}));
    ZNProjectBrowserPluginReadFaultThread::readFaultNames(path);
    std::srand(11);
    const int expected = std::rand();
    std::srand(11);
    EXPECT_EQ(ZNProjectBrowserPluginReadFaultThread::readFaultNames(path).size(), 4);
    EXPECT_EQ(std::rand(), expected);
}

TEST(ProjectBrowserFaultNames, DescriptorsWithIdsOutsideThePatchesAreNeitherListedNorCounted)
{
    auto set = faultSet({"One", "Two", "Three"});  // patches 0..3
    QDomDocument doc;
    QDomElement header = set->createHeader(doc);
    const int ids[] = {0, 4, 3, -1, 99};  // 4 is numberOfPatch
    const char* names[] = {"Zero", "Four", "Three", "Unnamed", "Unnamed"};
    QList<QDomElement> lights;
    for (QDomElement e = header.firstChildElement("ZN3DFaultPatchLight"); !e.isNull();
         e = e.nextSiblingElement("ZN3DFaultPatchLight"))
        lights << e;
    ASSERT_EQ(lights.size(), 3);
    while (lights.size() < 5) lights << header.insertAfter(lights.last().cloneNode(true), lights.last()).toElement();
    for (int k = 0; k < 5; ++k) {
        lights[k].firstChildElement("faultId").setAttribute("value", ids[k]);
        lights[k].firstChildElement("faultName").setAttribute("value", names[k]);
    }
    QTemporaryDir dir;
    const QString path = dir.filePath("ids.faultset");
    ASSERT_TRUE(writeObjectFile(path, header, QByteArray(64, '\0')));
    EXPECT_EQ(ZNProjectBrowserPluginReadFaultThread::readFaultNames(path), QStringList{"Three"});

    // Without a patch count no id is inside.
    header.removeChild(header.firstChildElement("numberOfPatch"));
    ASSERT_TRUE(writeObjectFile(path, header, QByteArray()));
    EXPECT_TRUE(ZNProjectBrowserPluginReadFaultThread::readFaultNames(path).isEmpty());
}

TEST(ProjectBrowserFaultNames, TheHeaderAloneIsReadAndAnUnreadableOneGivesNothing)
{
    QTemporaryDir dir;
    const QString good = dir.filePath("good.faultset");
    ASSERT_TRUE(writeFaultSet(good, {"North", "South"}));
    const QByteArray bytes = readFileBytes(good);
    ZNObjectFile::Header header;
    ASSERT_TRUE(ZNObjectFile::readHeader(good, header));
    const qint64 dataOffset = header.dataOffset;
    ASSERT_LT(dataOffset, bytes.size());
    const qint64 headerMiddle = ZNObjectFile::kGlobalHeaderSize + header.headerSize / 2;

    // Without its data block the file still names its faults: only the header is read.
    const QString headerOnly = dir.filePath("header-only.faultset");
    ASSERT_TRUE(writeFileBytes(headerOnly, bytes.left(dataOffset)));
    EXPECT_EQ(ZNProjectBrowserPluginReadFaultThread::readFaultNames(headerOnly), (QStringList{"North", "South"}));

    const QString text = dir.filePath("text.faultset");
    ASSERT_TRUE(writeFileBytes(text, "North\nSouth\n"));
    struct Case {
        const char* what;
        QString path;
        QByteArray bytes;  // written first when not empty
    };
    const Case cases[] = {
        {"an empty path", QString(), {}},
        {"a missing file", dir.filePath("missing.faultset"), {}},
        {"a text file", text, {}},
        {"truncated inside the global header", dir.filePath("t1.faultset"), bytes.left(1000)},
        {"truncated inside the header", dir.filePath("t2.faultset"), bytes.left(headerMiddle)},
    };
    for (const Case& c : cases) {
        if (!c.bytes.isEmpty()) {
            ASSERT_TRUE(writeFileBytes(c.path, c.bytes)) << c.what;
        }
        EXPECT_TRUE(ZNProjectBrowserPluginReadFaultThread::readFaultNames(c.path).isEmpty()) << c.what;
    }
}

TEST(ProjectBrowserFaultPlugin, FillsEachFaultSetWithDisabledItemsOfItsFaultNames)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFaultSet(dir.filePath("a.faultset"), {"North", "", "South"}));
    ASSERT_TRUE(writeFaultSet(dir.filePath("b.faultset"), {"West"}, false));
    ASSERT_TRUE(writeFileBytes(dir.filePath("notes.txt"), "not a fault set"));
    RecordingEventBus bus;
    Browser browser;
    QSignalSpy allRead(&browser.plugin, &ZNProjectBrowserPluginFault::readersFinished);
    browser.model.setDirectory(dir.path());
    EXPECT_EQ(browser.plugin.readerCount(), 1);
    ASSERT_EQ(childTexts(browser.branch), (QStringList{"a.faultset", "b.faultset"}));
    ASSERT_TRUE(browser.waitForReaders());
    EXPECT_EQ(allRead.count(), 1);

    const QString a = QDir(dir.path()).absoluteFilePath("a.faultset");
    const QString b = QDir(dir.path()).absoluteFilePath("b.faultset");
    QStandardItem* setA = browser.branch->child(0);
    EXPECT_EQ(childTexts(setA), (QStringList{"North", "South", "Unnamed (1)"}));
    EXPECT_EQ(browser.branch->child(1)->rowCount(), 0);  // an automatic fault set
    const QImage icon = ZNIconHandler::icon("faultpicking").pixmap(16, 16).toImage();
    ASSERT_FALSE(icon.isNull());
    for (int row = 0; row < setA->rowCount(); ++row) {
        const ZNProjectBrowserItem* name = ZNProjectBrowserItem::of(setA->child(row));
        ASSERT_NE(name, nullptr);
        EXPECT_EQ(name->kind(), 3);
        EXPECT_EQ(name->dataKey(), "PROJECT_PATH");
        EXPECT_EQ(name->path(), a);
        EXPECT_EQ(name->tag(), 100);
        EXPECT_FALSE(name->isEditable());
        EXPECT_FALSE(name->isEnabled());
        EXPECT_EQ(name->icon().pixmap(16, 16).toImage(), icon);
    }
    // Each file's names are announced once, fault sets without names included.
    const QString message = "Project browser: fill fault names of fault set ";
    EXPECT_EQ(bus.messages, (QList<QPair<int, QString>>{{3, message + a}, {3, message + b}}));
}

TEST(ProjectBrowserFaultPlugin, NamesGoUnderTheFirstItemWithExactlyThePathAndOnlyThere)
{
    RecordingEventBus bus;
    Browser browser;
    browser.model.setDirectory(QString());
    const QString path = "/p/a.faultset";
    ZNProjectBrowserItem* file = browser.model.addFileItem(browser.branch, path, 1);
    ZNProjectBrowserItem* longer = browser.model.addFileItem(browser.branch, path + ".bak", 1);

    browser.plugin.fillFaultModel(path, {"F1", "F2"});
    browser.plugin.fillFaultModel(path, {"F3"});  // appended after what is there
    EXPECT_EQ(childTexts(file), (QStringList{"F1", "F2", "F3"}));
    EXPECT_EQ(longer->rowCount(), 0);
    EXPECT_EQ(bus.messages.size(), 2);

    // A result for a path no longer in the tree is dropped, without a word.
    browser.plugin.fillFaultModel("/p/gone.faultset", {"F1"});
    browser.plugin.fillFaultModel("/P/A.FAULTSET", {"F1"});
    EXPECT_EQ(bus.messages.size(), 2);
    EXPECT_EQ(browser.model.rowCount(), 1);
    EXPECT_EQ(browser.branch->rowCount(), 2);
}

TEST(ProjectBrowserFaultPlugin, AFileTruncatedInsideItsHeaderListsNoNamesAndRaisesNoDialog)
{
    QTemporaryDir dir;
    const QString good = dir.filePath("good.faultset");
    ASSERT_TRUE(writeFaultSet(good, {"North"}));
    const QByteArray bytes = readFileBytes(good);
    const QString cut = QDir(dir.path()).absoluteFilePath("cut.faultset");
    ASSERT_TRUE(writeFileBytes(cut, bytes.left(ZNObjectFile::kGlobalHeaderSize + 100)));
    RecordingEventBus bus;
    RecordingMessageBox boxes;
    Browser browser;
    browser.model.setDirectory(dir.path());
    ASSERT_TRUE(browser.waitForReaders());
    ASSERT_NE(browser.itemOf(cut), nullptr);
    EXPECT_EQ(browser.itemOf(cut)->rowCount(), 0);
    EXPECT_EQ(childTexts(browser.itemOf(QDir(dir.path()).absoluteFilePath("good.faultset"))), QStringList{"North"});
    EXPECT_TRUE(boxes.shown.isEmpty());
    QList<QPair<int, QString>> aboutCut;
    for (const auto& m : bus.messages)
        if (m.second.contains("cut.faultset")) aboutCut << m;
    EXPECT_EQ(aboutCut, (QList<QPair<int, QString>>{{3, "Project browser: fill fault names of fault set " + cut}}));
}

// A folder of 1,000 fault sets of 100 faults each, "set0000.faultset" to
// "set0999.faultset", made once for the tests that need one. The files are hard links to
// one file: the same bytes under 1,000 names, each read through its own path, so that
// what the tests see is the browser's work rather than the disk's.
class ProjectBrowserLargeFolder : public testing::Test {
protected:
    static constexpr int kFiles = 1000;
    static constexpr int kFaults = 100;

    static void SetUpTestSuite()
    {
        folder = new QTemporaryDir;
        for (int f = 0; f < kFaults; ++f) names << QString("Fault %1").arg(f + 1);
        const QString first = folder->filePath("set0000.faultset");
        ASSERT_TRUE(writeFaultSet(first, names));
        for (int k = 1; k < kFiles; ++k) {
            const QString name = folder->filePath(QString("set%1.faultset").arg(k, 4, 10, QChar('0')));
            ASSERT_EQ(::link(QFile::encodeName(first).constData(), QFile::encodeName(name).constData()), 0);
        }
    }
    static void TearDownTestSuite()
    {
        delete folder;
        folder = nullptr;
    }

    // Runs the event loop: `start` first, then until the browser has no reader left (false
    // after `ms`), calling `tick` every few milliseconds meanwhile.
    static bool runUntilFilled(Browser& browser, const std::function<void()>& start,
                               const std::function<void()>& tick, int ms = 300000)
    {
        QEventLoop loop;
        QTimer::singleShot(0, &loop, start);
        QTimer ticks;
        ticks.setInterval(2);
        QObject::connect(&ticks, &QTimer::timeout, [&] {
            tick();
            if (browser.plugin.readerCount() == 0) loop.quit();
        });
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        ticks.start();
        loop.exec();
        return browser.plugin.readerCount() == 0;
    }

    // Every fault set of the folder lists every name, once.
    static void expectEveryName(const Browser& browser)
    {
        ASSERT_EQ(browser.branch->rowCount(), kFiles);
        for (int row = 0; row < kFiles; ++row) ASSERT_EQ(childTexts(browser.branch->child(row)), names) << row;
    }

    static QTemporaryDir* folder;
    static QStringList names;
};
QTemporaryDir* ProjectBrowserLargeFolder::folder = nullptr;
QStringList ProjectBrowserLargeFolder::names;

TEST_F(ProjectBrowserLargeFolder, FillingADirectoryAgainInterruptsAndReplacesItsReader)
{
    Browser browser;
    QSignalSpy allRead(&browser.plugin, &ZNProjectBrowserPluginFault::readersFinished);
    browser.model.setDirectory(folder->path());
    QPointer<ZNProjectBrowserPluginReadFaultThread> first = browser.plugin.reader(browser.model.directory());
    ASSERT_FALSE(first.isNull());
    // The files the first reader got through, counted on this thread: the reader runs
    // already, and only a queued call touches nothing of this thread's from the reader's.
    int firstRead = 0;
    QObject counter;
    QObject::connect(first, &ZNProjectBrowserPluginReadThread::fileRead, &counter, [&firstRead] { ++firstRead; },
                     Qt::QueuedConnection);
    browser.model.setDirectory(folder->path());
    EXPECT_EQ(browser.plugin.readerCount(), 1);
    EXPECT_NE(browser.plugin.reader(browser.model.directory()), first.data());

    ASSERT_TRUE(runUntilFilled(browser, [] {}, [] {}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.isNull(); }, 5000));  // deleted once done
    EXPECT_LT(firstRead, kFiles);  // stopped early
    EXPECT_EQ(allRead.count(), 1);  // when the second one ended
    // Nothing the first reader still delivered doubled the names.
    expectEveryName(browser);
}

// Nanoseconds the calling thread has spent waiting for a processor while ready to run
// (the scheduler's statistics); 0 where the system does not tell.
qint64 runQueueWaitNs()
{
    QFile stats(QStringLiteral("/proc/thread-self/schedstat"));  // on-cpu, run-queue wait, slices
    if (!stats.open(QIODevice::ReadOnly)) return 0;
    const QList<QByteArray> fields = stats.readAll().simplified().split(' ');
    return fields.size() >= 2 ? fields[1].toLongLong() : 0;
}

// The GUI thread stays live while the folder fills: the longest gap between the ticks of
// a fast timer stays short, and every name arrives. A gap counts the time the GUI thread
// worked or waited, not the time it was ready while other processes had the processors
// (a loaded machine would fail the test, not the browser). Instrumented builds run
// several times slower: the bound scales with them.
TEST_F(ProjectBrowserLargeFolder, FillsWithoutBlockingTheGuiThread)
{
#if defined(__SANITIZE_THREAD__)
    constexpr qint64 kSlowdown = 10;
#elif defined(__SANITIZE_ADDRESS__)
    constexpr qint64 kSlowdown = 3;
#else
    constexpr qint64 kSlowdown = 1;
#endif
    constexpr qint64 kLongestGapNs = 50'000'000 * kSlowdown;
    Browser browser;
    QElapsedTimer clock;
    qint64 lastTick = 0, lastWait = runQueueWaitNs(), longestGap = 0;
    const auto tick = [&] {
        const qint64 now = clock.nsecsElapsed(), wait = runQueueWaitNs();
        longestGap = std::max(longestGap, (now - lastTick) - (wait - lastWait));
        lastTick = now;
        lastWait = wait;
    };
    clock.start();
    // The files are listed on this thread, inside the measured time.
    ASSERT_TRUE(runUntilFilled(browser, [&] { browser.model.setDirectory(folder->path()); }, tick));
    EXPECT_LT(longestGap, kLongestGapNs);
    expectEveryName(browser);
}
