#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <random>

#include "desk/files/PosixErrors.h"
#include "desk/files/PosixFileSystem.h"
#include "desk/project/Leftovers.h"
#include "desk/project/LockProtocol.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/volume/LockCompetition.h"
#include "tests/volume/Processes.h"
#include "tests/volume/TestProduction.h"

using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockTaking;

namespace {

/// A volume on which links have been taken away.
class WithoutLinks : public desk::PosixFileSystem {
public:
    void Link(const std::string&, const std::string& to) override {
        desk::ThrowFileException("make link", to, EPERM);
    }
};

class LockRace : public testing::TestWithParam<bool> {
protected:
    std::string LockOf(int project) const {
        return mFolder.Path(".Reel " + std::to_string(project) + ".zuproj.lock");
    }
    desk::FileSystem& Disk() { return GetParam() ? static_cast<desk::FileSystem&>(mDisk) : mDiskWithoutLinks; }
    LockRecord Mine() const { return desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1"); }
    /// Every name in the folder that is no project's.
    std::vector<std::string> StrayNames() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path()))
            if (entry.path().filename().string().starts_with('.')) names.push_back(entry.path().filename());
        return names;
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    RecordingDesktop mDesktop;
    desk::PosixFileSystem mDisk;
    WithoutLinks mDiskWithoutLinks;
};

INSTANTIATE_TEST_SUITE_P(Volumes, LockRace, testing::Bool(),
                         [](const auto& volume) { return volume.param ? "WithLinks" : "WithoutLinks"; });

}  // namespace

TEST_P(LockRace, ManyProcessesNeverHoldOneProjectTogether) {
    LockCompetition competition;
    competition.mFolders = {mFolder.Path()};
    const LockCompetitionResult result = RunLockCompetition(competition, Disk());
    for (const int held : result.mHeld) EXPECT_GT(held, 100);
    EXPECT_EQ(result.mHeldTogether, 0);
    EXPECT_EQ(result.mWritesSeenToChange, 0);
    EXPECT_EQ(result.mLinesMissing, 0);
    EXPECT_EQ(result.mLost, 0);
    EXPECT_THAT(result.mFailures, testing::IsEmpty());
    EXPECT_THAT(result.mNamesLeft, testing::IsEmpty());
}

TEST_P(LockRace, OfSeveralTakersOfADeadLockOneWins) {
    constexpr int kTakers = 4;
    constexpr int kRounds = 150;
    struct Board {
        std::atomic<int> mReady;
        std::atomic<int> mDone;
        std::atomic<int> mWinners;
        std::atomic<int> mFailures;
        char mNonce[33];
    };
    LockRecord dead = Mine();
    dead.mProcessStart += 1'000'000'000;
    for (int round = 0; round < kRounds; ++round) {
        dead.mNonce[0] = "0123456789abcdef"[round % 16];
        mFolder.Write(".Reel 0.zuproj.lock", WriteLockRecord(dead));
        Shared<Board> board;
        const auto take = [&] {
            const LockRecord mine = Mine();
            LockProtocol protocol(Disk(), mDesktop);
            ++board->mReady;
            while (board->mReady < kTakers) ::sched_yield();
            const auto outcome = protocol.Take(LockOf(0), mine).mOutcome;
            if (outcome == LockTaking::Outcome::Failed) ++board->mFailures;
            if (outcome == LockTaking::Outcome::Ours && ++board->mWinners == 1)
                mine.mNonce.copy(board->mNonce, 32);
            // Whoever ends is dead to the others.
            ++board->mDone;
            while (board->mDone < kTakers) ::usleep(100);
            return 0;
        };
        std::vector<pid_t> processes;
        for (int i = 0; i < kTakers; ++i) processes.push_back(StartProcess(take));
        for (const pid_t process : processes) ASSERT_EQ(ResultOf(process), 0);
        ASSERT_EQ(board->mWinners, 1) << "round " << round;
        ASSERT_EQ(board->mFailures, 0);
        ASSERT_EQ(desk::ParseLockRecord(mFolder.Read(".Reel 0.zuproj.lock")).mNonce, board->mNonce);
        ASSERT_EQ(StrayNames().size(), 1u) << "nothing but the lock";
    }
}

class KilledHolder : public LockRace {};
// Without links a process can be killed between the creation of its lock and the writing: that lock a person
// breaks.
INSTANTIATE_TEST_SUITE_P(Volumes, KilledHolder, testing::Values(true), [](const auto&) { return "WithLinks"; });

TEST_P(KilledHolder, IsSucceededByTheNextWheneverItDied) {
    constexpr int kRounds = 300;
    std::mt19937 random(7);
    int locksLeft = 0;
    for (int round = 0; round < kRounds; ++round) {
        const pid_t process = StartProcess([&]() -> int {
            LockProtocol protocol(Disk(), mDesktop);
            for (;;) {
                const LockRecord mine = Mine();
                // It begins with taking over what the one before has left.
                if (protocol.Take(LockOf(0), mine).mOutcome != LockTaking::Outcome::Ours) return 1;
                if (protocol.Release(LockOf(0), mine.mNonce) != LockRelease::Done) return 1;
            }
        });
        ::usleep(static_cast<useconds_t>(random() % 6000));
        ::kill(process, SIGKILL);
        ASSERT_EQ(ResultOf(process), -1) << "it could not take or give up in round " << round;
        locksLeft += mFolder.Exists(".Reel 0.zuproj.lock");
        if (round % 3 != 0) continue;
        LockProtocol protocol(Disk(), mDesktop);
        const LockRecord mine = Mine();
        ASSERT_EQ(protocol.Take(LockOf(0), mine).mOutcome, LockTaking::Outcome::Ours) << "round " << round;
        ASSERT_EQ(protocol.Release(LockOf(0), mine.mNonce), LockRelease::Done);
    }
    EXPECT_GT(locksLeft, 10) << "the processes died too early or too late to prove anything";
    const LockRecord mine = Mine();
    LockProtocol protocol(Disk(), mDesktop);
    ASSERT_EQ(protocol.Take(LockOf(0), mine).mOutcome, LockTaking::Outcome::Ours);
    ASSERT_EQ(protocol.Release(LockOf(0), mine.mNonce), LockRelease::Done);
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path());
    EXPECT_TRUE(StrayNames().empty()) << StrayNames().front();
}
