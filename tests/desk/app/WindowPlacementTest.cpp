#include <gtest/gtest.h>

#include "desk/app/WindowPlacement.h"

namespace desk {
namespace {

TEST(WindowPlacement, AWindowAndItsFrameAreOnTheScreen) {
    const QRect panelAbove(0, 30, 1366, 738);
    const QRect fitted = FitOnScreen(QRect(40, 20, 1440, 820), panelAbove);
    EXPECT_TRUE(panelAbove.contains(fitted.adjusted(-4, -40, 4, 4)));
    EXPECT_GT(fitted.width(), 1300);
    EXPECT_GT(fitted.height(), 650);

    const QRect second(1366, 0, 1920, 1080);
    EXPECT_EQ(FitOnScreen(QRect(1500, 100, 1440, 820), second), QRect(1500, 100, 1440, 820));
    EXPECT_EQ(FitOnScreen(QRect(2800, 900, 400, 300), second).size(), QSize(400, 300));
    EXPECT_TRUE(second.contains(FitOnScreen(QRect(2950, 900, 400, 300), second)));
}

}  // namespace
}  // namespace desk
