
#include "desk/core/work/WorkProgress.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/production/Production.h"
#include "host/project/ItemOperations.h"
#include "host/project/ProductionItems.h"
#include "tests/support/DiskTree.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"
#include "tests/support/TestProject.h"

namespace {

using Result = host::ItemOutcome::Result;

class ItemOperationTest : public HostFixture {
protected:
    ItemOperationTest() {
        for (const char* name : {"A", "B", "C", "D"}) mFolder.Write("Production/" + File(name), name);
        mFolder.MakeFolder("Production/Trash");
        desk::Production::Instance().Open(mFolder.PathUTF16("Production"));
    }
    ~ItemOperationTest() override {
        // What could not be removed is tried again for so long.
        mMain.Advance(std::chrono::seconds(5));
        desk::Production::Instance().Close();
    }

    static std::string File(const std::string& name) { return name + ".zuproj"; }
    host::UTF16String PathOf(const std::string& name) const {
        return mFolder.PathUTF16("Production/" + File(name));
    }
    void Lock(const std::string& name, const desk::LockRecord& record) {
        std::ofstream(desk::GetLockPath(PathOf(name))) << WriteLockRecord(record);
    }
    /// For writing.
    host::RefPtr<TestProject> OpenB() {
        const host::RefPtr<TestProject> open = new TestProject(PathOf("B"));
        desk::OpenProjectList::Instance().Add(open);
        open->SetProjectLockFile(
            host::CreateProjectLockFile(PathOf("B"), mDesktop.mUserName, mDesktop.mMachineName));
        return open;
    }
    void Close(const host::RefPtr<TestProject>& open) {
        open->mLockFile.reset();
        desk::OpenProjectList::Instance().Remove(open);
        mMain.RunUntilIdle();
    }
    void CancelWhileBMoves() {
        mDisk.CloseGate(Operation::RenameNoReplace, mFolder.Path("Production/B.zuproj"));
        mDialogs.mWhileWaiting = [&](desk::WorkProgress& progress) {
            EXPECT_TRUE(mDisk.WaitAtGate());
            EXPECT_EQ(progress.Get().mItem, u"B.zuproj");
            progress.Cancel();
            mDisk.OpenGate();
        };
    }
    /// Moves A, B, C and D to the trash.
    std::vector<Result> Trash() {
        std::vector<host::PlannedItem> plan;
        for (const char* name : {"A", "B", "C", "D"})
            plan.push_back({PathOf(name), PathOf("Trash/" + std::string(name))});
        std::vector<Result> results;
        for (const host::ItemOutcome& outcome : host::MoveItems(plan)) results.push_back(outcome.mResult);
        return results;
    }
    /// What shows, and the number of records.
    DiskTree Shown() const {
        DiskTree tree = ReadTree(mFolder.Path("Production"));
        std::erase_if(tree, [](const std::string& path) { return path.ends_with(".json"); });
        return tree;
    }
    std::size_t CountRecords() const {
        return std::filesystem::exists(mFolder.Path("Production/Trash/.zurecords"))
                   ? NamesIn("Production/Trash/.zurecords").size()
                   : 0;
    }

    const DiskTree kAllTrashed{"Trash/",         "Trash/.zurecords/", "Trash/A.zuproj",
                               "Trash/B.zuproj", "Trash/C.zuproj",    "Trash/D.zuproj"};
};

}  // namespace

TEST_F(ItemOperationTest, FlushesEachFolderOnceAndFollowsAndRecordsNothingBefore) {
    const host::RefPtr<TestProject> open = OpenB();
    mDisk.ResetCounts();
    mDisk.CloseGate(Operation::FlushFolder, mFolder.Path("Production/Trash"));
    mDialogs.mWhileWaiting = [&](desk::WorkProgress&) {
        if (!mDisk.WaitAtGate()) return;
        EXPECT_FALSE(mFolder.Exists("Production/A.zuproj"));
        EXPECT_EQ(open->GetProjectPath(), PathOf("B"));
        EXPECT_EQ(CountRecords(), 0u);
        EXPECT_TRUE(mFolder.Exists("Production/.A.zuproj.lock") &&
                    mFolder.Exists("Production/Trash/.A.zuproj.lock"));
        mDisk.OpenGate();
    };
    EXPECT_EQ(Trash(), std::vector(4, Result::Done));
    EXPECT_EQ(mDisk.Count(Operation::FlushFolder), 2);
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
    EXPECT_EQ(open->GetProjectPath(), PathOf("Trash/B"));
    EXPECT_TRUE(open->mLockFile->IsHeldByReader() && !open->mLockFile->IsLost());
    EXPECT_EQ(CountRecords(), 1u) << "for all four";
    EXPECT_FALSE(mFolder.Exists("Production/.B.zuproj.lock"));
    Close(open);
    EXPECT_EQ(Shown(), kAllTrashed);
}

TEST_F(ItemOperationTest, ALockThatSomebodyHasBrokenIsNotOursAtTheNewPlaceEither) {
    const host::RefPtr<TestProject> open = OpenB();
    Lock("B", MakeForeignRecord(mDesktop));
    mDialogs.ExpectMessage("Not Everything Was Moved");
    EXPECT_EQ(Trash()[1], Result::Refused);
    mFolder.Remove("Production/.B.zuproj.lock");
    EXPECT_EQ(host::MoveItems({{PathOf("B"), PathOf("Trash/B")}}).front().mResult, Result::Done);
    EXPECT_TRUE(open->mLockFile->IsLost());
    Close(open);
    EXPECT_EQ(Shown(), kAllTrashed);
}

