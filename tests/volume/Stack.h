#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/production/CopyQueue.h"
#include "desk/project/production/Production.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionTrash.h"
#include "tests/support/AnsweringDialogs.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/volume/TestProduction.h"

/// The host on a faulty disk, in this process, with a production open; what the panel's operations need.
class Stack : private host::Listener {
public:
    /// The production is in `folder`, which is a mount of the folder `behind`, else in a folder that is made
    /// and removed.
    explicit Stack(std::string folder = {}, std::string behind = {})
        : mBefore(desk::GetServices()),
          mProduction(folder.empty() ? mFolder.MakeFolder("North Shore") : std::move(folder)),
          mBehind(behind.empty() ? mProduction : std::move(behind)) {
        desk::GetServices().mWorkerPool = &mWorkers;
        mStore = desk::CreateFolderStore(desk::SweepInBackground);
        desk::GetServices().mFolderStore = mStore.get();
        mDocuments = std::make_unique<desk::ProjectDocuments>();
        mCopies = std::make_unique<desk::CopyQueue>();
        desk::Production::Instance().Open(host::UTF8to16(mProduction));
        host::AddListener(desk::kStation_UserNotices, this);
    }
    ~Stack() override {
        host::RemoveListener(desk::kStation_UserNotices, this);
        mCopies.reset();
        mDocuments.reset();
        Settle();
        desk::Production::Instance().Close();
        desk::GetServices().mFolderStore = mBefore.mFolderStore;
        mStore.reset();
        desk::GetServices().mWorkerPool = mBefore.mWorkerPool;
    }

    std::string Path(const std::string& name) const { return mProduction + '/' + name; }
    /// The same behind the mount, where nothing is cached and nothing fails.
    std::string PathBehind(const std::string& name) const { return mBehind + '/' + name; }
    host::UTF16String PathUTF16(const std::string& name) const { return host::UTF8to16(Path(name)); }

    /// Lets everything come to its end, what is tried again for some seconds too.
    void Settle() {
        constexpr std::chrono::milliseconds kStep(200);
        mMain.RunUntilIdle();
        for (int i = 0; i < 20 && mWaitsReally && IsMoreHiddenThanLocks(); ++i) {
            std::this_thread::sleep_for(kStep);
            mMain.Advance(kStep);
        }
        mMain.Advance(std::chrono::seconds(5));
    }
    /// As on a mount that caches: what waits, and what is tried again, takes its time.
    void WaitReally() {
        mWaitsReally = true;
        mVolume.WaitReally();
    }

    /// Opens the project and changes it to the next version, unsaved; null when it did not open.
    desk::ProjectDocumentRef OpenAndEdit(const std::string& name) {
        host::ProjectRef project;
        if (!mDocuments->OpenProject(PathUTF16(name)) || !host::IsProjectOpen(PathUTF16(name), project))
            return {};
        const auto document = desk::ToDocument(project);
        const auto identity = testproduction::Identify(document->GetContent().mBytes);
        if (!identity) return {};
        const auto text =
            host::UTF8to16(testproduction::MakeContent(identity->mNumber, identity->mVersion + 1));
        document->SetTextSource([text] { return text; });
        document->SetDirty(true);
        return document;
    }

    std::string TrashFolder() const { return host::UTF16to8(host::GetZuProductionTrashDirectoryPath()); }
    /// Everything that the user was told: messages, notices, and questions but for those that belong to all
    /// saving.
    std::vector<std::string> Told() const {
        std::vector<std::string> told = mDialogs.mTold;
        for (const std::string& question : mDialogs.mAsked)
            if (!question.starts_with("Save Changes")) told.push_back(question);
        told.insert(told.end(), mNotices.begin(), mNotices.end());
        return told;
    }

    desk::Services mBefore;
    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    FaultyFileSystem mVolume;
    AnsweringDialogs mDialogs;
    RecordingDesktop mDesktop;
    desk::WorkerPool mWorkers{4};
    ManualMainThread mMain;
    const std::string mProduction;
    const std::string mBehind;
    std::unique_ptr<desk::FolderStore> mStore;
    std::unique_ptr<desk::ProjectDocuments> mDocuments;
    std::unique_ptr<desk::CopyQueue> mCopies;

private:
    /// Those of the open projects.
    bool IsMoreHiddenThanLocks() const {
        const auto locks = std::ranges::count_if(host::GetOpenProjectList(), [](const auto& project) {
            return desk::ToDocument(project)->GetLock() != nullptr;
        });
        return std::ssize(testproduction::Examine(mBehind).mHidden) > locks;
    }
    void ListenToMessage(const host::Message& message) override {
        if (const auto* notice = host::MessageCast<desk::UserNoticeMessage>(message))
            AddNotice(host::UTF16to8(notice->GetText()));
    }

    /// What has gone well is no complaint.
    void AddNotice(std::string text) {
        if (!text.ends_with("” was moved to “Trash”.")) mNotices.push_back(std::move(text));
    }

    std::vector<std::string> mNotices;
    bool mWaitsReally = false;
};
