#include <sys/stat.h>
#include <unistd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <cstdlib>
#include <optional>

#include "desk/core/JsonFile.h"
#include "desk/core/Log.h"
#include "desk/core/Profile.h"
#include "desk/core/UsageLogFile.h"
#include "host/core/UsageLogger.h"
#include "host/files/FileException.h"
#include "tests/desk/core/CoreFixture.h"

namespace {

class SettingsTest : public CoreFixture {};

/// Sets an environment variable for one scope.
class Variable {
public:
    Variable(const char* name, const char* value) : mName(name) {
        if (const char* before = std::getenv(name)) mBefore = before;
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    ~Variable() { mBefore ? setenv(mName, mBefore->c_str(), 1) : unsetenv(mName); }

private:
    const char* mName;
    std::optional<std::string> mBefore;
};

QJsonObject Line(const std::string& text, int index) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(text).split('\n').value(index)).object();
}

}  // namespace

TEST_F(SettingsTest, ABrokenSettingsFileIsKeptAsideNeverReplaced) {
    const std::string path = mProfile.Path("recent.json");
    EXPECT_TRUE(desk::ReadSettingsFile(path).mMayWrite);
    for (const char* name : {"recent.json.unreadable-1", "recent.json.unreadable-2"}) {
        mProfile.Write("recent.json", "{broken");
        const ExpectLogged log(name);
        const desk::SettingsFile settings = desk::ReadSettingsFile(path);
        EXPECT_TRUE(settings.mMayWrite);
        EXPECT_NE(settings.mNotice.find(path), std::string::npos);
        EXPECT_EQ(mProfile.Read(name), "{broken");
        EXPECT_FALSE(mProfile.Exists("recent.json"));
    }
    desk::WriteJsonFile(path, {{QStringLiteral("a"), 1}});
    EXPECT_EQ(desk::ReadSettingsFile(path).mObject.value(QStringLiteral("a")).toInt(), 1);
}

TEST_F(SettingsTest, AFileThatTheDiskRefusesStaysInPlace) {
    struct : desk::PosixFileSystem {
        std::string ReadSmallFile(const std::string& path, std::size_t) override {
            throw host::FileException("read", host::UTF8to16(path), EIO);
        }
    } faulty;
    desk::GetServices().mFileSystem = &faulty;
    mProfile.Write("recent.json", "{}");
    const ExpectLogged log("changes are not saved");
    EXPECT_FALSE(desk::ReadSettingsFile(mProfile.Path("recent.json")).mMayWrite);
    EXPECT_TRUE(mProfile.Exists("recent.json"));
}

TEST_F(SettingsTest, HostileJsonIsAnsweredWithAReason) {
    using State = desk::JsonFile::State;
    const std::string deep = std::string(10000, '[') + std::string(10000, ']');
    for (const std::string& text : {std::string(), std::string(8, '\0'), std::string("1"), std::string("[]"),
                                    "{\"a\":" + deep + "}", std::string("{\"a\":1}x")}) {
        const desk::JsonFile file = desk::ParseJsonObject(text);
        EXPECT_EQ(file.mState, State::Broken);
        EXPECT_FALSE(file.mReason.empty());
    }
    EXPECT_EQ(desk::ParseJsonObject(R"({"a": 1, "a": 2})").mObject.value(QStringLiteral("a")).toInt(), 2);
    mProfile.MakeFolder("folder.json");
    EXPECT_EQ(desk::ReadJsonFile(mProfile.Path("folder.json")).mState, State::Broken);
    EXPECT_EQ(symlink("folder.json", mProfile.Path("link.json").c_str()), 0);
    EXPECT_EQ(desk::ReadJsonFile(mProfile.Path("link.json")).mState, State::Broken);
    EXPECT_EQ(desk::ReadJsonFile(mProfile.Path("absent.json")).mState, State::Absent);
}

