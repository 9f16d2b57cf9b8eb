#include "desk/project/document/OutOfDateWatch.h"

#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/KnownFacts.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// Absent when the volume does not tell.
std::optional<FileComparison> LookAtFile(const std::string& path, const ProjectContent& content) {
    try {
        return CompareProjectFile(*GetServices().mFileSystem, path, content, false);
    } catch (const host::FileException&) {
        return {};  // Not a change; the next look follows.
    }
}

}  // namespace

OutOfDateWatch::OutOfDateWatch()
    : mLooks([this](const ProjectDocumentRef& document, bool isAnnounced) {
          return PrepareLook(document, isAnnounced);
      }) {}

ProjectLooks::Look OutOfDateWatch::PrepareLook(const ProjectDocumentRef& document, bool isAnnounced) {
    std::erase_if(mDiffering, [](const auto& entry) { return !FindOpenDocument(entry.first); });
    if (!isAnnounced && !IsWorthALook(*document)) return {};
    return [this, path = document->GetFile().mPath, content = document->ShareContent()] {
        return [this, content, found = LookAtFile(path, *content)](const ProjectDocumentRef& looked) {
            return Note(looked, content, found);
        };
    };
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

/// True when the document is to be looked at again: what has been read or saved meanwhile is newer than this
/// look.
bool OutOfDateWatch::Note(const ProjectDocumentRef& document, const ProjectContentPtr& content,
                          const std::optional<FileComparison>& found) {
    if (document->ShareContent() != content) return true;
    if (found && found->mOutcome == FileComparison::Outcome::Changed) {
        mDiffering[document.get()] = found->mStatus;
        document->SetOutOfDate(true);
    }
    if (found && found->mOutcome == FileComparison::Outcome::Same) {
        mDiffering.erase(document.get());
        document->NoteStatus(found->mStatus);
        document->SetOutOfDate(false);
    }
    return false;
}

}  // namespace desk
