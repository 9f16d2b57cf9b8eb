#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "desk/files/disk/PosixFileSystem.h"
#include "tests/volume/LockCompetition.h"

namespace {

constexpr char kUsage[] =
    "usage: lock-race [--processes N] [--tries N] [--projects N] FOLDER...\n"
    "Lets processes compete for the locks of a few projects in a folder, which may be given several times, as "
    "it is\n"
    "seen through several mounts. Prints what it found; exits with 1 when the locks did not keep their "
    "promise.\n";

bool ParseArguments(int argc, char** argv, LockCompetition& competition) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        int* number = argument == "--processes"  ? &competition.mProcesses
                      : argument == "--tries"    ? &competition.mTries
                      : argument == "--projects" ? &competition.mProjects
                                                 : nullptr;
        if (!number) {
            if (argument.starts_with('-')) return false;
            competition.mFolders.push_back(argument);
            continue;
        }
        if (++i == argc || (*number = std::atoi(argv[i])) <= 0) return false;
    }
    return !competition.mFolders.empty() && competition.mProjects <= 16;
}

bool Print(const LockCompetitionResult& result) {
    int held = 0;
    for (const int count : result.mHeld) held += count;
    std::cout << "tries: " << result.mTries << " in " << result.mSeconds << " s ("
              << static_cast<int>(result.mTries / result.mSeconds) << "/s), of which " << held
              << " held a lock\n"
              << "held by two at once: " << result.mHeldTogether << '\n'
              << "locks lost or not given up: " << result.mLost << '\n'
              << "lock, guard and temporary files left: " << result.mNamesLeft.size() << '\n'
              << "lines written by holders and missing: " << result.mLinesMissing << '\n'
              << "writes that their holder saw change: " << result.mWritesSeenToChange << '\n';
    for (const std::string& name : result.mNamesLeft) std::cout << "  left: " << name << '\n';
    int failures = 0;
    for (const auto& [error, count] : result.mFailures) failures += count;
    std::cout << "errors: " << failures << '\n';
    for (const auto& [error, count] : result.mFailures)
        std::cout << "  " << std::strerror(error) << ": " << count << '\n';
    return held > 0 && result.mHeldTogether == 0 && result.mLost == 0 && result.mNamesLeft.empty() &&
           result.mLinesMissing == 0;
}

}  // namespace

int main(int argc, char** argv) {
    LockCompetition competition;
    if (!ParseArguments(argc, argv, competition)) {
        std::cerr << kUsage;
        return 2;
    }
    desk::PosixFileSystem disk;
    return Print(RunLockCompetition(competition, disk)) ? 0 : 1;
}
