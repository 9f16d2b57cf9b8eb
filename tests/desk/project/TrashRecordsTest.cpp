#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QJsonObject>
#include <filesystem>

#include "desk/core/JsonFile.h"
#include "desk/files/HostNames.h"
#include "desk/project/BrokenLocksLog.h"
#include "desk/project/Production.h"
#include "desk/project/TrashMoves.h"
#include "desk/project/TrashRecords.h"
#include "host/files/File.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

namespace fs = std::filesystem;

namespace {

class TrashRecordsTest : public HostFixture {
protected:
    TrashRecordsTest() {
        desk::RecordMovesToTrash();
        desk::Production::Instance().Open(mFolder.PathUTF16("Production"));
        mTrash = "Production/" + host::UTF16to8(host::GetZuProductionTrashDirectoryDisplayName());
        mFolder.MakeFolder("Production/Day 1");
    }
    ~TrashRecordsTest() override { desk::Production::Instance().Close(); }

    int Move(const std::string& from, const std::string& to) {
        const int result = host::File::Move(mFolder.PathUTF16(from), mFolder.PathUTF16(to));
        mMain.RunUntilIdle();
        return result;
    }
    std::vector<desk::TrashRecord> Records() { return ReadTrashRecords(mDisk, mFolder.Path(mTrash)); }
    std::string RecordsFolder() const { return mTrash + "/.zurecords"; }

    std::string mTrash;
};

}  // namespace

TEST_F(TrashRecordsTest, WhatMovesToTheTrashIsRecordedThere) {
    mFolder.MakeFolder(mTrash + "/Old");
    const std::string odd = "Caf\xE9 \u202E\n%.zuproj";
    mFolder.Write("Production/Day 1/" + odd);
    mFolder.Write("Production/x.zuproj");
    EXPECT_EQ(Move("Production/Day 1/" + odd, mTrash + '/' + odd), 0);
    mDesktop.mNow += std::chrono::minutes(1);
    EXPECT_EQ(Move("Production/Day 1", mTrash + "/Old/Day 1_1"), 0);
    EXPECT_EQ(Move(mTrash + "/Old", mTrash + "/Older"), 0) << "is in the trash already";
    EXPECT_EQ(Move("Production/x.zuproj", "Production/y.zuproj"), 0);

    const std::vector<desk::TrashRecord> records = Records();
    ASSERT_EQ(records.size(), 2u);
    const auto describe = [](const desk::TrashRecord& record) {
        return record.mName + " from " + record.mFrom + " by " + host::UTF16to8(record.mUser) + " on " +
               host::UTF16to8(record.mMachine) + " at " + std::to_string(record.mMovedAt);
    };
    EXPECT_EQ(describe(records[0]), odd + " from Day 1/" + odd + " by ines on edit-bay-1 at 1772443800");
    EXPECT_EQ(describe(records[1]), "Old/Day 1_1 from Day 1 by ines on edit-bay-1 at 1772443860");
    EXPECT_TRUE(desk::IsHiddenName(".zurecords", desk::ItemKind::Unknown)) << "copies ask so";
    for (const auto& entry : fs::directory_iterator(mFolder.Path(RecordsFolder()))) {
        EXPECT_EQ(entry.path().extension(), ".json");
        EXPECT_EQ(entry.status().permissions() & fs::perms::all, fs::perms(0644)) << "others restore too";
    }
}

TEST_F(TrashRecordsTest, WhatIsNoRecordIsLeftOut) {
    EXPECT_TRUE(Records().empty()) << "there is no folder";
    const std::string good = R"({"version": 1, "name": "a", "from": "b", "movedAt": "2026-03-02T09:30:00Z"})";
    const std::pair<const char*, std::string> files[] = {
        {"good.json", good},
        {"good.txt", good},
        {"empty.json", ""},
        {"cut.json", good.substr(0, 20)},
        {"huge.json", good + std::string(20000, ' ')},
        {"later.json", R"({"version": 2, "name": "a", "from": "b"})"},
        {"types.json", R"({"version": 1, "name": 1, "from": [], "movedAt": 5})"}};
    for (const auto& [name, bytes] : files) mFolder.Write(RecordsFolder() + '/' + name, bytes);
    fs::create_symlink("good.json", mFolder.Path(RecordsFolder() + "/link.json"));
    ASSERT_EQ(mkfifo(mFolder.Path(RecordsFolder() + "/pipe.json").c_str(), 0600), 0);
    EXPECT_EQ(Records().size(), 1u);
}

