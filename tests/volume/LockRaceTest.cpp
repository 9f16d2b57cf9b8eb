#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <filesystem>
#include <set>
#include <sstream>

#include "desk/core/durable/PosixErrors.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/project/lock/LockProtocol.h"
#include "tests/support/DiskTree.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/volume/Processes.h"
#include "tests/volume/TestProduction.h"

using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockTaking;

namespace {

constexpr int kProcesses = 16;
constexpr int kProjects = 4;
constexpr int kErrors = 256;

/// A volume where links may have been taken away, and files may go some time after they were looked at.
class RaceDisk : public desk::PosixFileSystem {
public:
    bool mHasLinks = true;

    void Link(const std::string& from, const std::string& to) override {
        if (!mHasLinks) desk::ThrowFileException("make link", to, EPERM);
        PosixFileSystem::Link(from, to);
    }
    void RemoveFile(const std::string& path) override {
        if (++mRemovals % 4 == 0) ::usleep(static_cast<useconds_t>(::getpid() * 37 % 400));
        PosixFileSystem::RemoveFile(path);
    }

private:
    int mRemovals = 0;
};

/// What all processes of a race write down.
struct Board {
    std::atomic<int> mHolders[kProjects];
    std::atomic<int> mHeld[kProjects];
    /// Of those, given up by dying.
    std::atomic<int> mDied[kProjects];
    /// By errno: how often a lock could neither be taken nor seen to be held.
    std::atomic<int> mFailures[kErrors];
    std::atomic<int> mHeldTogether;
    /// Locks that their holder did not find its own when giving them up, or could not remove within three seconds.
    std::atomic<int> mLost;
    /// How often a holder that wrote to its project saw it change under its hands.
    std::atomic<int> mWritesSeenToChange;
};

std::string ProjectName(int project) {
    return "Reel " + std::to_string(project) + ".zuproj";
}

/// Writes to a project as its only holder; false when somebody else wrote meanwhile.
bool AppendAlone(const std::string& project, const std::string& line) {
    const int file = ::open(project.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
    const off_t before = ::lseek(file, 0, SEEK_END);
    const auto size = static_cast<ssize_t>(line.size());
    std::string found(line.size(), '\0');
    bool isAlone = ::write(file, line.data(), line.size()) == size;
    ::sched_yield();
    isAlone = isAlone && ::pread(file, found.data(), found.size(), before) == size && found == line &&
              ::lseek(file, 0, SEEK_END) == before + size;
    ::close(file);
    return isAlone;
}

/// One process of a race: takes the locks of a few projects in turn, writes to the project, and gives the lock
/// up; every eighth time by dying.
class Competitor {
public:
    Competitor(const std::vector<std::string>& folders, int number, RaceDisk& disk, Board& board)
        : mNumber(number),
          mFolder(folders[static_cast<std::size_t>(number) % folders.size()] + '/'),
          mBoard(board),
          mProtocol(disk, mDesktop) {
        const auto machine = static_cast<std::size_t>(number) % folders.size();
        mDesktop.mMachineID.back() = "0123456789abcdef"[machine % 16];
    }

    void Run(int tries) {
        for (int i = 0; i < tries; ++i) Try((mNumber + i * 7 / 3) % kProjects, i % 8 == 7);
        for (const desk::LockRemains& remains : mProtocol.TakeRemains())
            for (int i = 0; i < 60 && mProtocol.RemoveRemains(remains) == LockRelease::Retry; ++i)
                ::usleep(50'000);
    }

    void Try(int project, bool dies = false) {
        const std::string lock = mFolder + '.' + ProjectName(project) + ".lock";
        const LockRecord mine = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
        const LockTaking taking = mProtocol.Take(lock, mine);
        if (taking.mOutcome == LockTaking::Outcome::Failed) ++mBoard.mFailures[taking.mSystemError % kErrors];
        if (taking.mOutcome != LockTaking::Outcome::Ours) return;
        if (++mBoard.mHolders[project] != 1) ++mBoard.mHeldTogether;
        if (!AppendAlone(mFolder + ProjectName(project), mine.mNonce + '\n')) ++mBoard.mWritesSeenToChange;
        ++mBoard.mHeld[project];
        --mBoard.mHolders[project];
        if (dies) return Die(lock, mine, project);
        if (!GiveUp(lock, mine.mNonce)) ++mBoard.mLost;
    }

private:
    /// Leaves the lock as a process leaves it that is gone.
    void Die(const std::string& lock, LockRecord mine, int project) {
        mine.mProcessStart += 1'000'000'000;
        const std::string beside = mFolder + "dead-" + mine.mNonce;
        std::ofstream(beside) << WriteLockRecord(mine);
        std::filesystem::rename(beside, lock);
        ++mBoard.mDied[project];
    }

    /// As the program does it: a lock that cannot be removed now is tried again for three seconds.
    bool GiveUp(const std::string& lock, const std::string& nonce) {
        LockRelease release = mProtocol.Release(lock, nonce);
        for (int i = 0; release == LockRelease::Retry && i < 60; ++i) {
            ::usleep(50'000);
            release = mProtocol.Release(lock, nonce);
        }
        return release == LockRelease::Done;
    }

    const int mNumber;
    const std::string mFolder;
    Board& mBoard;
    RecordingDesktop mDesktop;
    LockProtocol mProtocol;
};

/// The folder, once for each mount through which it is seen; each mount is a machine of its own, and the processes
/// are spread evenly. `ZU_LOCK_RACE_FOLDERS` names them (scripts/cluster-race.sh); else it is one in memory.
class LockRace : public testing::TestWithParam<bool> {
protected:
    LockRace() {
        mDisk.mHasLinks = GetParam();
        std::istringstream given(qEnvironmentVariable("ZU_LOCK_RACE_FOLDERS").toStdString());
        for (std::string folder; std::getline(given, folder, ':');) mFolders.push_back(folder);
        if (mFolders.empty()) mFolders.push_back(mFolder.Path());
        for (int i = 0; i < kProjects; ++i) std::ofstream(mFolders.front() + '/' + ProjectName(i)).flush();
    }
    ~LockRace() override {
        for (int i = 0; i < kProjects; ++i) std::filesystem::remove(mFolders.front() + '/' + ProjectName(i));
    }

    /// Lines that their writers took for written, of one project.
    int CountLines(int project) const {
        std::ifstream file(mFolders.front() + '/' + ProjectName(project));
        std::set<std::string> lines;
        for (std::string line; std::getline(file, line);)
            if (line.size() == 32) lines.insert(line);
        return static_cast<int>(lines.size());
    }
    /// Names that are no project's, through whichever mount.
    std::vector<std::string> NamesLeft() const {
        std::vector<std::string> left;
        for (const std::string& folder : mFolders)
            for (const auto& entry : std::filesystem::directory_iterator(folder))
                if (!entry.path().filename().string().starts_with("Reel ")) left.push_back(entry.path());
        return left;
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    std::vector<std::string> mFolders;
    RaceDisk mDisk;
    Shared<Board> mBoard;
};

INSTANTIATE_TEST_SUITE_P(Volumes, LockRace, testing::Bool(),
                         [](const auto& volume) { return volume.param ? "WithLinks" : "WithoutLinks"; });

}  // namespace

TEST_P(LockRace, ManyProcessesNeverHoldOneProjectTogether) {
    const int tries = GetParam() ? 1000 : 250;
    std::vector<pid_t> processes;
    for (int number = 0; number < kProcesses; ++number)
        processes.push_back(StartProcess([&] {
            Competitor(mFolders, number, mDisk, *mBoard).Run(tries);
            return 0;
        }));
    for (const pid_t process : processes) EXPECT_EQ(ResultOf(process), 0);
    // The last one may have died with its lock.
    for (std::size_t machine = 0; machine < mFolders.size(); ++machine)
        for (int i = 0; i < kProjects; ++i)
            Competitor(mFolders, static_cast<int>(machine), mDisk, *mBoard).Try(i);

    for (int i = 0; i < kProjects; ++i) {
        EXPECT_GT(mBoard->mHeld[i].load(), tries / 10);
        EXPECT_GT(mBoard->mDied[i].load(), 0);
        EXPECT_EQ(CountLines(i), mBoard->mHeld[i].load()) << ProjectName(i);
    }
    EXPECT_EQ(mBoard->mHeldTogether.load(), 0);
    EXPECT_EQ(mBoard->mWritesSeenToChange.load(), 0);
    EXPECT_EQ(mBoard->mLost.load(), 0);
    for (int error = 0; error < kErrors; ++error) EXPECT_EQ(mBoard->mFailures[error].load(), 0) << std::strerror(error);
    EXPECT_THAT(NamesLeft(), testing::IsEmpty());
}
