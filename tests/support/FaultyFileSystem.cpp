#include "tests/support/FaultyFileSystem.h"

#include <algorithm>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"

namespace {

using desk::FolderOf;
using desk::IsSameOrBelow;
using desk::NameOf;

bool IsSame(const std::optional<desk::ItemStatus>& a, const std::optional<desk::ItemStatus>& b) {
    if (!a || !b) return !a && !b;
    return a->mKind == b->mKind && a->mSize == b->mSize && a->mModified == b->mModified;
}

bool IsRename(FaultyFileSystem::Operation operation) {
    return operation == FaultyFileSystem::Operation::RenameNoReplace ||
           operation == FaultyFileSystem::Operation::Rename;
}

bool IsChange(FaultyFileSystem::Operation operation) {
    using enum FaultyFileSystem::Operation;
    constexpr FaultyFileSystem::Operation kChanges[] = {CreateNewFile,   Link,   RemoveFile, CreateFolder,
                                                        RenameNoReplace, Rename, CopyFile,   CopyLink,
                                                        RemoveFromTree};
    return std::ranges::find(kChanges, operation) != std::end(kChanges);
}

}  // namespace

FaultyFileSystem::FaultyFileSystem() : mBefore(desk::GetServices().mFileSystem) {
    desk::GetServices().mFileSystem = this;
}

FaultyFileSystem::~FaultyFileSystem() {
    OpenGate();
    desk::GetServices().mFileSystem = mBefore;
}

bool FaultyFileSystem::WaitAtGate(int calls) {
    std::unique_lock lock(mMutex);
    return mGateChanged.wait_for(lock, std::chrono::seconds(20), [&] { return mWaiting >= calls; });
}

void FaultyFileSystem::OpenGate() {
    std::unique_lock lock(mMutex);
    mGate.reset();
    mGateChanged.notify_all();
    mGateChanged.wait(lock, [this] { return mWaiting == 0; });
}

int FaultyFileSystem::Count(Operation operation) const {
    std::lock_guard lock(mMutex);
    auto found = mCounts.find(operation);
    return found == mCounts.end() ? 0 : found->second;
}

void FaultyFileSystem::ResetCounts() {
    std::lock_guard lock(mMutex);
    for (Faults* faults : {&mFaults, &mLostReplies}) {
        Faults moved;
        for (const auto& [operation, byCall] : *faults)
            for (const auto& [call, error] : byCall) moved[operation][call - mCounts[operation]] = error;
        *faults = std::move(moved);
    }
    mCounts.clear();
    mCountOnUIThread = 0;
}

/// Counts the call, waits as long as it is to take, and fails if it is to fail. Returns the error with which it
/// is to fail once it is done, or 0.
int FaultyFileSystem::Enter(Operation operation, const std::string& path) {
    std::unique_lock lock(mMutex);
    ++mCounts[operation];
    ++mCounts[Operation::Any];
    mCountOnUIThread += std::this_thread::get_id() == mUIThread;
    const int error = FindFault(operation, path);
    const int lostReply = error == 0 ? TakeFault(mLostReplies, operation) : 0;
    PassGate(lock, operation, path);
    lock.unlock();
    std::this_thread::sleep_for(mDelay.load());
    if (error != 0) desk::ThrowFileException("(faulty) use", path, error);
    return lostReply;
}

FaultyFileSystem::Memory FaultyFileSystem::LookAtDisk(const std::string& path) {
    Memory memory;
    try {
        const std::string place = Named(path);
        memory.mStatus = Disk::Status(place, false);
        memory.mContent = Disk::ReadSmallFile(place, 1 << 20);
    } catch (const host::FileException&) {
        // Nothing is there, or no file.
    }
    return memory;
}

/// What the system knows of a call's names before it.
FaultyFileSystem::Memories FaultyFileSystem::Remember(const std::string& from, const std::string& to) {
    Memories memories;
    for (const std::string& path : {from, to})
        if (!path.empty()) memories[path] = Recall(path).value_or(LookAtDisk(path));
    return memories;
}

/// After a call that was carried out.
void FaultyFileSystem::End(Operation operation, const std::string& from, const std::string& to,
                           const Memories& before, int lostReply) {
    if (lostReply == 0) {
        std::lock_guard lock(mMutex);
        if (IsChange(operation)) mMemories.erase(from), mMemories.erase(to);
        return;
    }
    for (const auto& [path, memory] : before) {
        if (IsSame(memory.mStatus, LookAtDisk(path).mStatus)) continue;
        const bool isRenamedFolder =
            IsRename(operation) && path == from && memory.mStatus->mKind == desk::ItemKind::Folder;
        const std::string place = isRenamedFolder ? Named(to) : std::string();
        std::lock_guard lock(mMutex);
        mMemories[path] = memory;
        if (isRenamedFolder) mRenamed[path] = place;
    }
    desk::ThrowFileException("(lost reply) use", from, lostReply);
}

