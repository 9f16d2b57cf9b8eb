#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "desk/core/durable/PosixErrors.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/project/lock/LockProtocol.h"
#include "tests/support/DiskTree.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/volume/LockCompetition.h"
#include "tests/volume/Processes.h"
#include "tests/volume/TestProduction.h"

using desk::LockProtocol;
using desk::LockRecord;
using desk::LockTaking;

namespace {

/// A volume where links may have been taken away, and files may go some time after they were looked at.
class RaceDisk : public desk::PosixFileSystem {
public:
    bool mHasLinks = true;
    bool mIsSlowToRemove = false;

    void Link(const std::string& from, const std::string& to) override {
        if (!mHasLinks) desk::ThrowFileException("make link", to, EPERM);
        PosixFileSystem::Link(from, to);
    }
    void RemoveFile(const std::string& path) override {
        if (mIsSlowToRemove) ::usleep(static_cast<useconds_t>(::getpid() * 37 % 400));
        PosixFileSystem::RemoveFile(path);
    }
};

class LockRace : public testing::TestWithParam<bool> {
protected:
    static constexpr int kTakers = 4;
    static constexpr int kRounds = 60;
    static constexpr char kLock[] = ".Reel 0.zuproj.lock";

    struct Board {
        std::atomic<int> mArrived;
        std::atomic<int> mWinners[kRounds];
        std::atomic<int> mFaults;
    };

    LockRace() { mDisk.mHasLinks = GetParam(); }

    static void WaitForAll(Board& board) {
        const int meeting = board.mArrived++ / kTakers + 1;
        while (board.mArrived < meeting * kTakers) ::sched_yield();
    }

    /// What each of the takers does: the first one of them lays out a dead lock, and all go for it.
    int TakeDeadLocks(bool isFirst, Board& board) {
        LockProtocol protocol(mDisk, mDesktop);
        for (int round = 0; round < kRounds; ++round) {
            const LockRecord mine = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
            LockRecord dead = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
            dead.mProcessStart += 1'000'000'000;
            if (isFirst) mFolder.Write(kLock, WriteLockRecord(dead));
            WaitForAll(board);
            const auto outcome = protocol.Take(mFolder.Path(kLock), mine).mOutcome;
            board.mWinners[round] += outcome == LockTaking::Outcome::Ours;
            WaitForAll(board);
            const bool isOnDisk = desk::ParseLockRecord(mFolder.Read(kLock)).mNonce == mine.mNonce;
            board.mFaults += isOnDisk != (outcome == LockTaking::Outcome::Ours) ||
                             outcome == LockTaking::Outcome::Failed || ReadTree(mFolder.Path()).size() != 1;
            WaitForAll(board);
        }
        return 0;
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    RecordingDesktop mDesktop;
    RaceDisk mDisk;
};

INSTANTIATE_TEST_SUITE_P(Volumes, LockRace, testing::Bool(),
                         [](const auto& volume) { return volume.param ? "WithLinks" : "WithoutLinks"; });

}  // namespace

TEST_P(LockRace, ManyProcessesNeverHoldOneProjectTogether) {
    LockCompetition competition;
    competition.mFolders = {mFolder.Path()};
    if (!GetParam()) competition.mTries = 250;
    const LockCompetitionResult result = RunLockCompetition(competition, mDisk);
    for (const int held : result.mHeld) EXPECT_GT(held, competition.mTries / 10);
    EXPECT_EQ(result.mHeldTogether, 0);
    EXPECT_EQ(result.mWritesSeenToChange, 0);
    EXPECT_EQ(result.mLinesMissing, 0);
    EXPECT_EQ(result.mLost, 0);
    EXPECT_THAT(result.mFailures, testing::IsEmpty());
    EXPECT_THAT(result.mNamesLeft, testing::IsEmpty());
}

TEST_P(LockRace, OfSeveralTakersOfADeadLockOneWins) {
    mDisk.mIsSlowToRemove = true;
    Shared<Board> board;
    std::vector<pid_t> processes;
    for (int i = 0; i < kTakers; ++i)
        processes.push_back(StartProcess([&, i] { return TakeDeadLocks(i == 0, *board); }));
    for (const pid_t process : processes) EXPECT_EQ(ResultOf(process), 0);
    for (const auto& winners : board->mWinners) EXPECT_EQ(winners, 1);
    EXPECT_EQ(board->mFaults, 0);
}
