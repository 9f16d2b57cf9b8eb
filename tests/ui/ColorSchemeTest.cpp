#include <QCoreApplication>

#include "tests/support/DesktopPortal.h"
#include "tests/ui/ProgramRun.h"

namespace {

class ColorScheme : public ProgramRun {
protected:
    double PictureBrightness() {
        QProcess process;
        Start(process, {"--screenshot", mHome.Path("picture.png"), "--profile", mHome.Path("profile"), mHome.Path()});
        EXPECT_TRUE(WaitFor([&] {
            QCoreApplication::processEvents();
            return process.state() == QProcess::NotRunning;
        }));
        const QImage picture(QString::fromStdString(mHome.Path("picture.png")));
        return QColor(picture.pixel(5, picture.height() / 2)).lightnessF();
    }
};

TEST_F(ColorScheme, ComesFromTheDesktopsPortalAndIsDarkWithoutOne) {
    EXPECT_LT(PictureBrightness(), 0.3) << "no bus";
    if (!DesktopPortal::IsPossible()) GTEST_SKIP() << "there is no dbus-daemon to ask over";

    DesktopPortal portal(mHome.Path());
    ASSERT_TRUE(portal.IsThere());
    SetVariable("DBUS_SESSION_BUS_ADDRESS", portal.Address().toStdString());
    EXPECT_GT(PictureBrightness(), 0.7);
    EXPECT_EQ(portal.CountQuestions(), 1);
    portal.Leave();
    EXPECT_LT(PictureBrightness(), 0.3) << "a bus without a portal";
}

}  // namespace
