#include "tests/volume/LockCompetition.h"

#include <fcntl.h>

#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include "desk/core/edges/FileSystem.h"
#include "desk/project/lock/LockProtocol.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/volume/Processes.h"

namespace {

using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockTaking;

constexpr int kMostProjects = 16;
constexpr int kErrors = 256;

struct Board {
    std::atomic<int> mHolders[kMostProjects];
    std::atomic<int> mHeld[kMostProjects];
    std::atomic<int> mFailures[kErrors];
    std::atomic<int> mHeldTogether;
    std::atomic<int> mLost;
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

/// As the program does it: a lock that cannot be removed now is tried again for three seconds.
bool GiveUp(LockProtocol& protocol, const std::string& lock, const std::string& nonce) {
    LockRelease release = protocol.Release(lock, nonce);
    for (int i = 0; release == LockRelease::Retry && i < 60; ++i) {
        ::usleep(50'000);
        release = protocol.Release(lock, nonce);
    }
    return release == LockRelease::Done;
}

/// What one process does.
class Competitor {
public:
    Competitor(const LockCompetition& competition, int number, desk::FileSystem& disk, Board& board)
        : mCompetition(competition),
          mNumber(number),
          mFolder(competition.mFolders[static_cast<std::size_t>(number) % competition.mFolders.size()] + '/'),
          mBoard(board),
          mProtocol(disk, mDesktop) {
        const auto machine = static_cast<std::size_t>(number) % competition.mFolders.size();
        mDesktop.mMachineID.back() = "0123456789abcdef"[machine % 16];
    }

    void Run() {
        for (int i = 0; i < mCompetition.mTries; ++i) Try((mNumber + i * 7 / 3) % mCompetition.mProjects);
        for (const desk::LockRemains& remains : mProtocol.TakeRemains())
            for (int i = 0; i < 60 && mProtocol.RemoveRemains(remains) == LockRelease::Retry; ++i)
                ::usleep(50'000);
    }

private:
    void Try(int project) {
        const std::string lock = mFolder + '.' + ProjectName(project) + ".lock";
        const LockRecord mine = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
        const LockTaking taking = mProtocol.Take(lock, mine);
        if (taking.mOutcome == LockTaking::Outcome::Failed) ++mBoard.mFailures[taking.mSystemError % kErrors];
        if (taking.mOutcome != LockTaking::Outcome::Ours) return;
        if (++mBoard.mHolders[project] != 1) ++mBoard.mHeldTogether;
        if (!AppendAlone(mFolder + ProjectName(project), mine.mNonce + '\n')) ++mBoard.mWritesSeenToChange;
        ++mBoard.mHeld[project];
        --mBoard.mHolders[project];
        if (!GiveUp(mProtocol, lock, mine.mNonce)) ++mBoard.mLost;
    }

    const LockCompetition& mCompetition;
    const int mNumber;
    const std::string mFolder;
    Board& mBoard;
    RecordingDesktop mDesktop;
    LockProtocol mProtocol;
};

int CountLines(const std::string& path) {
    std::ifstream file(path);
    std::set<std::string> lines;
    for (std::string line; std::getline(file, line);)
        if (line.size() == 32) lines.insert(line);
    return static_cast<int>(lines.size());
}

void LookAround(const LockCompetition& competition, LockCompetitionResult& result) {
    for (int i = 0; i < competition.mProjects; ++i)
        result.mLinesMissing += result.mHeld[static_cast<std::size_t>(i)] -
                                CountLines(competition.mFolders.front() + '/' + ProjectName(i));
    for (const std::string& folder : competition.mFolders)
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().filename().string().starts_with('.'))
                result.mNamesLeft.push_back(entry.path().string());
}

void Collect(const Board& board, const LockCompetition& competition, LockCompetitionResult& result) {
    result.mHeld.assign(board.mHeld, board.mHeld + competition.mProjects);
    result.mHeldTogether = board.mHeldTogether;
    result.mLost = board.mLost;
    result.mWritesSeenToChange = board.mWritesSeenToChange;
    result.mTries = competition.mTries * competition.mProcesses;
    for (int error = 0; error < kErrors; ++error)
        if (board.mFailures[error]) result.mFailures[error] = board.mFailures[error];
}

}  // namespace

LockCompetitionResult RunLockCompetition(const LockCompetition& competition, desk::FileSystem& disk) {
    Shared<Board> board;
    for (int i = 0; i < competition.mProjects; ++i)
        std::ofstream(competition.mFolders.front() + '/' + ProjectName(i)).flush();
    const auto begin = std::chrono::steady_clock::now();
    std::vector<pid_t> processes;
    for (int number = 0; number < competition.mProcesses; ++number)
        processes.push_back(StartProcess([&] {
            Competitor(competition, number, disk, *board).Run();
            return 0;
        }));
    LockCompetitionResult result;
    for (const pid_t process : processes)
        if (ResultOf(process) != 0) ++result.mLost;
    result.mSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    const int ended = result.mLost;
    Collect(*board, competition, result);
    result.mLost += ended;
    LookAround(competition, result);
    for (int i = 0; i < competition.mProjects; ++i)
        std::filesystem::remove(competition.mFolders.front() + '/' + ProjectName(i));
    return result;
}