TEST_F(ItemOperationTest, OneMessageListsWhatStayedAndWhy) {
    Lock("A", MakeForeignRecord(mDesktop));
    Lock("Trash/C", MakeForeignRecord(mDesktop));
    mFolder.Remove("Production/D.zuproj");
    mDialogs.ExpectMessage("Not Everything Was Moved");
    EXPECT_EQ(Trash(),
              (std::vector{Result::Refused, Result::Done, Result::NoDestinationLock, Result::Refused}));
    EXPECT_EQ(mDialogs.LastText(),
              "“A.zuproj” was not moved. tomas has it open on edit-bay-2.\n"
              "“C.zuproj” was not moved. “C” is locked by tomas on edit-bay-2, since 09:30:00 (just now).\n"
              "“D.zuproj” was not moved. It is not there any more.");
}

TEST_F(ItemOperationTest, AFailureAndACancelLeaveTheRestUntouched) {
    const auto expectFirstTwoMoved = [this] {
        DiskTree expected{"C.zuproj",          "D.zuproj",       "Trash/",
                          "Trash/.zurecords/", "Trash/A.zuproj", "Trash/B.zuproj"};
        EXPECT_EQ(Shown(), expected);
        for (const char* name : {"A", "B"})
            mFolder.Rename("Production/Trash/" + File(name), "Production/" + File(name));
    };
    mDisk.Fail(Operation::RenameNoReplace, 3, EACCES);
    mDialogs.ExpectMessage("Not Everything Was Moved");
    EXPECT_EQ(Trash(), (std::vector{Result::Done, Result::Done, Result::Failed, Result::NotReached}));
    EXPECT_TRUE(mDialogs.LastText().starts_with("“C.zuproj” was not moved. Permission denied") &&
                mDialogs.LastText().ends_with("\n1 more stayed as they were, for that reason."))
        << mDialogs.LastText();
    expectFirstTwoMoved();
    CancelWhileBMoves();
    EXPECT_EQ(Trash(), (std::vector{Result::Done, Result::Done, Result::Failed, Result::NotReached}));
    expectFirstTwoMoved();
}

TEST_F(ItemOperationTest, ALockOfThisProcessThatIsStillBeingGivenUpDoesNotKeepIt) {
    {
        const auto lock = host::CreateProjectLockFile(PathOf("A"), mDesktop.mUserName, mDesktop.mMachineName);
        for (int tries = 1; tries <= 4; ++tries) mDisk.Fail(Operation::RemoveFile, tries, EBUSY);
    }
    ASSERT_TRUE(mFolder.Exists("Production/.A.zuproj.lock"));
    // It is tried again at the end, which a cancel does not reach.
    CancelWhileBMoves();
    EXPECT_EQ(Trash(), (std::vector{Result::NotReached, Result::Done, Result::Failed, Result::NotReached}));
    mDialogs.mWhileWaiting = {};
    mFolder.Rename("Production/Trash/B.zuproj", "Production/B.zuproj");
    EXPECT_EQ(Trash(), std::vector(4, Result::Done));
    mMain.Advance(std::chrono::seconds(5));
    EXPECT_EQ(Shown(), kAllTrashed);
}

TEST_F(ItemOperationTest, LocksOfABatchWhoseProcessIsGoneAreRemovedUnderOneGuardInEachFolder) {
    const desk::LockRecord dead = MakeDeadRecord(mDesktop);
    for (const char* name : {"A", "B", "C", "D", "Trash/A", "Trash/B", "Trash/C"}) Lock(name, dead);
    mDisk.ResetCounts();
    EXPECT_EQ(Trash(), std::vector(4, Result::Done));
    EXPECT_EQ(mDisk.Count(Operation::CreateNewFile), 5) << "what locks share, two guards, a trash record";
    EXPECT_EQ(Shown(), kAllTrashed);
}

TEST_F(ItemOperationTest, FoldersThatHoldALockedProjectAreFoundWithOneListingEachAndNoWaitForAVolumeThatHangs) {
    for (int i = 0; i < 50; ++i) mFolder.Write("Production/Reels/Day 1/" + File(std::to_string(i)));
    mFolder.MakeFolder("Production/Empty");
    const host::UTF16StringVec folders{mFolder.PathUTF16("Production/Reels"),
                                       mFolder.PathUTF16("Production/Empty")};
    Lock("Reels/Day 1/7", MakeDeadRecord(mDesktop));
    Lock("Reels/Day 1/8", desk::MakeLockRecord(mDesktop, mDesktop.mUserName, mDesktop.mMachineName));
    mDisk.ResetCounts();
    EXPECT_EQ(host::FindReasonsToStay(folders), (host::UTF16StringVec{{}, {}}));
    EXPECT_EQ(mDisk.Count(Operation::Any), 7) << "two looks, three listings and two locks";
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
    Lock("Reels/Day 1/9", MakeForeignRecord(mDesktop));
    EXPECT_EQ(host::FindReasonsToStay(folders).front(),
              u"“Reels” was not moved. tomas has “9.zuproj” in it open on edit-bay-2.");
    mFolder.Remove("Production/Reels/Day 1/.9.zuproj.lock");
    {
        const ExpectLogged refused("Input/output error");
        mDisk.Fail(Operation::ListFolder, 2, EIO);
        EXPECT_TRUE(host::FindReasonsToStay(folders).front().starts_with(
            u"“Reels” was not moved. The folder “Day 1” cannot be looked through. Input/output error"));
    }
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("Production/Reels"));
    mDialogs.mWhileWaiting = [](desk::WorkProgress& progress) { progress.Cancel(); };
    EXPECT_EQ(ErrorOf([&] { host::FindReasonsToStay(folders); }), ECANCELED);
    mDisk.OpenGate();
}
