#include <QtWidgets>

#include "tests/support/DesktopPortal.h"
#include "tests/ui/ProgramRun.h"

namespace {

class Window : public ProgramRun {
protected:
    static double Brightness(const QImage& picture) {
        return QColor(picture.pixel(5, picture.height() / 2)).lightnessF();
    }

    std::string MakeProduction(const std::string& name) const {
        mHome.Write(name + "/Reel 1.zuproj", "a");
        mHome.MakeFolder(name + "/Sound");
        return mHome.Path(name);
    }

    /// Where the window was, with its frame, as `QWidget::saveGeometry` has it behind 8 bytes.
    QRect SavedPlace() const {
        const QByteArray layout = QByteArray::fromStdString(mHome.Read("profile/Window Layout.json"));
        const QJsonValue geometry = QJsonDocument::fromJson(layout).object().value(QLatin1String("geometry"));
        QDataStream stream(QByteArray::fromBase64(geometry.toString().toLatin1()).mid(8));
        QRect place;
        stream.setVersion(QDataStream::Qt_4_0);
        stream >> place;
        return place;
    }

    const std::string mPicture = mHome.Path("picture.png"), mProfile = mHome.Path("profile");
};

TEST_F(Window, FirstStartShowsTheSampleAndAPictureLeavesNoTrace) {
    const QImage picture = Picture({"--screenshot", mPicture, "--profile", mProfile});
    EXPECT_EQ(picture.size(), QSize(1440, 820));
    EXPECT_LT(Brightness(picture), 0.3) << "dark where there is no portal";
    EXPECT_TRUE(mHome.Exists("data/production-desk/North Shore/05 Stock footage/Clip 500.zuproj"));
    EXPECT_FALSE(mHome.Exists("profile/Recent Productions.json") || mHome.Exists("profile/Window Layout.json"));

    const QImage empty = Picture({"--screenshot", mPicture, "--profile", mProfile, mHome.MakeFolder("Empty")});
    EXPECT_EQ(empty.size(), picture.size());
    EXPECT_NE(empty, picture);
}

TEST_F(Window, IsDrawnAtEveryScaleAndTheme) {
    const std::string production = MakeProduction("Harbour");
    SetVariable("QT_SCALE_FACTOR", "2");
    const QImage light = Picture({"--screenshot", mPicture, "--profile", mProfile, "--theme", "light",
                                  "--window-size", "900x600", production});
    EXPECT_EQ(light.size(), QSize(1800, 1200));
    EXPECT_GT(Brightness(light), 0.7);
}

TEST_F(Window, HasTheColorSchemeOfTheDesktopsPortal) {
    if (!DesktopPortal::IsPossible()) GTEST_SKIP() << "there is no dbus-daemon to ask over";
    DesktopPortal portal(mHome.Path());
    ASSERT_TRUE(portal.IsThere());
    SetVariable("DBUS_SESSION_BUS_ADDRESS", portal.Address().toStdString());
    QProcess process;
    Start(process, {"--screenshot", mPicture, "--profile", mProfile, mHome.Path()});
    EXPECT_TRUE(WaitFor([&] {
        QCoreApplication::processEvents();
        return process.state() == QProcess::NotRunning;
    }));
    EXPECT_GT(Brightness(QImage(QString::fromStdString(mPicture))), 0.7);
}

TEST_F(Window, SaysWhyAPictureCannotBeWritten) {
    const Result result =
        Run({"--screenshot", mHome.Path("no/picture.png"), "--profile", mProfile, mHome.Path()});
    EXPECT_EQ(result.mExitCode, 1);
    EXPECT_NE(result.mErrors.find("no/picture.png"), std::string::npos) << result.mErrors;
}

TEST_F(Window, OpensTheLastProductionAgain) {
    const std::string production = MakeProduction("Harbour");
    const auto isRemembered = [&] { return mHome.Exists("profile/Recent Productions.json"); };
    const Result first = RunWindowUntil(isRemembered, {"--profile", mProfile, production});
    EXPECT_EQ(first.mExitCode, 0) << first.mErrors;
    EXPECT_TRUE(SavedPlace().isValid() && QRect(0, 0, 800, 800).contains(SavedPlace()))
        << "the screen's size: " << SavedPlace().width() << 'x' << SavedPlace().height();
    EXPECT_NE(mHome.Read("profile/Recent Productions.json").find("Harbour"), std::string::npos);
    EXPECT_FALSE(mHome.Exists("data/production-desk/North Shore"));

    const QImage named = Picture({"--screenshot", mPicture, "--profile", mProfile, production});
    EXPECT_EQ(Picture({"--screenshot", mPicture, "--profile", mProfile}), named);
}

TEST_F(Window, GoesOnWithAProductionThatIsGoneAndSettingsThatAreNoJson) {
    const char* const files[] = {"Recent Productions.json", "Window Layout.json"};
    for (const char* file : files) mHome.Write(std::string("profile/") + file, "{\"docks\": [");
    mHome.Write("profile/Debug Database.json", "no json");
    mHome.Write("profile/shortcuts.json", "no json");
    mHome.Write("profile/menus/mine.json", "no json");
    mHome.Write("plugins/Text.so", "no library");
    const std::string production = MakeProduction("Harbour");
    const auto isOpen = [&] {
        return mHome.Exists("profile/Recent Productions.json.unreadable-1") &&
               mHome.Exists("profile/Recent Productions.json");
    };
    const Result result =
        RunWindowUntil(isOpen, {"--profile", mProfile, "--plugin-dir", mHome.Path("plugins"), production});
    EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
    for (const char* file : files)
        EXPECT_EQ(mHome.Read(std::string("profile/") + file + ".unreadable-1"), "{\"docks\": [") << file;
    const std::string log = mHome.Read("profile/log.txt");
    for (const char* named : {"Recent Productions.json", "Window Layout.json", "Debug Database.json",
                              "shortcuts.json", "mine.json", "Text.so"})
        EXPECT_NE(log.find(named), std::string::npos) << named << " in:\n" << log;

    mHome.Remove("Harbour");
    const Result gone = Run({"--screenshot", mPicture, "--profile", mProfile});
    EXPECT_EQ(gone.mExitCode, 1);
    EXPECT_NE(gone.mErrors.find("Harbour"), std::string::npos) << gone.mErrors;
}

}  // namespace