TEST_F(SettingsTest, TheProfileFollowsTheBaseDirectorySpecification) {
    const Variable home("HOME", mProfile.Path().c_str());
    {
        const Variable config("XDG_CONFIG_HOME", "/somewhere");
        const Variable data("XDG_DATA_HOME", "relative/counts/as/not/set");
        EXPECT_EQ(desk::Profile::DefaultFolder(), "/somewhere/production-desk");
        EXPECT_EQ(desk::Profile::UserDataFolder(), mProfile.Path(".local/share/production-desk"));
    }
    const Variable config("XDG_CONFIG_HOME", nullptr);
    const desk::Profile profile;
    EXPECT_EQ(profile.Folder(), mProfile.Path(".config/production-desk"));
    EXPECT_EQ(profile.PathOf("x"), mProfile.Path(".config/production-desk/x"));
    struct stat status {};
    ASSERT_EQ(stat(profile.Folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    EXPECT_EQ(desk::Profile(mProfile.Path("a/../b//")).Folder(), mProfile.Path("b"));
    mProfile.Write("file");
    EXPECT_THROW(desk::Profile(mProfile.Path("file")), host::FileException);
    EXPECT_THROW(desk::Profile(mProfile.Path("file/below")), host::FileException);
}

TEST_F(SettingsTest, UsageLinesKeepTheirOrderAndTheirValuesTheirs) {
    EXPECT_FALSE(host::UsageLogger::Get());
    {
        const desk::UsageLogFile file(mProfile.Path("usage.jsonl"));
        for (int i = 0; i < 200; ++i)
            host::UsageLogger::Get()->LogEvent("production", "Trash", std::to_string(i));
        auto group =
            host::UsageLogger::Get()->CreateGroup("production", "PanelViewProperty", "view_properties");
        group->AddKeyValue("z", "1");
        group->AddKeyValue("a", "\"quoted\"\n");
        group->AddKeyValue("z", "2");
        group->Send();
        host::UsageLogger::Get()->CreateGroup("production", "never sent", "x")->AddKeyValue("a", "b");
    }
    EXPECT_FALSE(host::UsageLogger::Get());
    ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    const std::string text = mProfile.Read("usage.jsonl");
    EXPECT_EQ(std::ranges::count(text, '\n'), 201);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(
            Line(text, i).value(QStringLiteral("values")).toObject().value(QStringLiteral("value")).toString(),
            QString::number(i));
    EXPECT_EQ(Line(text, 0).value(QStringLiteral("event")).toString(), QStringLiteral("Trash"));
    EXPECT_NE(
        text.find(
            R"("event":"PanelViewProperty","group":"view_properties","values":{"z":"2","a":"\"quoted\"\n"}})"),
        std::string::npos);
    const QString time = Line(text, 0).value(QStringLiteral("time")).toString();
    EXPECT_TRUE(time.endsWith(QLatin1Char('Z')) && QDateTime::fromString(time, Qt::ISODate).isValid())
        << time.toStdString();
}

TEST_F(SettingsTest, AFullUsageFileIsBegunAnewAndAFailureToldOnce) {
    mProfile.Write("usage.jsonl", std::string((4 << 20) - 10, 'x'));
    {
        const desk::UsageLogFile file(mProfile.Path("usage.jsonl"));
        host::UsageLogger::Get()->LogEvent("c", "n", "v");
        ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    }
    EXPECT_EQ(mProfile.Read("usage.jsonl.old").size(), (4u << 20) - 10);
    EXPECT_LT(mProfile.Read("usage.jsonl").size(), 200u);

    const ExpectLogged log("Usage is not recorded");
    const desk::UsageLogFile file(mProfile.Path("absent/usage.jsonl"));
    for (int i = 0; i < 3; ++i) {
        host::UsageLogger::Get()->LogEvent("c", "n", "v");
        ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    }
    EXPECT_EQ(log.Count(), 1);
}

TEST_F(SettingsTest, TheLogCannotBeForgedByNamesAndIsCutWhenLarge) {
    const std::string path = mProfile.Write("log.txt", std::string((1 << 20) + 1, 'x'));
    const ExpectLogged log(R"(a\nb\x1B\u202E \xFF \xC2\x85 é 😀)");
    desk::OpenLogFile(path);
    desk::Log(desk::LogLevel::Info, "a\nb\x1B\u202E \xFF \xC2\u0085 é 😀");
    const std::string text = mProfile.Read("log.txt");
    EXPECT_EQ(std::ranges::count(text, '\n'), 1);
    EXPECT_NE(text.find("info: a"), std::string::npos);
    EXPECT_EQ(mProfile.Read("log.txt.old").size(), (1u << 20) + 1);
    const ExpectLogged refused("cannot be written");
    desk::OpenLogFile(mProfile.Path());
}
