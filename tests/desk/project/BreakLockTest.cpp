#include "desk/project/lock/LockTexts.h"
#include "desk/project/production/BreakLock.h"
#include "desk/project/production/Production.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace {

using namespace std::chrono_literals;

class BreakLockTest : public ProjectDocumentsFixture {
protected:
    BreakLockTest() { WriteForeignLock(); }
    bool Break(desk::BreakWait wait = 0ms) {
        return desk::BreakProjectLock(mFolder.PathUTF16(kProject), mFolder.Path(kProject), wait);
    }
    /// The attempt ends with a message that says `part`.
    void ExpectToldAndKept(const char* part) {
        mDialogs.ExpectMessage("Break Lock");
        EXPECT_FALSE(Break());
        EXPECT_TRUE(AsksFor(part)) << mDialogs.LastText();
    }
};

}  // namespace

TEST_F(BreakLockTest, IsConfirmedAndRecorded) {
    desk::Production::Instance().Open(mFolder.PathUTF16());
    mDesktop.mNow += 3h + 5min;
    mDialogs.ExpectQuestion("Break Lock", u"Cancel");
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("“Reel 1” is locked by tomas on edit-bay-2, since "));
    EXPECT_TRUE(AsksFor("(3 hours ago)") && !AsksFor("still running"));
    EXPECT_TRUE(mFolder.Exists(kLock));

    mFolder.MakeFolder("Trash");
    mFolder.Write(kLock, WriteLockRecord(desk::MakeLockRecord(mDesktop, u"tomas", mDesktop.mMachineName)));
    const ExpectLogged log("broke the lock " + mFolder.Path(kLock) + " of tomas on edit-bay-1");
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    EXPECT_TRUE(Break());
    EXPECT_TRUE(AsksFor("still running on this machine, as process " + std::to_string(::getpid())));
    EXPECT_FALSE(mFolder.Exists(kLock));
    mMain.RunUntilIdle();
    const std::string records = mFolder.Read("Trash/.zurecords/broken-locks.jsonl");
    EXPECT_NE(records.find("Day%201/Reel%201.zuproj"), std::string::npos) << records;
    desk::Production::Instance().Close();
}

TEST_F(BreakLockTest, TellsWhatCameOfIt) {
    mDisk.SetGone(true);
    ExpectToldAndKept("Stale file handle");
    mDisk.SetGone(false);
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDisk.Fail(Operation::RemoveFile, 2, EROFS);  // Between the guard's temporary file and the guard.
    ExpectToldAndKept("Read-only file system");
    EXPECT_TRUE(mFolder.Exists(kLock));

    mFolder.Remove(kLock);
    ExpectToldAndKept("Nobody holds a lock");
    OpenAndFind();
    ExpectToldAndKept("You hold the lock");
    WriteForeignLock();
    CancelWaiting();
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    EXPECT_FALSE(Break({})) << "three seconds at least, if nobody says another time";
    EXPECT_TRUE(mFolder.Exists(kLock));
}

TEST_F(BreakLockTest, WhoWasInterruptedIsTakenOver) {
    desk::LockRecord guard = desk::ParseLockRecord(mFolder.Read(kLock));
    const std::string guardName = "Day 1/.zuguard-" + guard.mNonce;
    guard.mNonce = std::string(32, 'a');
    guard.mMachine = u"edit-bay-9";
    mFolder.Write(guardName, WriteLockRecord(guard));
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectQuestion("Break Lock", u"Cancel");
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("by tomas on edit-bay-9"));
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectQuestion("Break Lock", u"Take Over");
    mDisk.Fail(Operation::RemoveFile, 3, EROFS);  // Behind two temporary files: the guard.
    ExpectToldAndKept("Read-only file system");
    EXPECT_TRUE(mFolder.Exists(kLock) && mFolder.Exists(guardName));
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectQuestion("Break Lock", u"Take Over");
    EXPECT_TRUE(Break());
    EXPECT_FALSE(mFolder.Exists(kLock) || mFolder.Exists(guardName));
}

TEST_F(BreakLockTest, ALockFilesTextsCannotPretendToBeTheProgramsOwn) {
    const auto record = MakeForeignRecord(mDesktop, u"eve\n\nNobody works on it.", u"vm\u202E07");
    const std::string text = host::UTF16to8(desk::DescribeHolder(record));
    EXPECT_TRUE(text.starts_with("eve\\n\\nNobody works on it. on vm\\u202E07, since ")) << text;
}
