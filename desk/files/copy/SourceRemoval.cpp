#include "desk/files/copy/SourceRemoval.h"

#include <algorithm>
#include <cerrno>
#include <ranges>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/ParallelWork.h"

namespace desk {

namespace {

constexpr int kTries = 2;

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

/// The path of the project to which a lock file belongs; empty when the file is none.
std::string ProjectOfLock(const std::string& path) {
    const std::string name = NameOf(path);
    if (!name.starts_with('.')) return {};
    const host::UTF16String project = GetProjectNameOfLockFile(host::UTF8to16(name));
    return project.empty() ? std::string() : JoinPath<std::string>(FolderOf(path), host::UTF16to8(project));
}

}  // namespace

LeftBehind SourceRemoval::Run() {
    Items content, locks, folders;
    for (const TreeItem& file : mTree.mFiles)
        (ProjectOfLock(mTree.PathOf(file)).empty() ? content : locks).push_back(&file);
    for (const TreeItem& link : mTree.mLinks) content.push_back(&link);
    for (const TreeItem& folder : mTree.mFolders | std::views::reverse) folders.push_back(&folder);
    RemoveAll(std::move(content), false);
    std::erase_if(locks,
                  [this](const TreeItem* lock) { return mLeft.contains(ProjectOfLock(mTree.PathOf(*lock))); });
    RemoveAll(std::move(locks), false);
    RemoveAll(std::move(folders), true);
    return mFirst;
}

void SourceRemoval::RemoveAll(Items items, bool areFolders) {
    for (int tries = 1; !items.empty(); ++tries) {
        if (areFolders)
            for (const TreeItem* folder : items) Remove(*folder, true);
        else
            RunShared(items.size(), [&](std::size_t index) { Remove(*items[index], false); });
        items.clear();
        for (const Failure& failure : Judge()) {
            if (tries == kTries)
                LeaveBehind(failure, false);
            else
                items.push_back(failure.mItem);
        }
    }
}

void SourceRemoval::Remove(const TreeItem& item, bool isFolder) {
    const std::string path = mTree.PathOf(item);
    if (isFolder && IsAnyLeftBelow(path)) return;
    try {
        // The time of a folder has changed with what has been removed from it.
        if (!isFolder && !IsUnchanged(item.mStatus, Disk().Status(path, false)))
            return LeaveBehind({&item, EBUSY}, false);
        Disk().RemoveFromTree(mTree.mRoot, item.mBelow, isFolder);
        if (isFolder) ForgetDoubtsBelow(item);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
        const Failure failure{&item, exception.SystemError()};
        // What is in a folder may be doubtful itself.
        if (IsRefusal(failure.mSystemError) && failure.mSystemError != ENOTEMPTY)
            return LeaveBehind(failure, false);
        const std::lock_guard lock(mMutex);
        mDoubtful.push_back(failure);
    }
}

bool SourceRemoval::IsAnyLeftBelow(const std::string& folder) const {
    const std::string below = folder + '/';
    const auto first = mLeft.lower_bound(below);
    return first != mLeft.end() && first->starts_with(below);
}

/// A folder that could be removed was empty.
void SourceRemoval::ForgetDoubtsBelow(const TreeItem& folder) {
    const std::string path = mTree.PathOf(folder);
    std::erase_if(mDoubtful,
                  [&](const Failure& inner) { return IsSameOrBelow(mTree.PathOf(*inner.mItem), path); });
}

std::vector<SourceRemoval::Failure> SourceRemoval::Judge() {
    // Outer folders first: what was in one that is gone is gone.
    const std::vector<Failure> doubtful(mDoubtful.rbegin(), mDoubtful.rend());
    mDoubtful.clear();
    std::vector<std::string> paths, goneFolders;
    for (const Failure& failure : doubtful) paths.push_back(mTree.PathOf(*failure.mItem));
    const std::vector<Presence> found = FindPresence(Disk(), paths);
    std::vector<Failure> there;
    for (std::size_t i = 0; i < doubtful.size(); ++i) {
        const auto isAbove = [&](const std::string& folder) { return IsSameOrBelow(paths[i], folder); };
        if (std::ranges::any_of(goneFolders, isAbove)) continue;
        if (found[i] == Presence::NotTold) LeaveBehind(doubtful[i], true);
        if (found[i] == Presence::There) there.push_back(doubtful[i]);
        if (found[i] == Presence::Gone && doubtful[i].mItem->mStatus.mKind == ItemKind::Folder)
            goneFolders.push_back(paths[i]);
    }
    std::ranges::reverse(there);
    return there;
}

void SourceRemoval::LeaveBehind(const Failure& failure, bool isInDoubt) {
    const std::lock_guard lock(mMutex);
    const std::string path = mTree.PathOf(*failure.mItem);
    Log(LogLevel::Info, "left behind by its move: " + path);
    mLeft.insert(path);
    if (mFirst.mPath.empty()) mFirst = {path, isInDoubt, failure.mSystemError};
}

}  // namespace desk
