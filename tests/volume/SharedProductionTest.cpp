#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

#include "desk/core/edges/SystemDesktop.h"
#include "desk/core/names/LockRecord.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/project/lock/LockProtocol.h"
#include "tests/volume/TestProduction.h"
#include "tests/volume/WorkerServer.h"

using testproduction::Findings;

namespace {

/// Real processes of the host on one production, through the operations that the panel calls.
class SharedProduction : public testing::Test {
protected:
    static std::string LockOf(const std::string& project) {
        const std::filesystem::path path(project);
        return path.parent_path().string() + "/." + path.filename().string() + ".lock";
    }
    bool HasHiddenNames() const {
        const auto isHidden = [](const auto& entry) {
            return entry.path().filename().string().starts_with(".zu");
        };
        for (const std::string& folder : testproduction::List(mProduction).mFolders) {
            std::error_code gone;
            const std::filesystem::directory_iterator entries(folder, gone);
            if (std::any_of(begin(entries), end(entries), isHidden)) return true;
        }
        return false;
    }
    /// Waits for a random time; every other time until then, stopped, it has a file in the making.
    void WaitForAMomentToKill(pid_t process, std::mt19937& random) {
        ::usleep(static_cast<useconds_t>(random() % 20'000));
        if (random() % 2) return;
        const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
        while (std::chrono::steady_clock::now() < limit) {
            ::kill(process, SIGSTOP);
            if (HasHiddenNames()) return;
            ::kill(process, SIGCONT);
            ::usleep(static_cast<useconds_t>(random() % 500));
        }
    }
    /// Of the folder "Reels". One that was killed before its mark was made has left an empty folder.
    void ExpectNoHollowCopies(const Findings& killed) {
        const auto isMark = [](const std::string& path) { return path.find("/.zucopy-") != path.npos; };
        const bool mayBeEmpty = std::ranges::none_of(killed.mHidden, isMark);
        const std::size_t projects = testproduction::List(mProduction + "/Reels").mProjects.size();
        for (const auto& entry : std::filesystem::directory_iterator(mProduction)) {
            if (!entry.path().filename().string().starts_with("Reels copy")) continue;
            if (mayBeEmpty && std::filesystem::is_empty(entry)) continue;
            EXPECT_EQ(testproduction::List(entry.path()).mProjects.size(), projects) << entry << " is hollow";
        }
    }
    void ExpectThatEachLockCanBeTaken() {
        desk::LockProtocol protocol(mDisk, mDesktop);
        for (const std::string& project : testproduction::List(mProduction).mProjects) {
            const auto mine = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
            EXPECT_EQ(protocol.Take(LockOf(project), mine).mOutcome, desk::LockTaking::Outcome::Ours)
                << project;
            EXPECT_EQ(protocol.Release(LockOf(project), mine.mNonce), desk::LockRelease::Done) << project;
        }
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    const std::string mProduction = mFolder.MakeFolder("North Shore");
    desk::PosixFileSystem mDisk;
    desk::SystemDesktop mDesktop;
    WorkerServer mServer;
};

}  // namespace

TEST_F(SharedProduction, ThatFourProcessesMoveRenameAndTrashAtOnceLosesNothing) {
    constexpr int kProjects = 200;
    constexpr int kMilliseconds = 3000;
    testproduction::Make(mProduction, kProjects);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::vector<pid_t> processes;
    for (unsigned i = 0; i < 4; ++i)
        processes.push_back(mServer.Begin("shuffle", mProduction, seed + i, kMilliseconds));
    for (const pid_t process : processes) EXPECT_EQ(mServer.ResultOf(process), 0);
    EXPECT_EQ(testproduction::Examine(mProduction).DescribeLosses(kProjects), "");
    ExpectThatEachLockCanBeTaken();
    // Folders were moved with the locks of others in them.
    testproduction::Sweep(mProduction, mDesktop);
    EXPECT_THAT(testproduction::Examine(mProduction).mHidden, testing::IsEmpty());
}

/// A job, how often it is killed, and whether it makes copies.
struct KilledJob {
    const char* mName;
    int mRounds;
    bool mMakesCopies = false;
};

void PrintTo(const KilledJob& job, std::ostream* out) {
    *out << job.mName;
}

class KilledProcess : public SharedProduction, public testing::WithParamInterface<KilledJob> {};

INSTANTIATE_TEST_SUITE_P(Jobs, KilledProcess,
                         testing::Values(KilledJob{"take", 40}, KilledJob{"move", 80}, KilledJob{"save", 70},
                                         KilledJob{"copy", 30, true}, KilledJob{"duplicate", 50, true},
                                         KilledJob{"add", 50, true}, KilledJob{"save-as", 50, true},
                                         KilledJob{"trash", 60}),
                         [](const auto& job) {
                             std::string name = job.param.mName;
                             std::erase(name, '-');
                             return name;
                         });

TEST_P(KilledProcess, LeavesEveryProjectWholeAndNothingThatStandsInTheWay) {
    constexpr int kProjects = 12;
    const KilledJob job = GetParam();
    testproduction::Make(mProduction, kProjects);
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    int left = 0;
    // On a busy machine most may die before they have begun, or after the end.
    const auto goesOn = [&](int round) {
        return round < job.mRounds || (left == 0 && round < 10 * job.mRounds);
    };
    for (int round = 0; goesOn(round); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
        const pid_t process = mServer.Begin(job.mName, mProduction, seed + static_cast<unsigned>(round));
        WaitForAMomentToKill(process, random);
        ASSERT_TRUE(mServer.Kill(process));
        const Findings found = testproduction::Examine(mProduction);
        left += !found.mHidden.empty();
        ASSERT_EQ(found.DescribeLosses(kProjects, job.mMakesCopies), "");
        testproduction::Sweep(mProduction, mDesktop);
        ExpectThatEachLockCanBeTaken();
        ASSERT_THAT(testproduction::Examine(mProduction).mHidden, testing::IsEmpty());
        if (!job.mMakesCopies) continue;
        ExpectNoHollowCopies(found);
        std::filesystem::remove_all(mProduction);
        testproduction::Make(mProduction, kProjects);
    }
    EXPECT_GT(left, 0) << "the processes died too early or too late to prove anything";
}
