// Projects that move, with their locks.
#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "Handlers/SharedProjects/SharedProjectsTraceSite.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ItemOperations.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"
#include "host/project/ProjectLockFile.h"
#include "host/project/SharedProjectsManager.h"

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

UTF16String ReplaceAll(UTF16String text, const UTF16String& from, const UTF16String& to) {
    if (from.empty()) return text;
    for (std::size_t at = text.find(from); at != UTF16String::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// There may be projects of one name in many folders.
UTF16String DescribeHeldProject(const UTF16String& path) {
    const UTF16String name = Columns::GetPathDisplayName(path);
    const UTF16String folder = Columns::GetShownName(PathUtils::GetFullDirectoryPart(path));
    const UTF16String lock = DescribeProjectLock(path);
    if (lock.empty())
        return ZString("$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/Locked=“@0” in “@1” is in use.",
                       {name, folder});
    return ZString("$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/Held=“@0” in “@1” is in use. @2",
                   {name, folder, lock});
}

/// Gives the project a lock at `path`, if one can be had.
void TakeLockAnew(IProject& project, const UTF16String& path) {
    const LockingPrefs prefs;
    if (!prefs.mAreThere) return;
    const auto lock = CreateProjectLockFile(path, prefs.mUserName, prefs.mMachineName);
    if (IsHeld(lock)) project.SetProjectLockFile(lock);
}

}  // namespace

void TraceOutcome(const ItemOutcome& outcome, const UTF16String& source, const UTF16String& destination) {
    using Result = ItemOutcome::Result;
    constexpr int kNotMoved = -1;
    // Each place has its own answer whether to trace.
    static TraceSite sHeldNoLock, sHeldNotMoved, sFreeNoSourceLock, sFreeNoLock, sFreeNotMoved;
    if (outcome.mResult == Result::NoSourceLock) TraceNoLock(sFreeNoSourceLock, source);
    if (outcome.mResult == Result::NoDestinationLock)
        TraceNoLock(outcome.mWasHeld ? sHeldNoLock : sFreeNoLock, destination);
    if (outcome.mResult == Result::Refused)
        TraceNotMoved(outcome.mWasHeld ? sHeldNotMoved : sFreeNotMoved, kNotMoved, destination);
}

bool MoveProjectAndLockFiles(const UTF16String& source, const UTF16String& destination) {
    if (!IsVantorProjectFile(source) || !IsVantorProjectFile(destination)) return false;
    const ItemOutcome outcome = MoveItems({{source, destination}}).front();
    TraceOutcome(outcome, source, destination);
    if (outcome.mFailure) throw FileException(*outcome.mFailure);
    return outcome.mResult == ItemOutcome::Result::Done;
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

UTF16String DescribeWhyHeld(const UTF16String& path) {
    if (IsALockedProject(path)) return DescribeHeldProject(path);
    const UTF16String held =
        PathUtils::IsDirectory(path) ? FindLockedProjectInDirectory(path, true, true) : UTF16String();
    if (held.empty()) return {};
    return ZString("$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/FolderHeld=“@0” is held: @1",
                   {Columns::GetPathDisplayName(path), DescribeHeldProject(held)});
}

UTF16String DescribeWhyForeign(const UTF16String& path) {
    if (IsWithinCurrentZuProductionFolder(path)) return {};
    return ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/OtherProduction=“@0” lies in another production, and is not moved "
        "from there. Add Project brings a copy.",
        {Columns::GetPathDisplayName(path)});
}

bool IsALockedProject(const UTF16String& path) {
    const LockingPrefs prefs;
    const auto lock = ReadProjectLockFile(path, prefs.mUserName, prefs.mMachineName);
    return IsHeld(lock) && lock->GetLockOwner() != prefs.mUserName;
}

}  // namespace HandlerSharedProjects::Utils
