#pragma once

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>

#include "desk/core/durable/CacheWaits.h"
#include "desk/files/disk/PosixFileSystem.h"

/// The real file system with switches for faults. It is the process's file system (`desk::GetServices`) while
/// it exists. Any thread.
class FaultyFileSystem : public desk::PosixFileSystem {
public:
    enum class Operation {
        ListFolder,
        TryFolder,
        Status,
        ReadSmallFile,
        AppendToFile,
        CreateNewFile,
        Link,
        RemoveFile,
        CreateFolder,
        RenameNoReplace,
        Rename,
        CopyFile,
        CopyLink,
        CopyFolderAttributes,
        RemoveFromTree,
        TryToChangeFolder,
        MakeFolderChangeable,
        FlushFolder,
        FlushVolume,
        ResolveLinks,
        VolumeType,
        /// Whichever comes.
        Any
    };

    /// What looks answer after a call whose reply was lost, until `WaitForCaches`: clients of network volumes
    /// keep names for seconds, and a call that fails does not make them forget.
    enum class Lies {
        None,
        /// By the names that the call was given: what was true before, and calls are refused by it; below a
        /// folder that was renamed, all calls meet its content where it stands now. Listings tell the truth.
        Names,
        /// Likewise, and `WaitForCaches` cannot outwait it: it says so, or it does not know either.
        NamesForLong,
        NamesForLongUnknown,
        /// Listings too.
        Listings,
        /// Looks fail with EIO.
        Refusals
    };

    FaultyFileSystem();
    ~FaultyFileSystem() override;

    /// The `nth` call of `operation` from now (1: the next one) fails with `error`, once.
    void Fail(Operation operation, int nth, int error) {
        Locked([&] { mFaults[operation][mCounts[operation] + nth] = error; });
    }
    /// Likewise, once the operation has been carried out: its reply is lost.
    void FailAfter(Operation operation, int nth, int error) {
        Locked([&] { mLostReplies[operation][mCounts[operation] + nth] = error; });
    }
    /// What has not failed yet does not.
    void ForgetFaults() {
        Locked([&] { mFaults.clear(), mLostReplies.clear(); });
    }
    /// Everything at and below `path` fails, until `Allow` of the same path.
    void Deny(const std::string& path, int error = EACCES) {
        Locked([&] { mDenied[path] = error; });
    }
    void Allow(const std::string& path) {
        Locked([&] { mDenied.erase(path); });
    }
    /// The volume is gone (ESTALE for everything), or back.
    void SetGone(bool isGone) { mIsGone = isGone; }
    /// Links fail with EPERM, as on volumes that have none.
    void SetHasLinks(bool hasLinks) { mHasLinks = hasLinks; }
    void SetLies(Lies lies) { mLies = lies; }
    /// The caches have run out.
    void ForgetLies() {
        Locked([&] { mMemories.clear(), mRenamed.clear(); });
    }
    /// `WaitForCaches` really waits, as for a mount that caches; else it takes no time.
    void WaitReally() { mWaitsReally = true; }
    /// `RenameNoReplace` fails with EINVAL, as on volumes that do not know it.
    void SetHasRenameFlags(bool hasRenameFlags) { mHasRenameFlags = hasRenameFlags; }
    /// Every folder is a volume of its own: `RenameNoReplace` of anything to another folder fails with EXDEV.
    void SetVolumes(bool areMany) { mAreManyVolumes = areMany; }
    /// Copies and folders are not really flushed: for tests of what comes of each step, which flush much.
    void SkipFlushes() { mAreFlushesSkipped = true; }
    /// Volumes tell this type (statfs(2) f_type) from now on.
    void SetVolumeType(long type) { mVolumeType = type; }
    /// The kinds of folder entries are not told, as on some volumes.
    void HideKinds(bool isHidden) { mHidesKinds = isHidden; }
    /// Every operation really takes this much longer. For benchmarks; tests use the gate.
    void Slow(std::chrono::microseconds delay) { mDelay = delay; }

