#include "tests/support/FaultyFileSystem.h"

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

FaultyFileSystem::FaultyFileSystem() : mBefore(desk::GetServices().mFileSystem) {
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

void FaultyFileSystem::LoseReply(const std::string& path, int error) {
    if (error != 0) desk::ThrowFileException("(lost reply) use", path, error);
}

void FaultyFileSystem::PassGate(std::unique_lock<std::mutex>& lock, Operation operation,
                                const std::string& path) {
    const auto isMeant = [&](Operation meant) { return meant == operation || meant == Operation::Any; };
    const auto isClosed = [&] {
        return mGate && isMeant(mGate->mOperation) && IsAtOrBelow(path, mGate->mPath);
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
    auto entries = Do(Operation::ListFolder, path, [&] { return Disk::ListFolder(path); });
    std::lock_guard lock(mMutex);
    if (mHidesKinds)
        for (desk::FolderEntry& entry : entries) entry.mKind = desk::ItemKind::Unknown;
    return entries;
}

void FaultyFileSystem::RenameNew(const std::string& from, const std::string& to) {
    Do(Operation::RenameNew, from, [&] {
        if (mAreManyVolumes && FolderOf(from) != FolderOf(to)) desk::ThrowFileException("rename", from, EXDEV);
        Disk::RenameNew(from, to);
    });
}

long FaultyFileSystem::VolumeType(const std::string& path) {
    return Do(Operation::VolumeType, path, [&] {
        std::lock_guard lock(mMutex);
        return mVolumeType ? *mVolumeType : Disk::VolumeType(path);
    });
}
