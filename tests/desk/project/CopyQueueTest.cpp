#include "desk/app/ProgressTexts.h"
#include "desk/core/work/AskVolume.h"
#include "desk/project/production/CopyQueue.h"
#include "desk/project/production/Production.h"
#include "host/project/ProductionItems.h"
#include "tests/desk/files/FollowedFolder.h"

using desk::CopyJob;
using State = CopyJob::State;

namespace {

/// A production in a folder, projects outside it, and a queue.
class CopyQueueTest : public FollowedFolder {
protected:
    CopyQueueTest() {
        mFolder.MakeFolder("Production/Day 1");
        for (const char* name : {"A", "B", "C"})
            mFolder.Write(std::string("Out/") + name + ".zuproj", std::string("content of ") + name);
        mFolder.Write("Out/.A.zuproj.lock", "somebody's");
        UseFakeSource();
        desk::Production::Instance().Open(mFolder.PathUTF16("Production"));
    }
    ~CopyQueueTest() override { desk::Production::Instance().Close(); }

    host::UTF16String Out(const std::string& name) { return mFolder.PathUTF16("Out/" + name + ".zuproj"); }
    void AddAll() { host::AddProjectsToZuProduction({Out("A"), Out("B"), Out("C")}, InProduction("")); }
    host::UTF16String InProduction(const std::string& name) const {
        return mFolder.PathUTF16("Production/Day 1/" + name);
    }
    /// Waits while the first of the copies stands at the gate.
    void StopAtGate() { mDisk.CloseGate(Operation::CopyFile, mFolder.Path()); }
    std::vector<State> States() const {
        std::vector<State> states;
        for (const CopyJob& job : mQueue.GetJobs()) states.push_back(job.mState);
        return states;
    }
    Names InFolder() const { return NamesIn("Production/Day 1"); }

    desk::CopyQueue mQueue;
};

}  // namespace

TEST_F(CopyQueueTest, TakenNamesGetANumberInBatchesAndFailAlone) {
    mFolder.Write("Production/Day 1/A.zuproj", "the other A");
    AddAll();
    AddAll();
    mMain.RunUntilIdle();
    EXPECT_EQ(InFolder(), (Names{"A.zuproj", "A_1.zuproj", "A_2.zuproj", "B.zuproj", "B_1.zuproj", "C.zuproj",
                                 "C_1.zuproj"}));
    EXPECT_EQ(mQueue.GetJobs().front().mDestination, InProduction("A_1.zuproj"));
    {
        const ExpectLogged log("A.zuproj");
        host::AddProjectToZuProduction(Out("A"), InProduction("A.zuproj"));
        mMain.RunUntilIdle();
    }
    EXPECT_EQ(mQueue.GetJobs().back().mState, State::Failed);
    EXPECT_EQ(mQueue.GetJobs().back().mReason, u"Something with that name is there already.");
    EXPECT_EQ(mFolder.Read("Production/Day 1/A.zuproj"), "the other A");

    // While a copy has not landed, its name is taken for the next.
    const host::UTF16String source = InProduction("B.zuproj");
    StopAtGate();
    const host::UTF16String first = host::GetZuProductionItemCopyPath(source, {});
    host::AddProjectToZuProduction(source, first);
    EXPECT_EQ(host::GetZuProductionItemCopyPath(source, {}), InProduction("B copy 2.zuproj"));
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_TRUE(mFolder.Exists("Production/Day 1/B copy.zuproj"));

    mQueue.ClearFinished();
    host::AddProjectsToZuProduction({source}, mFolder.PathUTF16("Production"));
    EXPECT_TRUE(mQueue.GetJobs().empty()) << "it is in there already";
}