    /// Calls of `operation` at and below `path` stop at the gate until `OpenGate`.
    void CloseGate(Operation operation, const std::string& path) {
        Locked([&] { mGate = Gate{operation, path}; });
    }
    /// Waits until so many calls stand at the closed gate; false when they have not come within 20 s.
    bool WaitAtGate(int calls = 1);
    void OpenGate();

    /// Calls of `operation` since the beginning or the last `ResetCounts`, those that failed too.
    int Count(Operation operation) const;
    /// Those of the thread that made this: the UI thread.
    int CountOnUIThread() const { return mCountOnUIThread; }
    void ResetCounts();

    std::vector<desk::FolderEntry> ListFolder(const std::string& path) override;
    void TryFolder(const std::string& path) override {
        Do(Operation::TryFolder, path, [&] { Disk::TryFolder(Now(path)); });
    }
    desk::ItemStatus Status(const std::string& path, bool followLink) override;
    std::string ReadSmallFile(const std::string& path, std::size_t limit) override;
    void AppendToFile(const std::string& path, const std::string& bytes) override {
        Do(Operation::AppendToFile, path, [&] { Disk::AppendToFile(Named(path), bytes); });
    }
    void CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        Do(Operation::CreateNewFile, path, [&] { Disk::CreateNewFile(Free(path), bytes, mode); });
    }
    void Link(const std::string& from, const std::string& to) override {
        Do(Operation::Link, from, to, [&] { Disk::Link(There(from), Free(to)); });
    }
    void RemoveFile(const std::string& path) override {
        Do(Operation::RemoveFile, path, [&] { Disk::RemoveFile(There(path)); });
    }
    void CreateFolder(const std::string& path, unsigned mode) override {
        Do(Operation::CreateFolder, path, [&] { Disk::CreateFolder(Free(path), mode); });
    }
    void RenameNoReplace(const std::string& from, const std::string& to) override;
    void Rename(const std::string& from, const std::string& to) override {
        Do(Operation::Rename, from, to, [&] { Disk::Rename(There(from), Named(to)); });
    }
    desk::ItemStatus CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                              const desk::CopyStep& step) override {
        const bool isReally = isFlushed && !mAreFlushesSkipped;
        return Do(Operation::CopyFile, from, to,
                  [&] { return Disk::CopyFile(There(from), Free(to), isReally, step); });
    }
    void CopyLink(const std::string& from, const std::string& to) override {
        Do(Operation::CopyLink, from, to, [&] { Disk::CopyLink(There(from), Free(to)); });
    }
    void CopyFolderAttributes(const std::string& from, const std::string& to) override {
        Do(Operation::CopyFolderAttributes, from, [&] { Disk::CopyFolderAttributes(Now(from), Now(to)); });
    }
    void RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) override {
        const std::string path = below.empty() ? root : root + '/' + below;
        Do(Operation::RemoveFromTree, path, [&] {
            const std::string place = There(path);
            Disk::RemoveFromTree(below.empty() ? place : Now(root), below, isFolder);
        });
    }
    void TryToChangeFolder(const std::string& path) override {
        Do(Operation::TryToChangeFolder, path, [&] { Disk::TryToChangeFolder(Now(path)); });
    }
    void MakeFolderChangeable(const std::string& path) override {
        Do(Operation::MakeFolderChangeable, path, [&] { Disk::MakeFolderChangeable(Now(path)); });
    }
    void FlushFolder(const std::string& path) override {
        Do(Operation::FlushFolder, path, [&] { mAreFlushesSkipped ? void() : Disk::FlushFolder(Now(path)); });
    }
    void FlushVolume(const std::string& path) override {
        Do(Operation::FlushVolume, path, [&] { mAreFlushesSkipped ? void() : Disk::FlushVolume(Now(path)); });
    }
    std::string ResolveLinks(const std::string& path) override {
        return Do(Operation::ResolveLinks, path, [&] { return Disk::ResolveLinks(path); });
    }
    long VolumeType(const std::string& path) override {
        return Do(Operation::VolumeType, path,
                  [&] { return mVolumeType != 0 ? mVolumeType.load() : Disk::VolumeType(path); });
    }
    bool WaitForCaches(const std::string& path) noexcept override {
        if (mLies == Lies::NamesForLong || (mLies != Lies::None && desk::ScNoCacheWaits::AreOff()))
            return false;
        if (mLies != Lies::NamesForLongUnknown) ForgetLies();
        return !mWaitsReally || Disk::WaitForCaches(path);
    }

