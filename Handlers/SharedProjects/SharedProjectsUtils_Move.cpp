// Projects that move, with their locks.
#include "Handlers/SharedProjects/SharedProjectsTraceSite.h"
#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"
#include "host/project/ProjectLockFile.h"

namespace HandlerSharedProjects::Utils {

namespace {

struct LockingPrefs {
    LockingPrefs() { mAreThere = GetProjectLockingPrefs(mUserName, mMachineName); }

    UTF16String mUserName;
    UTF16String mMachineName;
    bool mAreThere = false;
};

bool IsHeld(const ProjectLockFileRef& lock) {
    return lock && lock->IsLocked();
}

void TraceNoLock(TraceSite& site, const UTF16String& path) {
    site.Write([&] { return u"Could not obtain lock file for project. Path: " + path; });
}

void TraceNotMoved(TraceSite& site, int result, const UTF16String& path) {
    site.Write([&] {
        return u"Move Project Result: " + NumberToString(static_cast<long long>(result)) + u" Path: " + path;
    });
}

/// Moves a project whose lock is held: whoever has it open goes on with the lock at the destination.
bool MoveHeldProject(const UTF16String& source, const UTF16String& destination, const LockingPrefs& prefs) {
    const auto lock = CreateProjectLockFile(destination, prefs.mUserName, prefs.mMachineName);
    if (!IsHeld(lock)) {
        static TraceSite sSite;
        TraceNoLock(sSite, destination);
        return false;
    }
    if (const int result = File::Move(source, destination); result < 0) {
        static TraceSite sSite;
        TraceNotMoved(sSite, result, destination);
        return false;
    }
    ProjectRef project;
    if (IsProjectOpen(source, project)) {
        project->SetProjectPath(PathUtils::ToNormalizedPath(destination));
        project->SetProjectLockFile(lock);
    }
    return true;
}

/// Moves a project that nobody holds, holding it at both places meanwhile.
bool MoveFreeProject(const UTF16String& source, const UTF16String& destination, const LockingPrefs& prefs) {
    ProjectRef project;
    const bool isOpen = IsProjectOpen(source, project);
    const auto sourceLock = CreateProjectLockFile(source, prefs.mUserName, prefs.mMachineName);
    if (!IsHeld(sourceLock)) {
        static TraceSite sSite;
        TraceNoLock(sSite, source);
        return false;
    }
    const auto destinationLock = CreateProjectLockFile(destination, prefs.mUserName, prefs.mMachineName);
    if (!IsHeld(destinationLock)) {
        static TraceSite sSite;
        TraceNoLock(sSite, destination);
        return false;
    }
    if (const int result = File::Move(source, destination); result < 0) {
        static TraceSite sSite;
        TraceNotMoved(sSite, result, destination);
        return false;
    }
    if (isOpen) project->SetProjectPath(PathUtils::ToNormalizedPath(destination));
    return true;
}

UTF16String ReplaceAll(UTF16String text, const UTF16String& from, const UTF16String& to) {
    if (from.empty()) return text;
    for (std::size_t at = text.find(from); at != UTF16String::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// Gives the project a lock at `path`, if one can be had.
void TakeLockAnew(IProject& project, const UTF16String& path) {
    const LockingPrefs prefs;
    if (!prefs.mAreThere) return;
    const auto lock = CreateProjectLockFile(path, prefs.mUserName, prefs.mMachineName);
    if (IsHeld(lock)) project.SetProjectLockFile(lock);
}

}  // namespace

bool MoveProjectAndLockFiles(const UTF16String& source, const UTF16String& destination) {
    if (!IsVantorProjectFile(source) || !IsVantorProjectFile(destination)) return false;
    const LockingPrefs prefs;
    const auto lock = ReadProjectLockFile(source, prefs.mUserName, prefs.mMachineName);
    return IsHeld(lock) ? MoveHeldProject(source, destination, prefs)
                        : MoveFreeProject(source, destination, prefs);
}

void UpdatePathsOfOpenProjectsAndLockFiles(const UTF16String& oldFolder, const UTF16String& newFolder) {
    const UTF16String folder = PathUtils::ToNormalizedPath(oldFolder);
    for (const ProjectRef& project : GetOpenProjectList()) {
        if (project->IsReadOnly()) continue;
        const UTF16String path = project->GetProjectPath();
        if (!Utilities::IsPathWithinDirectory(path, folder, true)) continue;
        const UTF16String newPath = ReplaceAll(path, oldFolder, newFolder);
        if (!PathUtils::ExistsOnDisk(newPath, false)) continue;
        project->SetProjectPath(PathUtils::ToNormalizedPath(newPath));
        TakeLockAnew(*project, newPath);
    }
}

bool IsALockedProject(const UTF16String& path) {
    const LockingPrefs prefs;
    const auto lock = ReadProjectLockFile(path, prefs.mUserName, prefs.mMachineName);
    return IsHeld(lock) && lock->GetLockOwner() != prefs.mUserName;
}

}  // namespace HandlerSharedProjects::Utils
