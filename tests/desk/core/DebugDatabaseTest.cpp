
#include "desk/core/settings/DebugDatabaseFile.h"
#include "desk/core/settings/JsonFile.h"
#include "host/core/DebugDatabase.h"
#include "host/core/Trace.h"
#include "tests/support/HostFixture.h"

namespace {

using host::DebugDatabase;

constexpr const char* kName = desk::DebugDatabaseFile::kFileName;

class DebugDatabaseTest : public HostFixture, public host::Listener {
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
    desk::DebugDatabaseFile file(mFolder.Path());
    EXPECT_EQ(Height(), 25);
    const auto expectHeight = [&](int height, const char* how) {
        ASSERT_TRUE(mMain.RunUntil([&] { return mMain.Advance(std::chrono::seconds(1)), Height() == height; }))
            << how;
    };
    mFolder.Write(kName, R"({"RowHeight": 40, "Scale": 1.5})");
    expectHeight(40, "created");
    EXPECT_TRUE(DebugDatabase::Instance()->HasEntry("Scale"));
    mFolder.Write(kName, R"({"RowHeight": 41})");
    expectHeight(41, "written in place");
    EXPECT_FALSE(DebugDatabase::Instance()->HasEntry("Scale"));
    EXPECT_EQ(mChanges, 2);
    for (const int height : {42, 43}) {
        mFolder.Write("new", "{\"RowHeight\": " + std::to_string(height) + "}");
        mFolder.Rename("new", kName);
        expectHeight(height, "replaced");
    }
    mFolder.Write(kName, R"({"RowHeight": 44})");
    expectHeight(44, "written in place after it was replaced");
    mFolder.Remove(kName);
    expectHeight(25, "removed");
    mFolder.Write(kName, R"({"RowHeight": 45})");
    expectHeight(45, "made anew");

    const int changes = mChanges;
    mFolder.Write(kName, R"({ "RowHeight" : 45.0 })");
    mFolder.Write("unrelated", "x");
    mMain.RunUntilIdle();
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_EQ(mChanges, changes) << "nothing changed, so nothing was to be announced";
}

TEST_F(DebugDatabaseTest, ABrokenFileLeavesTheEntriesAndItself) {
    mFolder.Write(kName, R"({"RowHeight": 40})");
    desk::DebugDatabaseFile file(mFolder.Path());
    EXPECT_EQ(Height(), 40);
    const std::string large = "{\"RowHeight\": 1" + std::string(desk::kJsonFileLimit, ' ') + "}";
    for (const std::string& content :
         {std::string(), std::string("{\"RowHeight\": 41"), large, std::string("{\"\xFF\": 1}")}) {
        ExpectLogged log("its entries stay");
        mFolder.Write(kName, content);
        EXPECT_TRUE(mMain.RunUntil([&] { return mMain.Advance(std::chrono::seconds(1)), log.Count() > 0; }));
        EXPECT_EQ(log.Count(), 1) << content.substr(0, 30);
        EXPECT_EQ(Height(), 40);
        EXPECT_EQ(mFolder.Read(kName), content);
    }
    EXPECT_EQ(mChanges, 1);
    mFolder.Remove(kName);
    ASSERT_EQ(mkfifo(mFolder.Path(kName).c_str(), 0600), 0);
    const ExpectLogged log("no regular file");
    const desk::DebugDatabaseFile pipe(mFolder.Path());
}

TEST_F(DebugDatabaseTest, OnlyNumbersCountAndTheyAreClamped) {
    const ExpectLogged text("\"text\" is ignored"), object("\"object\" is ignored");
    mFolder.Write(kName, R"({"large": 1e300, "small": -3000000000, "half": 2.5, "text": "1",
                              "object": {"a": 1}, "Trace.Test": 8})");
    const desk::DebugDatabaseFile file(mFolder.Path());
    mFolder.Write("a setting that is saved beside it");
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_EQ(text.Count(), 1) << "told once";
    const DebugDatabase* database = DebugDatabase::Instance();
    EXPECT_EQ(database->GetEntry("large", 1), 2147483647);
    EXPECT_EQ(database->GetEntry("small", 1), -2147483647 - 1);
    EXPECT_EQ(database->GetEntry("large", 1.0f), std::numeric_limits<float>::max());
    EXPECT_EQ(database->GetEntry("half", 1.0), 2.5);
    EXPECT_EQ(database->GetEntry("text", 12), 12);
    EXPECT_TRUE(host::TraceEnabled("Test", 8, false) && !host::TraceEnabled("Test", 9, true));
}