TEST_F(TrashRecordsTest, WhatCannotBeRecordedMovesNevertheless) {
    mFolder.MakeFolder(mTrash);
    const ExpectLogged log("is not recorded");
    mDisk.Deny(mFolder.Path(RecordsFolder()), EACCES);
    for (const char* name : {"a", "b"}) {
        mFolder.Write(std::string("Production/") + name + ".zuproj");
        EXPECT_EQ(Move(std::string("Production/") + name + ".zuproj", mTrash + '/' + name + ".zuproj"), 0);
        EXPECT_TRUE(mFolder.Exists(mTrash + '/' + name + ".zuproj"));
    }
    EXPECT_EQ(log.Count(), 1) << "once";
    mDisk.Allow(mFolder.Path(RecordsFolder()));
    mDisk.Fail(Operation::CreateNewFile, 1, ENOSPC);
    EXPECT_THROW(WriteTrashRecord(mDisk, mFolder.Path(mTrash), {"a", "b", {}, {}, 0}), host::FileException);
    EXPECT_TRUE(Records().empty());
    fs::remove(mFolder.Path(RecordsFolder()));
    fs::create_symlink(mFolder.MakeFolder("Elsewhere"), mFolder.Path(RecordsFolder()));
    EXPECT_THROW(WriteTrashRecord(mDisk, mFolder.Path(mTrash), {"a", "b", {}, {}, 0}), host::FileException);
    EXPECT_TRUE(fs::is_empty(mFolder.Path("Elsewhere")));
}

TEST_F(TrashRecordsTest, ATrashThatIsALinkTakesNothing) {
    fs::create_symlink(mFolder.MakeFolder("Elsewhere"), mFolder.Path(mTrash));
    mFolder.Write("Production/a.zuproj");
    EXPECT_EQ(ErrorOf([&] { Move("Production/a.zuproj", mTrash + "/a.zuproj"); }), ELOOP);
    EXPECT_TRUE(mFolder.Exists("Production/a.zuproj"));
    EXPECT_TRUE(fs::is_empty(mFolder.Path("Elsewhere")));
}

TEST_F(TrashRecordsTest, BrokenLocksAreLoggedBesideThem) {
    const desk::LockRecord broken = MakeForeignRecord(mDesktop);
    mDesktop.mNow += std::chrono::hours(1);
    desk::LogBrokenLock(mFolder.PathUTF16("Production/Day 1/R\u00f6lle.zuproj"), broken);
    mMain.RunUntilIdle();
    desk::LogBrokenLock(mFolder.PathUTF16("Production/x.zuproj"), {});
    desk::LogBrokenLock(mFolder.PathUTF16("Outside/x.zuproj"), broken);
    mMain.RunUntilIdle();

    const std::string file = RecordsFolder() + "/broken-locks.jsonl";
    const std::string text = mFolder.Read(file);
    ASSERT_EQ(std::ranges::count(text, '\n'), 2);
    const auto values = [](const std::string& line) {
        const QJsonObject object = desk::ParseJsonObject(line).mObject;
        QStringList list;
        for (const char* key : {"brokenAt", "user", "owner", "takenAt", "project"})
            list.push_back(object.value(QLatin1String(key)).toString());
        return list.join(QLatin1Char(' ')).toStdString();
    };
    EXPECT_EQ(values(text.substr(0, text.find('\n'))),
              "2026-03-02T10:30:00Z ines tomas 2026-03-02T09:30:00Z Day%201/R%C3%B6lle.zuproj");
    EXPECT_EQ(values(text.substr(text.find('\n') + 1)), "2026-03-02T10:30:00Z ines   x.zuproj");

    mFolder.Remove(file);
    fs::create_symlink(mFolder.Write("Elsewhere.txt"), mFolder.Path(file));
    const ExpectLogged log("A broken lock is not recorded");
    desk::LogBrokenLock(mFolder.PathUTF16("Production/x.zuproj"), broken);
    mMain.RunUntilIdle();
    EXPECT_EQ(mFolder.Read("Elsewhere.txt"), "");
}
