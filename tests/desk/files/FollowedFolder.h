#pragma once

#include "desk/files/live/ChangeCollector.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/WatchStatus.h"
#include "desk/project/lock/Leftovers.h"
#include "host/core/Messaging.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "tests/support/FakeChangeSource.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

/// A folder store on a temporary folder, and one who listens to it as a view does.
class FollowedFolder : public HostFixture, public host::Listener {
protected:
    using Extent = host::ContentDelivery::Extent;

    FollowedFolder() {
        host::AddListener(host::kStation_DirectoryChanges, this);
        host::AddListener(desk::kStation_WatchStatus, this);
    }
    ~FollowedFolder() override {
        host::RemoveListener(desk::kStation_WatchStatus, this);
        host::RemoveListener(host::kStation_DirectoryChanges, this);
        desk::GetServices().mFolderStore = mStoreBefore;
        mStore.reset();
        mMain.RunUntilIdle();
    }

    /// Makes the store: on inotify, or on a source that the test speaks for.
    void UseInotify() { Use(nullptr); }
    void UseFakeSource() {
        auto source = std::make_unique<FakeChangeSource>();
        mSource = source.get();
        Use(std::move(source));
    }

    // What the view does.

    std::string OnDisk(const std::string& folder) const {
        return folder.empty() ? mFolder.Path() : mFolder.Path(folder);
    }
    host::UTF16String Path(const std::string& name) const { return host::UTF8to16(OnDisk(name)); }
    /// Lists a folder ("" is the root) and waits.
    void List(const std::string& folder = {}) {
        mStore->RequestListing(Path(folder), Receiver(folder), this);
        mMain.RunUntilIdle();
    }
    void Monitor(const std::string& folder = {}) {
        host::DirectoryChangeMonitor::MonitorDirectory(Path(folder), true, true);
    }
    void StopMonitoring(const std::string& folder = {}) {
        host::DirectoryChangeMonitor::StopMonitoringDirectory(Path(folder), true);
    }
    /// Monitors the folder, and lists it and others.
    void Follow(std::initializer_list<const char*> others = {}) {
        Monitor();
        List();
        for (const char* folder : others) List(folder);
    }
    desk::FolderStore::Receiver Receiver(const std::string& folder) {
        return [this, folder](const desk::FolderStore::Delivery& delivery) { Take(folder, delivery); };
    }
    const desk::ItemFacts* Facts(const std::string& name) { return mStore->Find(Path(name)); }
    /// Has the facts of an item read, and waits.
    const desk::ItemFacts* ReadFacts(const std::string& name) {
        mStore->FindAndRequest(Path(name));
        mMain.RunUntilIdle();
        return Facts(name);
    }
    /// Lets the system's changes arrive until `isDone`.
    bool WaitFor(const std::function<bool()>& isDone) {
        return mMain.RunUntil([&] {
            mMain.Advance(desk::ChangeCollector::kPace);
            return isDone();
        });
    }
    void Poll() { mMain.Advance(std::chrono::seconds(2)); }

    void ListenToMessage(const host::Message& message) override {
        const auto* changed = host::MessageCast<host::DirectoryChangedMessage>(message);
        if (!changed) {
            ++mStatusChanges;
            return;
        }
        ++mAnnouncements;
        if (mAppliesChanges) mStore->RequestChanges(changed->GetPath());
    }

    void Lock(const std::string& folder, const std::string& project, const host::UTF16String& user) {
        mFolder.Write(LockName(folder, project), desk::WriteLockRecord(MakeForeignRecord(mDesktop, user)));
    }
    /// As who copies a file with its times onto another does.
    void WriteWithoutNewTime(const std::string& name, const std::string& bytes) {
        const auto time = std::filesystem::last_write_time(mFolder.Path(name));
        mFolder.Write(name, bytes);
        std::filesystem::last_write_time(mFolder.Path(name), time);
    }
    static std::string LockName(const std::string& folder, const std::string& project) {
        const std::string name = host::UTF16to8(desk::GetLockFileName(host::UTF8to16(project)));
        return folder.empty() ? name : folder + '/' + name;
    }

    /// What a view of the folder would show by now.
    Names Shown(const std::string& folder = {}) { return mShown[folder]; }
    static std::string NameOf(const host::UTF16String& path) {
        return host::UTF16to8(path.substr(path.rfind(u'/') + 1));
    }

    /// The size that is known of an item; nothing when none is.
    std::optional<std::uint64_t> SizeOf(const std::string& name) {
        const desk::ItemFacts* facts = Facts(name);
        return facts && facts->mStatus ? std::optional(facts->mStatus->mSize) : std::nullopt;
    }
    int CountLists() const { return mDisk.Count(Operation::ListFolder); }

    desk::FolderStore* mStoreBefore = desk::GetServices().mFolderStore;
    std::unique_ptr<desk::FolderStore> mStore;
    FakeChangeSource* mSource = nullptr;
    bool mAppliesChanges = true;
    int mAnnouncements = 0, mStatusChanges = 0;
    /// All deliveries, and how many items each brought.
    std::vector<desk::FolderStore::Delivery> mDeliveries;

private:
    void Use(std::unique_ptr<desk::ChangeSource> source) {
        mStore = desk::CreateFolderStore(desk::SweepInBackground, std::move(source));
        desk::GetServices().mFolderStore = mStore.get();
    }
    void Take(const std::string& folder, const desk::FolderStore::Delivery& delivery) {
        mDeliveries.push_back(delivery);
        if (!delivery.mContent) return;
        Names& shown = mShown[folder];
        if (delivery.mDelivery.mExtent == Extent::Whole) shown.clear();
        for (const host::UTF16String& removed : delivery.mDelivery.mRemovedPaths) shown.erase(NameOf(removed));
        for (const auto item : *delivery.mContent) shown.insert(host::UTF16to8(host::UTF16String(item.mName)));
    }

    std::map<std::string, Names> mShown;
};
