#include "desk/project/document/ProjectLooks.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "host/files/DirectoryChangeMonitor.h"

namespace desk {

namespace {

constexpr std::chrono::seconds kInterval(3);

bool LiesIn(const ProjectDocument& document, const host::UTF16String& folder) {
    return FolderOf(document.GetProjectPath()) == folder ||
           (document.GetFile().mIsLink && FolderOf(document.GetFile().mPath) == host::UTF16to8(folder));
}

}  // namespace

ProjectLooks::ProjectLooks(Prepare prepare)
    : mPrepare(std::move(prepare)), mTimer(kInterval, [this] { LookAtAll(); }) {
    host::AddListener(host::kStation_DirectoryChanges, this);
}

ProjectLooks::~ProjectLooks() {
    host::RemoveListener(host::kStation_DirectoryChanges, this);
}

void ProjectLooks::ListenToMessage(const host::Message& message) {
    const auto* changed = host::MessageCast<host::DirectoryChangedMessage>(message);
    if (!changed) return;
    const auto open = OpenProjectList::Instance().Get();
    for (const OpenProjectRef& project : open)
        if (const ProjectDocumentRef document = ToDocument(project);
            document && LiesIn(*document, changed->GetPath()))
            LookNow(document);
}

void ProjectLooks::LookAtAll() {
    const auto open = OpenProjectList::Instance().Get();
    for (const OpenProjectRef& project : open)
        if (const ProjectDocumentRef document = ToDocument(project)) LookAt(document, false);
}

void ProjectLooks::LookAt(const ProjectDocumentRef& document, bool isAnnounced) {
    if (const auto looking = mLooking.find(document.get()); looking != mLooking.end()) {
        if (isAnnounced) looking->second = true;
        return;
    }
    const Look look = mPrepare(document, isAnnounced);
    if (!look) return;
    mLooking.emplace(document.get(), false);
    // The reference count is the UI thread's: the worker gets a plain pointer, which is looked up afterwards.
    const auto finish =
        mLifetime.Guard([this, pointer = document.get()](const Answer& answer) { Finish(pointer, answer); });
    mLane->SubmitLast(
        [look, finish] { GetServices().mMainThread->Post([answer = look(), finish] { finish(answer); }); });
}

void ProjectLooks::Finish(const ProjectDocument* pointer, const Answer& answer) {
    bool looksAgain = std::exchange(mLooking[pointer], false);
    mLooking.erase(pointer);
    const ProjectDocumentRef document = FindOpenDocument(pointer);
    if (!document) return;
    if (answer(document)) looksAgain = true;
    if (looksAgain) LookAt(document, true);
}

ProjectDocumentRef FindOpenDocument(const ProjectDocument* document) {
    const auto& open = OpenProjectList::Instance().Get();
    const auto found = std::find_if(open.begin(), open.end(),
                                    [&](const OpenProjectRef& project) { return project.get() == document; });
    return found == open.end() ? ProjectDocumentRef() : ToDocument(*found);
}

}  // namespace desk
