#include "desk/files/copy/PartFile.h"

#include <algorithm>
#include <cerrno>
#include <ranges>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// Files from this size on are copied one after the other: a disk that turns reads several at once slowly.
constexpr std::uint64_t kLargeFile = 8 * 1024 * 1024;
/// So many files are flushed one by one; more, with their volume.
constexpr std::size_t kFewFiles = 8;
/// How often a file is copied that changes meanwhile, and how often a part is tried to remove.
constexpr int kTries = 3;

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

}  // namespace

PartFile::PartFile(const std::string& destination)
    : mDestination(destination), mPath(JoinPath<std::string>(FolderOf(destination), MakeTemporaryName())) {
    ThrowIfTaken(Disk(), "copy to", destination);
}

PartFile::~PartFile() {
    if (mState == State::Begun || (mState == State::PublishedPerhaps && !mIsFolder)) Remove();
    if (mState == State::PublishedPerhaps && mIsFolder)
        Log(LogLevel::Warning, "not removed, since it may be what was published: " + mPath);
}

std::string PartFile::PathOf(const TreeItem& item) const {
    return item.mBelow.empty() ? mPath : JoinPath<std::string>(mPath, item.mBelow);
}

void PartFile::Copy(ItemTree& tree, WorkProgress& progress) {
    mProgress = &progress;
    mState = State::Begun;
    mIsFolder = tree.IsFolder();
    try {
        CopyAll(tree);
    } catch (const host::FileException& exception) {
        mMayBeUnseen = exception.SystemError() != ENOENT && !IsRefusal(exception.SystemError());
        throw;
    }
    progress.ThrowIfCancelled("copy", tree.mRoot);
}

void PartFile::CopyAll(ItemTree& tree) {
    const bool isFlushedEach = ShouldFlushEach(tree);
    CopyFolders(tree);
    CopyFiles(tree, isFlushedEach);
    RunShared(tree.mLinks.size(), [&](std::size_t index) {
        Disk().CopyLink(tree.PathOf(tree.mLinks[index]), PathOf(tree.mLinks[index]));
    });
    FinishFolders(tree, isFlushedEach);
    if (!isFlushedEach) Disk().FlushVolume(mPath);
}

/// What the system holds back of a volume of another machine, its flush of volumes need not reach.
bool PartFile::ShouldFlushEach(const ItemTree& tree) const {
    return !tree.IsFolder() || tree.mFiles.size() <= kFewFiles ||
           !DoesVolumeReportChanges(Disk().VolumeType(FolderOf(mDestination)));
}

void PartFile::CopyFolders(const ItemTree& tree) {
    // For the owner alone as long as it is made.
    for (const TreeItem& folder : tree.mFolders) {
        mProgress->ThrowIfCancelled("copy", tree.mRoot);
        Disk().CreateFolder(PathOf(folder), 0700);
    }
}

void PartFile::CopyFiles(ItemTree& tree, bool isFlushed) {
    const auto large = std::ranges::stable_partition(
        tree.mFiles, [](const TreeItem& file) { return file.mStatus.mSize < kLargeFile; });
    RunShared(tree.mFiles.size() - large.size(),
              [&](std::size_t index) { CopyFile(tree, tree.mFiles[index], isFlushed); });
    for (TreeItem& file : large) CopyFile(tree, file, isFlushed);
}

void PartFile::CopyFile(const ItemTree& tree, TreeItem& file, bool isFlushed) {
    const std::string from = tree.PathOf(file);
    mProgress->ThrowIfCancelled("copy", from);
    mProgress->SetItem(host::UTF8to16(NameOf(from)));
    for (int tries = 1;; ++tries) {
        std::uint64_t done = 0;
        try {
            file.mStatus = Disk().CopyFile(from, PathOf(file), isFlushed, [&](std::uint64_t bytes) {
                mProgress->AddDone(bytes);
                done += bytes;
                return !mProgress->IsCancelled();
            });
            return;
        } catch (const host::FileException& exception) {
            mProgress->AddDone(0 - done);
            if (exception.SystemError() != EBUSY || tries == kTries) throw;
        }
    }
}

void PartFile::FinishFolders(const ItemTree& tree, bool isFlushed) {
    for (const TreeItem& folder : tree.mFolders | std::views::reverse) {
        Disk().CopyFolderAttributes(tree.PathOf(folder), PathOf(folder));
        if (isFlushed) Disk().FlushFolder(PathOf(folder));
    }
}

VolumeMove PartFile::Publish() {
    mState = State::PublishedPerhaps;
    try {
        const VolumeMove move = MoveOnVolume(mPath, mDestination);
        mState = State::Published;
        if (move.mOldPlace != Presence::Gone)
            Log(LogLevel::Warning, "the hidden name of what was copied may not have been removed: " + mPath);
        return move;
    } catch (const MoveInDoubt&) {
        throw;
    } catch (const host::FileException&) {
        mState = State::Begun;
        throw;
    }
}

void PartFile::Remove() noexcept {
    // A volume that has just failed may fail again.
    for (int tries = 1; tries <= kTries; ++tries) {
        try {
            return RemoveTree(mPath);
        } catch (const host::FileException& exception) {
            const bool isAbsent = exception.SystemError() == ENOENT;
            if (isAbsent && (!mMayBeUnseen || FindPresence(Disk(), mPath) == Presence::Gone)) return;
            if (tries == kTries)
                Log(LogLevel::Warning, std::string("what was begun could not be removed: ") + exception.what());
        }
    }
}

}  // namespace desk
