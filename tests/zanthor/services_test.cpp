#include <gtest/gtest.h>

#include <thread>

#include <QDir>
#include <QTemporaryDir>

#include <znobject.h>
#include <znsettings.h>

#include <testservices.h>

namespace {
class NamedObject : public ZNObject {
public:
    explicit NamedObject(QString type) : m_type(std::move(type)) {}
    QString getZNObjectType() const override { return m_type; }

private:
    QString m_type;
};
} // namespace

TEST(EventBus, DefaultBusPrintsOnlyErrorKinds)
{
    StderrCapture err;
    for (int kind = 0; kind <= 4; ++kind) ZNEventBus::sendMessage(kind, QString("kind %1").arg(kind));
    EXPECT_EQ(err.text().toStdString(), "error: kind 1\nfile error: kind 2\n");
}

TEST(EventBus, InstalledBusReceivesEverythingAndIsRemovedWithItsScope)
{
    {
        RecordingEventBus bus;
        ZNEventBus::sendMessage(3, "Writing");
        ZNEventBus::sendMessage(1, "The fault set cannot be read");
        EXPECT_EQ(bus.messages.size(), 2);
        EXPECT_TRUE(bus.contains(1, "The fault set cannot be read"));
    }
    StderrCapture err;
    ZNEventBus::sendMessage(1, "after");
    EXPECT_EQ(err.text().toStdString(), "error: after\n");
}

TEST(EventBus, EachThreadKnowsTheLastErrorItSent)
{
    RecordingEventBus bus;
    ZNEventBus::clearLastErrorOfThisThread();
    ZNEventBus::sendMessage(ZNEventBus::FileError, "a.faultset: truncated");
    ZNEventBus::sendMessage(ZNEventBus::Information, "reading");
    EXPECT_EQ(ZNEventBus::lastErrorOfThisThread(), "a.faultset: truncated");
    QString seenByOther = "untouched";
    std::thread other([&seenByOther] {
        seenByOther = ZNEventBus::lastErrorOfThisThread();
        ZNEventBus::sendMessage(ZNEventBus::Error, "other thread");
    });
    other.join();
    EXPECT_TRUE(seenByOther.isEmpty());
    EXPECT_EQ(ZNEventBus::lastErrorOfThisThread(), "a.faultset: truncated");
    ZNEventBus::clearLastErrorOfThisThread();
    EXPECT_TRUE(ZNEventBus::lastErrorOfThisThread().isEmpty());
}

TEST(Process, ActionsReachListenersAndTheRecorder)
{
    RecordingProcess process;
    QStringList heard;
    const int handle = process.addActionListener(
        [&](const QString& action, ZNObject*) { heard << action; });
    ZNProcess::sendActionToMdi("UPDATE_FAULT_MESH", nullptr);
    process.removeActionListener(handle);
    ZNProcess::sendActionToMdi("UPDATE_FAULT_LIGHT", nullptr);
    EXPECT_EQ(heard, QStringList{"UPDATE_FAULT_MESH"});
    EXPECT_EQ(process.actionNames(), (QStringList{"UPDATE_FAULT_MESH", "UPDATE_FAULT_LIGHT"}));
}

TEST(Process, RegistryKeepsOneEntryPerObjectAndFiltersByType)
{
    RecordingProcess process;
    NamedObject a("ZNFaultPatchManager"), b("ZN3DFaultPatch"), c("ZNFaultPatchManager");
    for (ZNObject* o : {static_cast<ZNObject*>(&a), static_cast<ZNObject*>(&b),
                        static_cast<ZNObject*>(&c), static_cast<ZNObject*>(&a)})
        ZNProcess::insertProcessObject(o);
    EXPECT_EQ(ZNProcess::getObjectListWithType("ZNFaultPatchManager"),
              (QList<ZNObject*>{&a, &c}));
    ZNProcess::removeProcessObject(&a);
    EXPECT_FALSE(ZNProcess::exists(&a));
    EXPECT_TRUE(ZNProcess::exists(&c));
    ZNProcess::removeProcessObject(&a);  // unknown now: nothing happens
    EXPECT_EQ(ZNProcess::getObjectListWithType("ZN3DFaultPatch").size(), 1);
}

