#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

#include "desk/core/edges/FileBrowser.h"
#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

namespace desk {
namespace {

/// The file manager on the bus: notes what it is asked, or refuses.
class FileManager : public QDBusVirtualObject {
public:
    explicit FileManager(SessionBus& bus) {
        mIsThere =
            bus.Connection().registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), this) &&
            bus.Connection().registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString uris = message.arguments().value(0).toStringList().join(QLatin1Char(' '));
        mAsked << message.member() + QLatin1Char(' ') + uris + message.signature();
        connection.send(mRefuses ? message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("not now"))
                                 : message.createReply());
        return true;
    }

    bool mIsThere = false, mRefuses = false;
    QStringList mAsked;
};

class FileBrowserTest : public testing::Test {
protected:
    FileBrowserTest() {
        GetServices().mMainThread = &mMainThread;
        GetServices().mWorkerPool = &mPool;
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QByteArray::fromStdString(mFolder.Path("bus")));
    }
    ~FileBrowserTest() override {
        mPool.WaitUntilIdle(std::chrono::seconds(10));
        // What was started goes when it has ended.
        EXPECT_TRUE(QTest::qWaitFor([] { return !HasChildProcess(); }));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        qputenv("PATH", mPathBefore);
        GetServices() = mBefore;
    }
    /// The only program there is from now on.
    void MakeOpener(const std::string& script) {
        chmod(mFolder.Write("bin/xdg-open", "#!/bin/sh\n" + script).c_str(), 0700);
        qputenv("PATH", QByteArray::fromStdString(mFolder.Path("bin")));
    }
    void Show(const std::vector<std::string>& paths, Desktop::Reveal reveal) {
        ShowInFileBrowser(paths, reveal, [this](const std::string& folder) { mProblems.push_back(folder); });
    }
    static bool HasChildProcess() {
        siginfo_t child{};
        return ::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0;
    }
    std::string Opened() const { return mFolder.Exists("opened") ? mFolder.Read("opened") : ""; }

    const Services mBefore = GetServices();
    const QByteArray mPathBefore = qgetenv("PATH");
    TemporaryFolder mFolder;
    const std::string mNotes = "echo \"$1\" >> '" + mFolder.Path("opened") + "'";
    QtMainThread mMainThread;
    WorkerPool mPool{1};
    std::vector<std::string> mProblems;
};

TEST_F(FileBrowserTest, AsksTheFileManagerOnTheBus) {
    if (!SessionBus::IsPossible()) GTEST_SKIP() << "there is no dbus-daemon to ask over";
    SessionBus bus(mFolder.Path(), QStringLiteral("test file manager"));
    FileManager manager(bus);
    ASSERT_TRUE(manager.mIsThere);
    Show({"/p/Reel 1%.zuproj", "/p/\xE9\xC3\xA9"}, Desktop::Reveal::Items);
    Show({"/p"}, Desktop::Reveal::Folders);
    ASSERT_TRUE(QTest::qWaitFor([&] { return manager.mAsked.size() == 2; }));
    manager.mAsked.sort();
    EXPECT_EQ(manager.mAsked,
              (QStringList{QStringLiteral("ShowFolders file:///pass"),
                           QStringLiteral("ShowItems file:///p/Reel%201%25.zuproj file:///p/%E9%C3%A9ass")}));
    EXPECT_TRUE(mProblems.empty());

    manager.mRefuses = true;
    const ExpectLogged log("not now");
    MakeOpener(mNotes);
    Show({"/p"}, Desktop::Reveal::Folders);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Opened() == "file:///p\n"; }));
}

TEST_F(FileBrowserTest, WithoutAFileManagerEachFolderIsOpenedOnceOrTheReasonTold) {
    const ExpectLogged log("No file browser shows items");
    MakeOpener(mNotes);
    Show({"/p/a b/1", "/p/a b/2", "/1"}, Desktop::Reveal::Items);
    const std::string wanted = "file:///p/a%20b\n";
    ASSERT_TRUE(QTest::qWaitFor([&] { return Opened().size() == wanted.size() + 9; })) << Opened();
    EXPECT_NE(Opened().find(wanted), std::string::npos);
    EXPECT_TRUE(mProblems.empty());

    const ExpectLogged exitCode("xdg-open: exit code 4"), notThere("with xdg-open: execvp");
    MakeOpener("exit 4");
    Show({"/p"}, Desktop::Reveal::Folders);
    ASSERT_TRUE(QTest::qWaitFor([this] { return mProblems.size() == 1; }));
    mFolder.Remove("bin");
    Show({"/p"}, Desktop::Reveal::Folders);
    ASSERT_TRUE(QTest::qWaitFor([this] { return mProblems.size() == 2; }));
    EXPECT_EQ(mProblems, (std::vector<std::string>{"/p", "/p"}));
}

}  // namespace
}  // namespace desk
