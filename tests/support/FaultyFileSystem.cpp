#include "tests/support/FaultyFileSystem.h"

#include <algorithm>
#include <type_traits>

#include "desk/core/Services.h"
#include "desk/files/PosixErrors.h"

namespace {

bool IsAtOrBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

}  // namespace

FaultyFileSystem::FaultyFileSystem() : ForwardingFileSystem(mDisk), mBefore(desk::GetServices().mFileSystem) {
    desk::GetServices().mFileSystem = this;
}

FaultyFileSystem::~FaultyFileSystem() {
    OpenGate();
    desk::GetServices().mFileSystem = mBefore;
}

void FaultyFileSystem::Fail(Operation operation, int nth, int error) {
    std::lock_guard lock(mMutex);
    mFaults[operation][mCounts[operation] + nth] = error;
}

void FaultyFileSystem::FailAfter(Operation operation, int nth, int error) {
    std::lock_guard lock(mMutex);
    mLostReplies[operation][mCounts[operation] + nth] = error;
}

void FaultyFileSystem::Deny(const std::string& path, int error) {
    std::lock_guard lock(mMutex);
    mDenied[path] = error;
}

void FaultyFileSystem::Allow(const std::string& path) {
    std::lock_guard lock(mMutex);
    mDenied.erase(path);
}

void FaultyFileSystem::SetGone(bool isGone) {
    std::lock_guard lock(mMutex);
    mIsGone = isGone;
}

void FaultyFileSystem::SetHasLinks(bool hasLinks) {
    std::lock_guard lock(mMutex);
    mHasLinks = hasLinks;
}

void FaultyFileSystem::SetVolumes(bool areMany) {
    mAreManyVolumes = areMany;
}

void FaultyFileSystem::SkipFlushes() {
    mAreFlushesSkipped = true;
}

void FaultyFileSystem::SetVolumeType(long type) {
    std::lock_guard lock(mMutex);
    mVolumeType = type;
}

void FaultyFileSystem::HideKinds(bool isHidden) {
    std::lock_guard lock(mMutex);
    mHidesKinds = isHidden;
}

void FaultyFileSystem::Slow(std::chrono::microseconds delay) {
    std::lock_guard lock(mMutex);
    mDelay = delay;
}

void FaultyFileSystem::CloseGate(Operation operation, const std::string& path) {
    std::lock_guard lock(mMutex);
    mGate = Gate{operation, path};
}

bool FaultyFileSystem::WaitAtGate() {
    std::unique_lock lock(mMutex);
    return mGateChanged.wait_for(lock, std::chrono::seconds(20), [this] { return mWaiting > 0; });
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

int FaultyFileSystem::CountOnUIThread() const {
    std::lock_guard lock(mMutex);
    return mCountOnUIThread;
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
    const auto delay = mDelay;
    lock.unlock();
    if (delay.count() > 0) std::this_thread::sleep_for(delay);
    if (error != 0) desk::ThrowFileException("(faulty) use", path, error);
    return lostReply;
}

template <class Call>
auto FaultyFileSystem::Do(Operation operation, const std::string& path, Call call) {
    const int lostReply = Enter(operation, path);
    const auto answer = [&] {
        if (lostReply != 0) desk::ThrowFileException("(lost reply) use", path, lostReply);
    };
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
        answer();
    } else {
        auto result = call();
        answer();
        return result;
    }
}

void FaultyFileSystem::PassGate(std::unique_lock<std::mutex>& lock, Operation operation,
                                const std::string& path) {
    auto isClosed = [&] { return mGate && mGate->mOperation == operation && IsAtOrBelow(path, mGate->mPath); };
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
        if (IsAtOrBelow(path, denied)) return error;
    if (operation == Operation::Link && !mHasLinks) return EPERM;
    return TakeFault(mFaults, operation);
}

int FaultyFileSystem::TakeFault(Faults& faults, Operation operation) {
    for (const Operation kind : {operation, Operation::Any})
        if (const auto fault = faults[kind].extract(mCounts[kind])) return fault.mapped();
    return 0;
}

std::vector<desk::FolderEntry> FaultyFileSystem::ListFolder(const std::string& path) {
    auto entries = Do(Operation::ListFolder, path, [&] { return mDisk.ListFolder(path); });
    std::lock_guard lock(mMutex);
    if (mHidesKinds)
        for (desk::FolderEntry& entry : entries) entry.mKind = desk::ItemKind::Unknown;
    return entries;
}

