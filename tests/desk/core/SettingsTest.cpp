#include "desk/core/log/Log.h"
#include "desk/core/log/UsageLogFile.h"
#include "desk/core/settings/Profile.h"
#include "host/core/UsageLogger.h"
#include "tests/support/HostFixture.h"

namespace {

using SettingsTest = HostFixture;

}  // namespace

TEST_F(SettingsTest, TheProfileFollowsTheBaseDirectorySpecification) {
    std::map<const char*, QByteArray> before;
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) before[name] = qgetenv(name);
    const auto restore = qScopeGuard([&before] {
        for (const auto& [name, value] : before) qputenv(name, value);
    });
    qputenv("HOME", mFolder.Path().c_str());
    qputenv("XDG_CONFIG_HOME", "/somewhere");
    qputenv("XDG_DATA_HOME", "relative/counts/as/not/set");
    EXPECT_EQ(desk::Profile::DefaultFolder(), "/somewhere/production-desk");
    EXPECT_EQ(desk::Profile::UserDataFolder(), mFolder.Path(".local/share/production-desk"));
    qunsetenv("XDG_CONFIG_HOME");
    const desk::Profile profile;
    EXPECT_EQ(profile.Folder(), mFolder.Path(".config/production-desk"));
    EXPECT_EQ(std::filesystem::status(profile.Folder()).permissions(), std::filesystem::perms::owner_all);
    EXPECT_EQ(desk::Profile(mFolder.Path("a/../b//")).Folder(), mFolder.Path("b"));
    mFolder.Write("file");
    EXPECT_THROW(desk::Profile(mFolder.Path("file")), host::FileException);
    EXPECT_THROW(desk::Profile(mFolder.Path("file/below")), host::FileException);
}

TEST_F(SettingsTest, AFullUsageFileIsBegunAnewAndAFailureToldOnce) {
    mFolder.Write("usage.jsonl", std::string((4 << 20) - 10, 'x'));
    {
        const desk::UsageLogFile file(mFolder.Path("usage.jsonl"));
        host::UsageLogger::Get()->LogEvent("c", "n", "v");
        ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    }
    EXPECT_EQ(mFolder.Read("usage.jsonl.old").size(), (4u << 20) - 10);
    EXPECT_LT(mFolder.Read("usage.jsonl").size(), 200u);

    const ExpectLogged log("Usage is not recorded");
    const desk::UsageLogFile file(mFolder.Path("absent/usage.jsonl"));
    for (int i = 0; i < 3; ++i) {
        host::UsageLogger::Get()->LogEvent("c", "n", "v");
        ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    }
    EXPECT_EQ(log.Count(), 1);
}

TEST_F(SettingsTest, TheLogCannotBeForgedByNamesAndIsCutWhenLarge) {
    const std::string path = mFolder.Write("log.txt", std::string((1 << 20) + 1, 'x'));
    const ExpectLogged log(R"(a\nb\x1B\u202E \xFF \xC2\x85 é 😀)");
    desk::OpenLogFile(path);
    desk::Log(desk::LogLevel::Info, "a\nb\x1B\u202E \xFF \xC2\u0085 é 😀");
    const std::string text = mFolder.Read("log.txt");
    EXPECT_EQ(std::ranges::count(text, '\n'), 1);
    EXPECT_NE(text.find("info: a"), std::string::npos);
    EXPECT_EQ(mFolder.Read("log.txt.old").size(), (1u << 20) + 1);
    const ExpectLogged refused("cannot be written");
    desk::OpenLogFile(mFolder.Path());
}
