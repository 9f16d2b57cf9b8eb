#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QJsonObject>
#include <filesystem>

#include "desk/core/JsonFile.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/FileMoves.h"
#include "desk/files/HostNames.h"
#include "desk/project/BrokenLocksLog.h"
#include "desk/project/Production.h"
#include "desk/project/RecordTexts.h"
#include "desk/project/TrashMoves.h"
#include "desk/project/TrashRecords.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using Operation = FaultyFileSystem::Operation;

namespace {

class TrashRecordsTest : public testing::Test {
protected:
    TrashRecordsTest() : mBefore(desk::GetServices()) {
        desk::GetServices().mWorkerPool = &mPool;
        desk::RecordMovesToTrash();
        desk::Production::Instance().Open(mFolder.PathUTF16("Production"));
        mTrash = "Production/" + host::UTF16to8(host::GetZuProductionTrashDirectoryDisplayName());
        mFolder.MakeFolder("Production/Day 1");
    }
    ~TrashRecordsTest() override {
        desk::Production::Instance().Close();
        mMain.RunUntilIdle();
        desk::GetServices().mWorkerPool = mBefore.mWorkerPool;
    }

    int Move(const std::string& from, const std::string& to) {
        const int result = host::File::Move(mFolder.PathUTF16(from), mFolder.PathUTF16(to));
        mMain.RunUntilIdle();
        return result;
    }
    std::vector<desk::TrashRecord> Records() { return ReadTrashRecords(mDisk, mFolder.Path(mTrash)); }
    std::string RecordsFolder() const { return mTrash + "/.zurecords"; }

    desk::Services mBefore;
    ManualMainThread mMain;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    TemporaryFolder mFolder;
    desk::WorkerPool mPool{2};
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
    EXPECT_EQ(records[0].mName, odd);
    EXPECT_EQ(records[0].mFrom, "Day 1/" + odd);
    EXPECT_EQ(records[0].mUser, u"ines");
    EXPECT_EQ(records[0].mMachine, u"edit-bay-1");
    EXPECT_EQ(records[0].mMovedAt, 1772443800);
    EXPECT_EQ(records[1].mName, "Old/Day 1_1");
    EXPECT_EQ(records[1].mFrom, "Day 1");
    EXPECT_EQ(records[1].mMovedAt, 1772443860);
    EXPECT_TRUE(desk::IsHiddenName(".zurecords", desk::ItemKind::Unknown)) << "copies ask so";
    for (const auto& entry : fs::directory_iterator(mFolder.Path(RecordsFolder()))) {
        EXPECT_EQ(entry.path().extension(), ".json");
        EXPECT_EQ(entry.status().permissions() & fs::perms::all, fs::perms(0644)) << "others restore too";
    }
}

TEST_F(TrashRecordsTest, WhatIsNoRecordIsLeftOut) {
    EXPECT_TRUE(Records().empty()) << "there is no folder";
    const std::string good = R"({"version": 1, "name": "a", "from": "b", "movedAt": "2026-03-02T09:30:00Z"})";
    mFolder.Write(RecordsFolder() + "/good.json", good);
    mFolder.Write(RecordsFolder() + "/good.txt", good);
    mFolder.Write(RecordsFolder() + "/empty.json");
    mFolder.Write(RecordsFolder() + "/cut.json", good.substr(0, 20));
    mFolder.Write(RecordsFolder() + "/huge.json", good + std::string(20000, ' '));
    mFolder.Write(RecordsFolder() + "/later.json", R"({"version": 2, "name": "a", "from": "b"})");
    mFolder.Write(RecordsFolder() + "/types.json", R"({"version": 1, "name": 1, "from": [], "movedAt": 5})");
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
    try {
        Move("Production/a.zuproj", mTrash + "/a.zuproj");
        FAIL() << "moved";
    } catch (const host::FileException& exception) {
        EXPECT_EQ(exception.SystemError(), ELOOP);
        EXPECT_EQ(exception.Path(), mFolder.PathUTF16(mTrash));
    }
    EXPECT_TRUE(mFolder.Exists("Production/a.zuproj"));
    EXPECT_TRUE(fs::is_empty(mFolder.Path("Elsewhere")));
}

TEST_F(TrashRecordsTest, BrokenLocksAreLoggedBesideThem) {
    desk::LockRecord broken;
    broken.mIsReadable = true;
    broken.mNonce = std::string(32, 'b');
    broken.mUser = u"tomas";
    broken.mMachine = u"edit-bay-2";
    broken.mTakenAt = 1772440200;
    desk::LogBrokenLock(mFolder.PathUTF16("Production/Day 1/R\u00f6lle.zuproj"), broken);
    mMain.RunUntilIdle();
    desk::LogBrokenLock(mFolder.PathUTF16("Production/x.zuproj"), {});
    desk::LogBrokenLock(mFolder.PathUTF16("Outside/x.zuproj"), broken);
    mMain.RunUntilIdle();

    const std::string file = RecordsFolder() + "/broken-locks.jsonl";
    const std::string text = mFolder.Read(file);
    ASSERT_EQ(std::ranges::count(text, '\n'), 2);
    const QJsonObject first = desk::ParseJsonObject(text.substr(0, text.find('\n'))).mObject;
    EXPECT_EQ(first.value(QLatin1String("brokenAt")), QLatin1String("2026-03-02T09:30:00Z"));
    EXPECT_EQ(first.value(QLatin1String("user")), QLatin1String("ines"));
    EXPECT_EQ(first.value(QLatin1String("owner")), QLatin1String("tomas"));
    EXPECT_EQ(first.value(QLatin1String("takenAt")), QLatin1String("2026-03-02T08:30:00Z"));
    EXPECT_EQ(desk::FromPercentEncoded(first.value(QLatin1String("project")).toString()),
              "Day 1/R\u00f6lle.zuproj");
    const QJsonObject second = desk::ParseJsonObject(text.substr(text.find('\n') + 1)).mObject;
    EXPECT_EQ(second.value(QLatin1String("owner")), QString());
    EXPECT_EQ(second.value(QLatin1String("takenAt")), QString());

    mFolder.Remove(file);
    fs::create_symlink(mFolder.Write("Elsewhere.txt"), mFolder.Path(file));
    const ExpectLogged log("A broken lock is not recorded");
    desk::LogBrokenLock(mFolder.PathUTF16("Production/x.zuproj"), broken);
    mMain.RunUntilIdle();
    EXPECT_EQ(mFolder.Read("Elsewhere.txt"), "");
}

TEST_F(TrashRecordsTest, TheHostMovesByThePanelsFunctionWhileThereIsOne) {
    host::UTF16StringVec moved;
    EXPECT_FALSE(desk::TryToMoveToTrash({u"/a"}));
    host::Scripting::SetTryToMoveToSharedProjectsTrashFn([&](const host::UTF16StringVec& paths) {
        host::Scripting::SetTryToMoveToSharedProjectsTrashFn({});
        moved = paths;
    });
    EXPECT_TRUE(desk::TryToMoveToTrash({u"/a", u"/b"}));
    EXPECT_EQ(moved, (host::UTF16StringVec{u"/a", u"/b"}));
    EXPECT_FALSE(desk::TryToMoveToTrash({u"/a"}));
}
