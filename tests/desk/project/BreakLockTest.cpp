#include "desk/core/WorkProgress.h"
#include "desk/project/BreakLock.h"
#include "desk/project/Production.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace {

using namespace std::chrono_literals;

/// Cancels what it is to wait for.
class ImpatientDialogs : public ScriptedDialogs {
public:
    void WaitFor(const host::UTF16String&, desk::WorkProgress& progress,
                 const std::future<void>& done) override {
        progress.Cancel();
        done.wait();
    }
};

class BreakLockTest : public ProjectDocumentsFixture {
protected:
    bool Break(desk::BreakWait wait = 0ms) {
        return desk::BreakProjectLock(mFolder.PathUTF16(kProject), mFolder.Path(kProject), wait);
    }
};

TEST_F(BreakLockTest, IsConfirmedAndRecorded) {
    desk::Production::Instance().Open(mFolder.PathUTF16());
    WriteForeignLock();
    mDesktop.mNow += 3h + 5min;
    mDialogs.ExpectQuestion("Break Lock", u"Cancel");
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("“Reel 1” is locked by tomas on edit-bay-2, since "));
    EXPECT_TRUE(AsksFor("(3 hours ago)"));
    EXPECT_TRUE(mFolder.Exists(kLock));

    const ExpectLogged log("broke the lock " + mFolder.Path(kLock) + " of tomas on edit-bay-2");
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    EXPECT_TRUE(Break());
    EXPECT_FALSE(mFolder.Exists(kLock));
    mMain.RunUntilIdle();
    const std::string records = mFolder.Read("Trash/.zurecords/broken-locks.jsonl");
    EXPECT_NE(records.find("\"project\":\"Day%201/Reel%201.zuproj\""), std::string::npos) << records;
    desk::Production::Instance().Close();
}

TEST_F(BreakLockTest, TellsWhatCameOfIt) {
    mDialogs.ExpectMessage("Break Lock");
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("Nobody holds a lock"));

    OpenAndFind();
    mDialogs.ExpectMessage("Break Lock");
    EXPECT_FALSE(Break()) << "one's own";
    EXPECT_TRUE(AsksFor("You hold the lock"));
    Manager().CloseAllProjects();

    WriteForeignLock();
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectMessage("Break Lock");
    mDisk.ResetCounts();
    mDisk.Fail(Operation::RemoveFile, 2, EROFS);  // Between the guard's temporary file and the guard.
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("Read-only file system")) << mDialogs.LastText();
    EXPECT_TRUE(mFolder.Exists(kLock));
}

TEST_F(BreakLockTest, CanBeCancelledWhileItWaits) {
    WriteForeignLock();
    ImpatientDialogs dialogs;
    dialogs.ExpectQuestion("Break Lock", u"Break Lock");
    EXPECT_FALSE(Break(std::chrono::minutes(10)));
    EXPECT_TRUE(mFolder.Exists(kLock));
}

TEST_F(BreakLockTest, WhoWasInterruptedIsTakenOver) {
    WriteForeignLock();
    const std::string nonce = desk::ParseLockRecord(mFolder.Read(kLock)).mNonce;
    desk::LockRecord guard = desk::ParseLockRecord(mFolder.Read(kLock));
    guard.mNonce = std::string(32, 'a');
    guard.mMachine = u"edit-bay-9";
    const std::string guardName = "Day 1/.zuguard-" + nonce;
    mFolder.Write(guardName, WriteLockRecord(guard));
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectQuestion("Break Lock", u"Cancel");
    EXPECT_FALSE(Break());
    EXPECT_TRUE(AsksFor("by tomas on edit-bay-9"));
    EXPECT_TRUE(mFolder.Exists(kLock));
    mDialogs.ExpectQuestion("Break Lock", u"Break Lock");
    mDialogs.ExpectQuestion("Break Lock", u"Take Over");
    EXPECT_TRUE(Break());
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_FALSE(mFolder.Exists(guardName));
}

}  // namespace
