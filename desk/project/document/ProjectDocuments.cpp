#include "desk/project/document/ProjectDocuments.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <utility>

#include "desk/core/durable/NewFile.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/FileMoves.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/live/LookAgain.h"
#include "desk/project/document/LockWatch.h"
#include "desk/project/document/OutOfDateWatch.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

constexpr int kMostNames = 100;

ProjectDocuments* sInstance = nullptr;

/// Where what stood at `path` in a folder that has moved stands now.
std::string FollowPath(const std::string& path, const MovedItem& item) {
    return item.mTo + path.substr(item.mFrom.size());
}

/// The folder in which the file really is has moved, and the link through which it was opened leads nowhere.
void GoOnWithoutLink(const ProjectDocumentRef& document) {
    const host::UTF16String path = document->GetProjectPath();
    const host::UTF16String realPath = document->GetRealPath();
    // A link's own lock has not moved.
    if (!document->GetFile().mIsLink)
        LockKeeper::Instance().FollowMove(GetLockPath(path), GetLockPath(realPath));
    document->SetProjectPath(realPath);
}

/// What is open for writing in a folder that has moved goes on at its new place, whatever a look at that place
/// says; its lock has followed already. Whoever moves a single project tells it, along with its new lock.
void FollowFolder(const MovedItem& item, const ProjectDocumentRef& document) {
    const std::string path = host::UTF16to8(document->GetProjectPath());
    const std::string realPath = document->GetFile().mRealPath;
    const bool isMoved = path.starts_with(item.mFrom + '/');
    const bool isFileMoved = path != realPath && realPath.starts_with(item.mFrom + '/');
    if (isFileMoved) document->SetRealPath(FollowPath(realPath, item));
    if (isMoved)
        document->SetProjectPath(host::UTF8to16(FollowPath(path, item)));
    else if (isFileMoved)
        GoOnWithoutLink(document);
}

void FollowMove(const MovedItem& item) {
    const auto open = OpenProjectList::Instance().Get();
    for (const OpenProjectRef& project : open) {
        const ProjectDocumentRef document = ToDocument(project);
        if (!document) continue;
        if (!item.mIsFolder && document->GetFile().mRealPath == item.mFrom)
            document->NoteFileMove(item.mTo);
        else if (item.mIsFolder && !document->IsReadOnly())
            FollowFolder(item, document);
    }
}

void FollowMoves() {
    static bool sIsFollowing = false;
    if (!std::exchange(sIsFollowing, true)) AddMoveObserver(FollowMove);
}

}  // namespace

ProjectDocuments::ProjectDocuments()
    : mOutOfDateWatch(std::make_unique<OutOfDateWatch>()),
      mLockWatch(
          std::make_unique<LockWatch>([this](const ProjectDocumentRef& document, const LockFinding& loss) {
              return NoteLoss(document, loss);
          })) {
    sInstance = this;
    FollowMoves();
}

ProjectDocuments::~ProjectDocuments() {
    DropAll(GetDocuments());
    sInstance = nullptr;
}

ProjectDocuments* ProjectDocuments::Instance() {
    return sInstance;
}

ProjectDocuments::Operation::Operation(ProjectDocuments& documents, const ProjectDocumentRef& document)
    : mDocuments(documents), mDocument(document) {
    mHasBegun = document && documents.IsOpen(document) && documents.mBusy.insert(document.get()).second;
}

ProjectDocuments::Operation::~Operation() {
    if (mHasBegun) mDocuments.mBusy.erase(mDocument.get());
}

std::vector<ProjectDocumentRef> ProjectDocuments::GetDocuments() const {
    std::vector<ProjectDocumentRef> documents;
    for (const OpenProjectRef& project : OpenProjectList::Instance().Get())
        if (ProjectDocumentRef document = ToDocument(project)) documents.push_back(std::move(document));
    return documents;
}

bool ProjectDocuments::IsOpen(const ProjectDocumentRef& document) const {
    const auto& open = OpenProjectList::Instance().Get();
    return std::find(open.begin(), open.end(), document) != open.end();
}

host::ProjectRef ProjectDocuments::GetActiveProject() const {
    return mActive;
}

void ProjectDocuments::SetActiveProject(const host::ProjectRef& project) {
    const ProjectDocumentRef document = ToDocument(project);
    if (document == mActive || (document && !IsOpen(document))) return;
    mActive = document;
    if (!document) return;
    host::BroadcastMessage(kStation_ProjectDocuments,
                           ProjectDocumentMessage(ProjectDocumentMessage::What::Activated, document));
}

host::UTF16String ProjectDocuments::CreateProject(const host::UTF16String& folder) {
    const host::UTF16String name = host::ZString("$$$/Vantor/Handlers/ZuProductionFolder/Untitled=Untitled") +
                                   host::GetProjectFileExtension();
    const host::UTF16String wanted =
        host::PathUtils::CombinePaths(host::PathUtils::ToNormalizedPath(folder), name);
    host::UTF16StringVec taken;
    host::UTF16String path = wanted;
    try {
        for (int i = 0; i < kMostNames; ++i) {
            if (i > 0) path = host::Utilities::MakeUniqueFilename(wanted, 1, u"_", taken);
            if (CreateFileOnDisk(path, {})) return path;
            taken.push_back(host::PathUtils::GetFullFilePart(path));
        }
        throw host::FileException("create", wanted, EEXIST);
    } catch (const host::FileException& exception) {
        ProjectQuestions::TellFailure(path, exception, ProjectQuestions::TellNotMade);
    }
    return {};
}

host::UTF16String ReasonOf(const host::FileException& exception) {
    Log(LogLevel::Info, exception.what());
    return ToUTF16(ToDisplayText(DescribeReason(exception)));
}

namespace {

/// False when something stands at `path`.
bool MakeOnDisk(const host::UTF16String& path, const host::UTF16String& title,
                const std::function<void(WorkProgress&)>& work) {
    try {
        RunLongWork(title, [&](WorkProgress& progress) {
            progress.SetItem(path);
            work(progress);
        });
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != EEXIST) throw;
        return false;
    }
    LookAgainAround(path);
    return true;
}

}  // namespace

bool CreateFileOnDisk(const host::UTF16String& path, const std::string& bytes) {
    return MakeOnDisk(path, host::ZString("$$$/Desk/Project/Creating=Creating Project"),
                      [&](WorkProgress&) { MakeNewFile(host::UTF16to8(path), bytes, GetModeOfNewFiles()); });
}

bool CopyFileOnDisk(const std::string& source, const host::UTF16String& path) {
    return MakeOnDisk(path, host::ZString("$$$/Desk/Project/Copying=Copying Project"),
                      [&](WorkProgress& progress) { CopyItem(source, host::UTF16to8(path), progress); });
}

}  // namespace desk