TEST(ProgressBar, CancellingAfterNIncrementsIsSeenByTheBarAndItsChildren)
{
    RecordingProgress progress(3);
    const int parent = ZNProgressBarMgr::createProgressBar("Load Data", 10);
    const int child = ZNProgressBarMgr::createProgressBar("Merge Fault Patches", 5, parent);
    ZNProgressBarMgr::incrementProgressBar(parent);
    ZNProgressBarMgr::incrementProgressBar(parent);
    EXPECT_FALSE(ZNProgressBarMgr::isProgressBarCancelled(child));
    ZNProgressBarMgr::incrementProgressBar(parent);
    EXPECT_TRUE(ZNProgressBarMgr::isProgressBarCancelled(parent));
    EXPECT_TRUE(ZNProgressBarMgr::isProgressBarCancelled(child));
    ZNProgressBarMgr::closeProgressBar(child);
    ZNProgressBarMgr::closeProgressBar(parent);
    EXPECT_EQ(progress.titles, (QStringList{"Load Data", "Merge Fault Patches"}));
    EXPECT_EQ(progress.closed, 2);
    EXPECT_EQ(progress.openBarCount(), 0);
    EXPECT_FALSE(ZNProgressBarMgr::isProgressBarCancelled(parent)) << "closed bars are forgotten";
}

TEST(ProgressBar, NoBarIdIsAcceptedEverywhere)
{
    RecordingProgress progress;
    ZNProgressBarMgr::incrementProgressBar(-1);
    ZNProgressBarMgr::closeProgressBar(-1);
    EXPECT_FALSE(ZNProgressBarMgr::isProgressBarCancelled(-1));
    EXPECT_EQ(progress.increments, 0);
}

TEST(ProgressBar, DefaultManagerTracksStateSilentlyWhenNotOnATerminal)
{
    StderrCapture err;  // a pipe, not a terminal
    const int id = ZNProgressBarMgr::createProgressBar("Faults saving: Emergency Save", 4);
    ZNProgressBarMgr::incrementProgressBar(id, 2);
    ZNProgressBarMgr::Bar bar;
    ASSERT_TRUE(ZNProgressBarMgr::instance().bar(id, bar));
    EXPECT_EQ(bar.value, 2);
    ZNProgressBarMgr::closeProgressBar(id);
    EXPECT_EQ(err.text(), "");
}

TEST(Settings, ValuesLiveInTheOverriddenUserDirectory)
{
    QTemporaryDir dir;
    const QByteArray previous = qgetenv("KORVALITH_SETTINGS_DIR");
    qputenv("KORVALITH_SETTINGS_DIR", dir.path().toUtf8());
    EXPECT_EQ(ZNSettings::userSettingsDirectory(), QDir::cleanPath(dir.path()));
    EXPECT_EQ(ZNSettings::value("FaultPicking", "AutoSaveStep", 10).toInt(), 10);
    ASSERT_TRUE(ZNSettings::setValue("FaultPicking", "AutoSaveStep", 3));
    EXPECT_EQ(ZNSettings::value("FaultPicking", "AutoSaveStep", 10).toInt(), 3);
    EXPECT_TRUE(QFile::exists(ZNSettings::userSettingsFile("settings.ini")));
    qputenv("KORVALITH_SETTINGS_DIR", previous);
}

TEST(MessageBox, WithoutAGuiAMessageIsLoggedAsAnErrorInsteadOfBlocking)
{
    RecordingEventBus bus;
    ZNMessageBox::warning("Error", "Fault named \"A:B\"<br>Operation aborted.");
    EXPECT_EQ(bus.messages, (QList<QPair<int, QString>>{
                                {ZNEventBus::Error, "Error: Fault named \"A:B\"\nOperation aborted."}}));
    RecordingMessageBox boxes;
    ZNMessageBox::showMessage(ZNMessageBox::Critical, "T", "x");
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown[0].icon, ZNMessageBox::Critical);
    EXPECT_EQ(bus.messages.size(), 1);
}
