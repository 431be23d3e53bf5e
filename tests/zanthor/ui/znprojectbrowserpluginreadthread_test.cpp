#include <gtest/gtest.h>

#include <QPixmap>
#include <QSemaphore>
#include <QTest>

#include <zniconhandler.h>
#include <znprojectbrowserpluginreadthread.h>

namespace {

// Reads a file as its path with "!" added; with a gate, each read waits for a permit.
class EchoReader : public ZNProjectBrowserPluginReadThread {
public:
    explicit EchoReader(QSemaphore* gate = nullptr) : m_gate(gate) {}
    ~EchoReader() override
    {
        requestInterruption();
        if (m_gate) m_gate->release(1000);
        wait();
    }
    QSemaphore started;  // one permit per read begun

protected:
    QStringList readFile(const QString& path) const override
    {
        const_cast<QSemaphore&>(started).release();
        if (m_gate) m_gate->acquire();
        return {path + "!"};
    }

private:
    QSemaphore* m_gate;
};

struct Receiver : QObject {
    QStringList paths;
    QList<QStringList> texts;
    QList<QThread*> threads;
    void take(const QString& path, const QStringList& t)
    {
        paths << path;
        texts << t;
        threads << QThread::currentThread();
    }
};

} // namespace

TEST(ProjectBrowserReadThread, DeliversEachFilesResultInOrderOnTheReceiversThread)
{
    EchoReader reader;
    Receiver receiver;
    QObject::connect(&reader, &ZNProjectBrowserPluginReadThread::fileRead, &receiver, &Receiver::take,
                     Qt::QueuedConnection);
    for (const char* path : {"/a", "/b", "/c"}) reader.addPath(path);
    reader.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return receiver.paths.size() == 3; }, 5000));
    EXPECT_EQ(receiver.paths, (QStringList{"/a", "/b", "/c"}));
    EXPECT_EQ(receiver.texts[1], QStringList{"/b!"});
    for (QThread* thread : receiver.threads) EXPECT_EQ(thread, QThread::currentThread());
}

TEST(ProjectBrowserReadThread, StopsBeforeTheNextFileOnceInterruptedAndTakesNoPathWhileRunning)
{
    QSemaphore gate;
    EchoReader reader(&gate);
    Receiver receiver;
    QObject::connect(&reader, &ZNProjectBrowserPluginReadThread::fileRead, &receiver, &Receiver::take,
                     Qt::QueuedConnection);
    for (const char* path : {"/a", "/b", "/c"}) reader.addPath(path);
    reader.start();
    reader.started.acquire();  // inside the first read
    reader.addPath("/late");
    EXPECT_EQ(reader.paths().size(), 3);
    reader.requestInterruption();
    gate.release();
    ASSERT_TRUE(reader.wait(5000));
    QTest::qWait(20);
    EXPECT_EQ(receiver.paths, QStringList{"/a"});
}

TEST(IconHandler, ALibrarysDefaultIconNeverReplacesTheHosts)
{
    QPixmap red(4, 4), blue(4, 4);
    red.fill(Qt::red);
    blue.fill(Qt::blue);
    EXPECT_TRUE(ZNIconHandler::icon("test-unknown").isNull());
    EXPECT_TRUE(ZNIconHandler::setDefaultIcon("test-icon", QIcon(blue)));
    ZNIconHandler::setIcon("test-icon", QIcon(red));  // the host's own
    EXPECT_FALSE(ZNIconHandler::setDefaultIcon("test-icon", QIcon(blue)));
    EXPECT_TRUE(ZNIconHandler::hasIcon("test-icon"));
    EXPECT_EQ(ZNIconHandler::icon("test-icon").pixmap(4, 4).toImage().pixelColor(1, 1), QColor(Qt::red));
}
