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
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/live/LookAgain.h"
#include "desk/project/document/LockWatch.h"
#include "desk/project/document/OutOfDateWatch.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
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

}  // namespace

ProjectDocuments::ProjectDocuments()
    : mOutOfDateWatch(std::make_unique<OutOfDateWatch>()),
      mLockWatch(
          std::make_unique<LockWatch>([this](const ProjectDocumentRef& document, const LockFinding& loss) {
              return NoteLoss(document, loss);
          })) {
    sInstance = this;
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
