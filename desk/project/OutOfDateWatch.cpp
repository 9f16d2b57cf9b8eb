#include "desk/project/OutOfDateWatch.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "desk/core/Log.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/FolderPath.h"
#include "desk/files/FolderStore.h"
#include "desk/files/KnownFacts.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

constexpr std::chrono::seconds kInterval(3);

/// Absent when the volume does not tell.
std::optional<FileComparison> LookAtFile(const std::string& path, const ProjectContent& content) {
    try {
        return CompareProjectFile(*GetServices().mFileSystem, path, content, false);
    } catch (const host::FileException&) {
        return {};  // Not a change; the next look follows.
    }
}

}  // namespace

/// One look at a file by a worker.
struct OutOfDateWatch::Look {
    ProjectDocument* mDocument = nullptr;
    ProjectContentPtr mContent;
    std::optional<FileComparison> mFound;
};

OutOfDateWatch::OutOfDateWatch() : mSelf(std::make_shared<OutOfDateWatch*>(this)) {
    host::AddListener(host::kStation_DirectoryChanges, this);
    mTimer = GetServices().mMainThread->StartTimer(kInterval, [this] { LookAtAll(); });
}

OutOfDateWatch::~OutOfDateWatch() {
    GetServices().mMainThread->StopTimer(mTimer);
    host::RemoveListener(host::kStation_DirectoryChanges, this);
}

void OutOfDateWatch::ListenToMessage(const host::Message& message) {
    const auto* changed = host::MessageCast<host::DirectoryChangedMessage>(message);
    if (!changed) return;
    const auto open = OpenProjectList::Instance().Get();
    for (const OpenProjectRef& project : open)
        if (FolderOf(project->GetProjectPath()) == changed->GetPath())
            if (const ProjectDocumentRef document = ToDocument(project)) LookAt(document, true);
}

void OutOfDateWatch::LookAtAll() {
    const auto open = OpenProjectList::Instance().Get();
    std::erase_if(mDiffering, [&](const auto& entry) {
        return std::none_of(open.begin(), open.end(),
                            [&](const OpenProjectRef& project) { return project.get() == entry.first; });
    });
    for (const OpenProjectRef& project : open)
        if (const ProjectDocumentRef document = ToDocument(project)) LookAt(document, false);
}

void OutOfDateWatch::LookAt(const ProjectDocumentRef& document, bool alwaysAsksDisk) {
    if (!alwaysAsksDisk && !IsWorthALook(*document)) return;
    const auto [entry, isNew] = mLooking.try_emplace(document.get(), false);
    if (isNew)
        Begin(document);
    else if (alwaysAsksDisk)
        entry->second = true;
}

/// A listed folder is followed: facts that are known to agree need no look.
bool OutOfDateWatch::IsWorthALook(const ProjectDocument& document) const {
    if (document.GetFile().mIsLink) return true;
    const KnownItem known = FindKnownItem(document.GetProjectPath());
    if (!known.mFacts || !known.mFacts->mStatus) return !known.mIsAbsent;
    const ItemStatus& status = *known.mFacts->mStatus;
    const auto differing = mDiffering.find(&document);
    return !IsSameState(status,
                        differing == mDiffering.end() ? document.GetContent().mStatus : differing->second);
}

void OutOfDateWatch::Begin(const ProjectDocumentRef& document) {
    // The reference count is the UI thread's: the worker gets a plain pointer, which is looked up afterwards.
    Look look{document.get(), document->ShareContent(), {}};
    const std::string path = document->GetFile().mPath;
    GetServices().mWorkerPool->SubmitLast([look, path, self = std::weak_ptr(mSelf)]() mutable {
        look.mFound = LookAtFile(path, *look.mContent);
        GetServices().mMainThread->Post([look, self] {
            if (const auto watch = self.lock()) (*watch)->Finish(look);
        });
    });
}

void OutOfDateWatch::Finish(const Look& look) {
    const bool looksAgain = std::exchange(mLooking[look.mDocument], false);
    mLooking.erase(look.mDocument);
    const auto open = OpenProjectList::Instance().Get();
    const auto found = std::find_if(open.begin(), open.end(), [&](const OpenProjectRef& project) {
        return project.get() == look.mDocument;
    });
    if (found == open.end()) return;
    const ProjectDocumentRef document = ToDocument(*found);
    // What has been read or saved meanwhile is newer than this look.
    const bool isCurrent = document->ShareContent() == look.mContent;
    if (isCurrent && look.mFound && look.mFound->mOutcome == FileComparison::Outcome::Changed) {
        mDiffering[look.mDocument] = look.mFound->mStatus;
        document->SetOutOfDate(true);
    }
    if (isCurrent && look.mFound && look.mFound->mOutcome == FileComparison::Outcome::Same) {
        mDiffering.erase(look.mDocument);
        document->NoteStatus(look.mFound->mStatus);
        document->SetOutOfDate(false);
    }
    if (looksAgain || !isCurrent) LookAt(document, true);
}

}  // namespace desk