void FaultyFileSystem::TryFolder(const std::string& path) {
    Do(Operation::TryFolder, path, [&] { mDisk.TryFolder(path); });
}

desk::ItemStatus FaultyFileSystem::Status(const std::string& path, bool followLink) {
    return Do(Operation::Status, path, [&] { return mDisk.Status(path, followLink); });
}

std::string FaultyFileSystem::ReadSmallFile(const std::string& path, std::size_t limit) {
    return Do(Operation::ReadSmallFile, path, [&] { return mDisk.ReadSmallFile(path, limit); });
}

void FaultyFileSystem::ReplaceFile(const std::string& path, const std::string& bytes) {
    Do(Operation::ReplaceFile, path, [&] { mDisk.ReplaceFile(path, bytes); });
}

void FaultyFileSystem::AppendToFile(const std::string& path, const std::string& bytes) {
    Do(Operation::AppendToFile, path, [&] { mDisk.AppendToFile(path, bytes); });
}

void FaultyFileSystem::CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) {
    Do(Operation::CreateNewFile, path, [&] { mDisk.CreateNewFile(path, bytes, mode); });
}

void FaultyFileSystem::Link(const std::string& from, const std::string& to) {
    Do(Operation::Link, from, [&] { mDisk.Link(from, to); });
}

void FaultyFileSystem::RemoveFile(const std::string& path) {
    Do(Operation::RemoveFile, path, [&] { mDisk.RemoveFile(path); });
}

void FaultyFileSystem::CreateFolder(const std::string& path, unsigned mode) {
    Do(Operation::CreateFolder, path, [&] { mDisk.CreateFolder(path, mode); });
}

void FaultyFileSystem::RenameNew(const std::string& from, const std::string& to) {
    Do(Operation::RenameNew, from, [&] {
        if (mAreManyVolumes && FolderOf(from) != FolderOf(to)) desk::ThrowFileException("rename", from, EXDEV);
        mDisk.RenameNew(from, to);
    });
}

desk::ItemStatus FaultyFileSystem::CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                                            const desk::CopyStep& step) {
    return Do(Operation::CopyFile, from,
              [&] { return mDisk.CopyFile(from, to, isFlushed && !mAreFlushesSkipped, step); });
}

void FaultyFileSystem::CopyLink(const std::string& from, const std::string& to) {
    Do(Operation::CopyLink, from, [&] { mDisk.CopyLink(from, to); });
}

void FaultyFileSystem::CopyFolderAttributes(const std::string& from, const std::string& to) {
    Do(Operation::CopyFolderAttributes, from, [&] { mDisk.CopyFolderAttributes(from, to); });
}

void FaultyFileSystem::RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) {
    Do(Operation::RemoveFromTree, below.empty() ? root : root + '/' + below,
       [&] { mDisk.RemoveFromTree(root, below, isFolder); });
}

void FaultyFileSystem::TryToChangeFolder(const std::string& path) {
    Do(Operation::TryToChangeFolder, path, [&] { mDisk.TryToChangeFolder(path); });
}

void FaultyFileSystem::MakeFolderChangeable(const std::string& path) {
    Do(Operation::MakeFolderChangeable, path, [&] { mDisk.MakeFolderChangeable(path); });
}

void FaultyFileSystem::FlushFolder(const std::string& path) {
    Do(Operation::FlushFolder, path, [&] {
        if (!mAreFlushesSkipped) mDisk.FlushFolder(path);
    });
}

void FaultyFileSystem::FlushVolume(const std::string& path) {
    Do(Operation::FlushVolume, path, [&] {
        if (!mAreFlushesSkipped) mDisk.FlushVolume(path);
    });
}

std::string FaultyFileSystem::ResolveLinks(const std::string& path) {
    return Do(Operation::ResolveLinks, path, [&] { return mDisk.ResolveLinks(path); });
}

long FaultyFileSystem::VolumeType(const std::string& path) {
    return Do(Operation::VolumeType, path, [&] {
        std::lock_guard lock(mMutex);
        return mVolumeType ? *mVolumeType : mDisk.VolumeType(path);
    });
}
