#pragma once

#include <map>
#include <string>
#include <vector>

namespace desk {
class FileSystem;
}

/// Many processes at once that take and give up the locks of a few projects in one folder.
struct LockCompetition {
    /// The folder, once for each mount through which it is seen; each mount is a machine of its own. The
    /// processes are spread evenly.
    std::vector<std::string> mFolders;
    int mProcesses = 16;
    int mTries = 1000;
    int mProjects = 4;
};

struct LockCompetitionResult {
    /// How often each project's lock was held.
    std::vector<int> mHeld;
    /// How often a lock was given to a process while another one held it.
    int mHeldTogether = 0;
    /// Locks that their holder did not find its own when giving them up, or could not remove within three
    /// seconds.
    int mLost = 0;
    /// How often a holder that wrote to its project saw it change under its hands.
    int mWritesSeenToChange = 0;
    /// Lines that holders wrote and that are not in the projects afterwards.
    int mLinesMissing = 0;
    /// By errno: how often a lock could neither be taken nor seen to be held.
    std::map<int, int> mFailures;
    /// Names in the folder that are no project's, through whichever mount.
    std::vector<std::string> mNamesLeft;
    double mSeconds = 0;
    int mTries = 0;
};

/// Makes the projects, runs the competition on `disk` and removes the projects again. Before the first thread.
LockCompetitionResult RunLockCompetition(const LockCompetition& competition, desk::FileSystem& disk);