private:
    using Disk = desk::PosixFileSystem;
    struct Gate {
        Operation mOperation;
        std::string mPath;
    };

    /// By operation and the number of its call.
    using Faults = std::map<Operation, std::map<int, int>>;

    /// What a name stood for; nothing, when there is no status.
    struct Memory {
        std::optional<desk::ItemStatus> mStatus;
        std::optional<std::string> mContent;
    };
    using Memories = std::map<std::string, Memory>;

    template <class Change>
    void Locked(Change change) {
        const std::lock_guard lock(mMutex);
        change();
    }
    int Enter(Operation operation, const std::string& path);
    /// Calls on one name, or from one to another.
    template <class Call>
    std::invoke_result_t<Call> Do(Operation operation, const std::string& path, Call call) {
        return Do(operation, path, {}, call);
    }
    template <class Call>
    std::invoke_result_t<Call> Do(Operation operation, const std::string& from, const std::string& to,
                                  Call call) {
        const int lostReply = Enter(operation, from);
        const bool mayLie = lostReply != 0 && mLies != Lies::None;
        const Memories before = mayLie ? Remember(from, to) : Memories();
        if constexpr (std::is_void_v<std::invoke_result_t<Call>>) {
            call();
            End(operation, from, to, before, lostReply);
        } else {
            auto result = call();
            End(operation, from, to, before, lostReply);
            return result;
        }
    }
    void End(Operation operation, const std::string& from, const std::string& to, const Memories& before,
             int lostReply);
    Memory LookAtDisk(const std::string& path);
    Memories Remember(const std::string& from, const std::string& to);
    std::optional<Memory> Recall(const std::string& path) const;
    void ThrowIfRefused(const std::string& path) const;
    /// Where the system finds the folder, or what is in it, that it knows by this name: a folder that was
    /// renamed, at its new place.
    std::string Now(const std::string& path) const;
    /// The same for a call on the name itself, which needs it to be there, or to be free, as far as is known.
    std::string Named(const std::string& path) const;
    std::string There(const std::string& path) const;
    std::string Free(const std::string& path) const;
    void PassGate(std::unique_lock<std::mutex>& lock, Operation operation, const std::string& path);
    int FindFault(Operation operation, const std::string& path);
    int TakeFault(Faults& faults, Operation operation);

    desk::FileSystem* mBefore;
    mutable std::mutex mMutex;
    std::condition_variable mGateChanged;
    std::optional<Gate> mGate;
    int mWaiting = 0;
    std::map<Operation, int> mCounts;
    const std::thread::id mUIThread = std::this_thread::get_id();
    std::atomic<int> mCountOnUIThread = 0;
    Faults mFaults;
    Faults mLostReplies;
    std::map<std::string, int> mDenied;
    std::atomic<Lies> mLies = Lies::None;
    Memories mMemories;
    /// Folders that were renamed, by their old names.
    std::map<std::string, std::string> mRenamed;
    std::atomic<bool> mIsGone = false, mHasLinks = true, mHasRenameFlags = true;
    std::atomic<bool> mAreManyVolumes = false, mAreFlushesSkipped = false, mWaitsReally = false;
    std::atomic<bool> mHidesKinds = false;
    /// 0 is the real one.
    std::atomic<long> mVolumeType = 0;
    std::atomic<std::chrono::microseconds> mDelay{};
};
