#include <sys/stat.h>

#include <string>

#include "desk/core/DebugDatabaseFile.h"
#include "desk/core/JsonFile.h"
#include "host/core/DebugDatabase.h"
#include "tests/desk/core/CoreFixture.h"

namespace {

using host::DebugDatabase;

constexpr const char* kName = desk::DebugDatabaseFile::kFileName;

class DebugDatabaseTest : public CoreFixture, public host::Listener {
protected:
    DebugDatabaseTest() { AddListener(host::kStation_DebugDatabase, this); }
    ~DebugDatabaseTest() override {
        RemoveListener(host::kStation_DebugDatabase, this);
        desk::SetDebugDatabaseEntries({});
    }
    void ListenToMessage(const host::Message& message) override {
        EXPECT_TRUE(host::MessageCast<host::DebugDatabaseChangedMessage>(message));
        ++mChanges;
    }
    std::int32_t Height() const { return mHeight.Get(); }

    host::CachedDatabaseValue<std::int32_t> mHeight{"RowHeight", 25};
    int mChanges = 0;
};

}  // namespace

TEST_F(DebugDatabaseTest, FollowsTheFileHoweverItChanges) {
    const std::uint32_t countBefore = DebugDatabase::Instance()->GetChangeCount();
    EXPECT_GE(countBefore, 1u);
    desk::DebugDatabaseFile file(mProfile.Path());
    EXPECT_EQ(Height(), 25);
    const auto expectHeight = [&](int height, const char* how) {
        ASSERT_TRUE(mMain.RunUntil([&] { return mMain.Advance(std::chrono::seconds(1)), Height() == height; }))
            << how;
    };
    mProfile.Write(kName, R"({"RowHeight": 40, "Scale": 1.5})");
    expectHeight(40, "created");
    EXPECT_EQ(mChanges, 1);
    EXPECT_EQ(DebugDatabase::Instance()->GetChangeCount(), countBefore + 1);
    EXPECT_TRUE(DebugDatabase::Instance()->HasEntry("Scale"));
    mProfile.Write(kName, R"({"RowHeight": 41})");
    expectHeight(41, "written in place");
    EXPECT_FALSE(DebugDatabase::Instance()->HasEntry("Scale"));
    for (const int height : {42, 43}) {
        mProfile.Write("new", "{\"RowHeight\": " + std::to_string(height) + "}");
        mProfile.Rename("new", kName);
        expectHeight(height, "replaced");
    }
    mProfile.Write(kName, R"({"RowHeight": 44})");
    expectHeight(44, "written in place after it was replaced");
    mProfile.Remove(kName);
    expectHeight(25, "removed");
    mProfile.Write(kName, R"({"RowHeight": 45})");
    expectHeight(45, "made anew");

    const int changes = mChanges;
    mProfile.Write(kName, R"({ "RowHeight" : 45.0 })");
    mProfile.Write("unrelated", "x");
    Settle();
    EXPECT_EQ(mChanges, changes) << "nothing changed, so nothing was to be announced";
}

TEST_F(DebugDatabaseTest, ABrokenFileLeavesTheEntriesAndItself) {
    mProfile.Write(kName, R"({"RowHeight": 40})");
    desk::DebugDatabaseFile file(mProfile.Path());
    EXPECT_EQ(Height(), 40);
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    const std::string large = "{\"RowHeight\": 1" + std::string(desk::kJsonFileLimit, ' ') + "}";
    for (const std::string& content :
         {std::string(), std::string("{\"RowHeight\": 41"), std::string("[1]"), deep, large,
          std::string("{\"RowHeight\": 41}\0\0", 19), std::string("{\"\xFF\": 1}")}) {
        ExpectLogged log("its entries stay");
        mProfile.Write(kName, content);
        EXPECT_TRUE(mMain.RunUntil([&] { return mMain.Advance(std::chrono::seconds(1)), log.Count() > 0; }));
        EXPECT_EQ(log.Count(), 1) << content.substr(0, 30);
        EXPECT_EQ(Height(), 40);
        EXPECT_EQ(mProfile.Read(kName), content);
    }
    EXPECT_EQ(mChanges, 1);
}

TEST_F(DebugDatabaseTest, APipeInItsPlaceDoesNotHang) {
    ASSERT_EQ(mkfifo(mProfile.Path(kName).c_str(), 0600), 0);
    const ExpectLogged log("no regular file");
    const desk::DebugDatabaseFile file(mProfile.Path());
    EXPECT_EQ(Height(), 25);
}

TEST_F(DebugDatabaseTest, OnlyNumbersCountAndTheyAreClamped) {
    const auto parsed =
        desk::ParseDebugDatabase(R"({"a": 1, "b": "2", "c": {"d": 3}, "e": null, "f": -0.25, "a": 7})");
    ASSERT_TRUE(parsed.mEntries);
    EXPECT_EQ(*parsed.mEntries, (desk::DebugDatabaseEntries{{"a", 7}, {"f", -0.25}}));
    EXPECT_EQ(parsed.mIgnored, (std::vector<std::string>{"b", "c", "e"}));

    const ExpectLogged log("\"text\" is ignored");
    mProfile.Write(kName, R"({"large": 1e300, "small": -3000000000, "half": 2.5, "text": "1"})");
    const desk::DebugDatabaseFile file(mProfile.Path());
    const DebugDatabase* database = DebugDatabase::Instance();
    EXPECT_EQ(database->GetEntry("large", 1), 2147483647);
    EXPECT_EQ(database->GetEntry("small", 1), -2147483647 - 1);
    EXPECT_EQ(database->GetEntry("large", 1.0f), std::numeric_limits<float>::max());
    EXPECT_EQ(database->GetEntry("half", 1.0), 2.5);
    EXPECT_EQ(database->GetEntry("text", 12), 12);
}
