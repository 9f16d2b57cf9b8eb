#include <gtest/gtest.h>

#include <QTest>

#include "desk/app/SystemColorScheme.h"
#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "tests/support/DesktopPortal.h"
#include "tests/support/TemporaryFolder.h"

namespace desk {
namespace {

TEST(SystemColorScheme, TakesAPortalsLateAnswerAndFollowsTheUser) {
    if (!DesktopPortal::IsPossible()) GTEST_SKIP() << "there is no dbus-daemon to ask over";
    const TemporaryFolder folder;
    DesktopPortal portal(folder.Path());
    ASSERT_TRUE(portal.IsThere());
    qputenv("DBUS_SESSION_BUS_ADDRESS", portal.Address().toUtf8());
    const Services before = GetServices();
    QtMainThread mainThread;
    WorkerPool pool(1);
    GetServices().mMainThread = &mainThread;
    GetServices().mWorkerPool = &pool;

    std::vector<ThemeKind> changes;
    SystemColorScheme scheme([&changes](ThemeKind kind) { changes.push_back(kind); });
    EXPECT_EQ(scheme.Current(), ThemeKind::Dark) << "this thread is the portal's: it cannot have answered";
    ASSERT_TRUE(QTest::qWaitFor([&] { return scheme.Current() == ThemeKind::Light; }));
    // The first may come to the bus before the program's wish to hear of it.
    ASSERT_TRUE(QTest::qWaitFor([&] {
        portal.Choose(1);
        return scheme.Current() == ThemeKind::Dark;
    }));
    EXPECT_EQ(changes, (std::vector<ThemeKind>{ThemeKind::Light, ThemeKind::Dark}));
    pool.WaitUntilIdle(std::chrono::seconds(10));
    GetServices() = before;
}

}  // namespace
}  // namespace desk