TEST_F(CopyQueueTest, WhatIsCancelledLeavesNothingAndKeepsNobody) {
    StopAtGate();
    AddAll();
    ASSERT_TRUE(mDisk.WaitAtGate());
    const std::vector<CopyJob> jobs = mQueue.GetJobs();
    mQueue.Cancel(jobs[0].mID);
    mQueue.Cancel(jobs[1].mID);
    EXPECT_EQ(States(), (std::vector{State::UnderWay, State::Cancelled, State::Waiting}));
    EXPECT_TRUE(mQueue.GetJobs()[0].mIsCancelling);
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(States(), (std::vector{State::Cancelled, State::Cancelled, State::Done}));
    EXPECT_EQ(InFolder(), Names{"C.zuproj"});

    // A volume that hangs keeps the others for some seconds only.
    StopAtGate();
    AddAll();
    ASSERT_TRUE(mDisk.WaitAtGate());
    mQueue.Cancel(mQueue.GetJobs()[3].mID);
    mMain.AdvanceAlone(desk::kVolumePatience);
    EXPECT_EQ(mQueue.GetJobs()[4].mState, State::UnderWay);
    mQueue.CancelAll();
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(InFolder(), Names{"C.zuproj"});
    EXPECT_FALSE(mQueue.IsBusy());
}

TEST_F(CopyQueueTest, ClosingTheProductionOrTheProgramCancels) {
    for (const bool isProgram : {false, true}) {
        StopAtGate();
        auto queue = std::make_unique<desk::CopyQueue>();
        AddAll();
        ASSERT_TRUE(mDisk.WaitAtGate());
        if (isProgram)
            queue.reset();
        else
            desk::Production::Instance().Close();
        mDisk.OpenGate();
        mMain.RunUntilIdle();
        EXPECT_EQ(InFolder(), Names{}) << isProgram;
        EXPECT_FALSE(queue && queue->IsBusy());
    }
    EXPECT_EQ(desk::CopyQueue::Current(), &mQueue);
}

TEST_F(CopyQueueTest, WhatFailsIsToldLeavesNothingAndKeepsNobody) {
    const ExpectLogged refused("No space left"), told("“A.zuproj” was not copied. There is no room left"),
        notFound("No such file"), noProject("x.txt"), folder("Is a directory");
    mDisk.Fail(Operation::CopyFile, 1, ENOSPC);
    AddAll();
    mMain.RunUntilIdle();
    EXPECT_EQ(States(), (std::vector{State::Failed, State::Done, State::Done}));
    EXPECT_EQ(InFolder(), (Names{"B.zuproj", "C.zuproj"}));

    mQueue.ClearFinished();
    {
        const ExpectLogged doubt("perhaps done");
        mDisk.SetLies(FaultyFileSystem::Lies::NamesForLong);
        mDisk.FailAfter(Operation::RenameNoReplace, 1, EIO);
        host::AddProjectToZuProduction(Out("A"), InProduction("D.zuproj"));
        mMain.RunUntilIdle();
        EXPECT_EQ(States(), std::vector{State::InDoubt});
        EXPECT_TRUE(
            DescribeState(mQueue.GetJobs().front()).startsWith(QStringLiteral("“A.zuproj” may or may not")));
        mDisk.SetLies(FaultyFileSystem::Lies::None);
        mDisk.ForgetLies();
        mFolder.Remove("Production/Day 1/D.zuproj");
    }
    mQueue.ClearFinished();
    mFolder.Write("Out/x.txt");
    mFolder.MakeFolder("Out/F.zuproj");
    std::filesystem::create_symlink("A.zuproj", mFolder.Path("Out/L.zuproj"));
    host::AddProjectsToZuProduction({mFolder.PathUTF16("Out/x.txt"), Out("F"), Out("Missing"), Out("L")},
                                    mFolder.PathUTF16("Production/Day 1"));
    mMain.RunUntilIdle();
    EXPECT_EQ(States(), (std::vector{State::Failed, State::Failed, State::Failed, State::Done}));
    EXPECT_EQ(mQueue.GetJobs()[0].mReason, u"This is not a project file.");
    EXPECT_EQ(mQueue.GetJobs()[1].mReason, u"This is not a project file.");
    EXPECT_EQ(InFolder(), (Names{"B.zuproj", "C.zuproj", "L.zuproj"}));
    EXPECT_FALSE(std::filesystem::is_symlink(mFolder.Path("Production/Day 1/L.zuproj")));
    EXPECT_EQ(mFolder.Read("Production/Day 1/L.zuproj"), "content of A");
}
