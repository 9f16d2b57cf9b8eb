#include <gtest/gtest.h>

#include "desk/framework/WindowPlacement.h"

namespace desk {
namespace {

TEST(WindowPlacement, AFloatingWindowIsWhereOneCanTakeHoldOfIt) {
    const QRect first(0, 30, 1366, 738), second(1366, 0, 1920, 1080);
    const auto bring = [&](const QRect& window) { return BringOntoScreen(window, {first, second}); };
    for (const QRect& reachable :
         {QRect(100, 100, 400, 300), QRect(1200, 100, 400, 300), QRect(-300, 400, 400, 300),
          QRect(3200, 1060, 400, 300), QRect(20, 30, 3000, 700), QRect(5, 40, 30, 30)})
        EXPECT_EQ(bring(reachable), reachable) << reachable.x();
    EXPECT_TRUE(second.contains(bring({5000, 5000, 400, 300})));
    EXPECT_TRUE(first.contains(bring({-390, 100, 400, 300})));
    EXPECT_TRUE(first.contains(bring({100, -200, 400, 300}))) << "one moves it by its top edge";
    EXPECT_TRUE(first.contains(bring({100, 760, 400, 300})));
    EXPECT_TRUE(second.contains(bring({-100'000, -100'000, 100'000, 100'000})) ||
                first.contains(bring({-100'000, -100'000, 100'000, 100'000})));
}

}  // namespace
}  // namespace desk