std::optional<FaultyFileSystem::Memory> FaultyFileSystem::Recall(const std::string& path) const {
    std::lock_guard lock(mMutex);
    const auto found = mMemories.find(path);
    return found == mMemories.end() ? std::nullopt : std::optional(found->second);
}

void FaultyFileSystem::ThrowIfRefused(const std::string& path) const {
    std::lock_guard lock(mMutex);
    if (mLies != Lies::Refusals) return;
    for (const auto& [remembered, memory] : mMemories)
        if (remembered == path || FolderOf(remembered) == path)
            desk::ThrowFileException("(refused) look at", path, EIO);
}

std::string FaultyFileSystem::Now(const std::string& path) const {
    std::lock_guard lock(mMutex);
    for (const auto& [absent, memory] : mMemories)
        if (!memory.mStatus && IsSameOrBelow(path, absent))
            desk::ThrowFileException("(remembered) use", path, ENOENT);
    for (const auto& [from, to] : mRenamed)
        if (IsSameOrBelow(path, from)) return to + path.substr(from.size());
    return path;
}

std::string FaultyFileSystem::Named(const std::string& path) const {
    return Now(FolderOf(path)) + '/' + NameOf(path);
}

std::string FaultyFileSystem::There(const std::string& path) const {
    const auto known = Recall(path);
    if (known && !known->mStatus) desk::ThrowFileException("(remembered) use", path, ENOENT);
    return Named(path);
}

std::string FaultyFileSystem::Free(const std::string& path) const {
    const auto known = Recall(path);
    if (known && known->mStatus) desk::ThrowFileException("(remembered) make", path, EEXIST);
    return Named(path);
}

void FaultyFileSystem::PassGate(std::unique_lock<std::mutex>& lock, Operation operation,
                                const std::string& path) {
    const auto isMeant = [&](Operation meant) { return meant == operation || meant == Operation::Any; };
    const auto isClosed = [&] {
        return mGate && isMeant(mGate->mOperation) && IsSameOrBelow(path, mGate->mPath);
    };
    if (!isClosed()) return;
    ++mWaiting;
    mGateChanged.notify_all();
    mGateChanged.wait(lock, [&] { return !isClosed(); });
    --mWaiting;
    mGateChanged.notify_all();
}

int FaultyFileSystem::FindFault(Operation operation, const std::string& path) {
    if (mIsGone) return ESTALE;
    for (const auto& [denied, error] : mDenied)
        if (IsSameOrBelow(path, denied)) return error;
    if (operation == Operation::Link && !mHasLinks) return EPERM;
    return TakeFault(mFaults, operation);
}

int FaultyFileSystem::TakeFault(Faults& faults, Operation operation) {
    for (const Operation kind : {operation, Operation::Any})
        if (const auto fault = faults[kind].extract(mCounts[kind])) return fault.mapped();
    return 0;
}

std::vector<desk::FolderEntry> FaultyFileSystem::ListFolder(const std::string& path) {
    auto entries = Do(Operation::ListFolder, path, [&] {
        ThrowIfRefused(path);
        return Disk::ListFolder(Now(path));
    });
    std::lock_guard lock(mMutex);
    if (mHidesKinds)
        for (desk::FolderEntry& entry : entries) entry.mKind = desk::ItemKind::Unknown;
    if (mLies != Lies::Listings) return entries;
    for (const auto& [remembered, memory] : mMemories) {
        if (FolderOf(remembered) != path) continue;
        std::erase_if(entries, [&](const auto& entry) { return entry.mName == NameOf(remembered); });
        if (memory.mStatus) entries.push_back({NameOf(remembered), memory.mStatus->mKind});
    }
    return entries;
}

desk::ItemStatus FaultyFileSystem::Status(const std::string& path, bool followLink) {
    return Do(Operation::Status, path, [&] {
        ThrowIfRefused(path);
        const auto known = Recall(path);
        if (known && known->mStatus) return *known->mStatus;
        return Disk::Status(Now(path), followLink);
    });
}

std::string FaultyFileSystem::ReadSmallFile(const std::string& path, std::size_t limit) {
    return Do(Operation::ReadSmallFile, path, [&] {
        ThrowIfRefused(path);
        const auto known = Recall(path);
        if (known && known->mContent && known->mContent->size() <= limit) return *known->mContent;
        return Disk::ReadSmallFile(Now(path), limit);
    });
}

void FaultyFileSystem::RenameNoReplace(const std::string& from, const std::string& to) {
    Do(Operation::RenameNoReplace, from, to, [&] {
        if (mAreManyVolumes && FolderOf(from) != FolderOf(to)) desk::ThrowFileException("rename", from, EXDEV);
        if (!mHasRenameFlags) desk::ThrowFileException("rename", from, EINVAL);
        Disk::RenameNoReplace(There(from), Free(to));
    });
}
