#include "desk/project/document/TextKeeper.h"

#include <chrono>
#include <set>
#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/project/document/ProjectLooks.h"
#include "desk/project/document/ProjectQuestions.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

std::int64_t NowInSeconds() {
    const auto time = GetServices().mDesktop->Now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

void RemoveFile(const std::string& path) {
    try {
        KeptTexts::Remove(path);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, exception.what());
    }
}

/// All but what is `inUse` by this program, or another one that is running.
std::vector<KeptTextFile> ListOthers(const std::string& folder, const std::set<std::string>& inUse) {
    try {
        std::vector<KeptTextFile> files = KeptTexts::List(folder);
        std::erase_if(files, [&](const KeptTextFile& file) {
            return file.mStanding == OwnerStanding::Living || inUse.contains(file.mPath);
        });
        return files;
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, exception.what());
        return {};
    }
}

void ClaimFile(const std::string& from, const std::string& to) {
    try {
        if (!KeptTexts::Claim(from, to))
            Log(LogLevel::Info, "The unsaved text in " + from + " is gone already");
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, exception.what());
    }
}

}  // namespace

TextKeeper::TextKeeper(std::string folder)
    : mFolder(std::move(folder)), mOwner(MakeRecordOwner()), mTimer(kInterval, [this] { KeepAll(); }) {
    mTasks.Submit([folder = mFolder] { KeptTexts::Sweep(folder); });
    host::AddListener(kStation_ProjectDocuments, this);
    host::AddListener(host::kBackendProjectActivationStationID, this);
}

TextKeeper::~TextKeeper() {
    KeepAll();
    host::RemoveListener(host::kBackendProjectActivationStationID, this);
    host::RemoveListener(kStation_ProjectDocuments, this);
}

void TextKeeper::ListenToMessage(const host::Message& message) {
    if (const auto* closed = host::MessageCast<host::ProjectClosedMessage>(message))
        NoteClosed(ToDocument(closed->GetProject()).get());
    else if (const auto* news = host::MessageCast<ProjectDocumentMessage>(message))
        NoteState(*news->GetDocument());
}

void TextKeeper::NoteState(const ProjectDocument& document) {
    const bool isUndone = !document.IsDirty() && document.IsRecovered();
    if (const auto found = mKept.find(&document); found != mKept.end()) found->second.mIsUndone = isUndone;
    if (!document.IsDirty() && !isUndone) Forget(&document);
}

/// As the user left it: by now the editor may be gone, and the changes with it.
void TextKeeper::NoteClosed(const ProjectDocument* document) {
    const auto found = mKept.find(document);
    if (found != mKept.end() && found->second.mIsUndone)
        mKept.erase(found);
    else
        Forget(document);
}

void TextKeeper::KeepAll() {
    for (const OpenProjectRef& project : OpenProjectList::Instance().Get())
        if (const ProjectDocumentRef document = ToDocument(project); document && document->IsDirty())
            Keep(*document);
}

void TextKeeper::Keep(ProjectDocument& document) {
    Kept& kept = mKept[&document];
    const bool isSame = kept.mEdits == document.CountEdits() && kept.mProject == document.GetProjectPath() &&
                        kept.mBase == document.ShareContent();
    // A disk that stands still gets no second write in line.
    if (!kept.mIsWriting && !(isSame && kept.mIsWritten)) Write(document, kept);
}

void TextKeeper::Write(ProjectDocument& document, Kept& kept) {
    if (kept.mPath.empty()) kept.mPath = KeptTexts::MakePath(mFolder);
    kept.mEdits = document.CountEdits();
    kept.mProject = document.GetProjectPath();
    kept.mBase = document.ShareContent();
    kept.mIsWriting = true;
    KeptText text;
    text.mProject = kept.mProject;
    text.mTime = NowInSeconds();
    text.mOwner = mOwner;
    const Shown shown{kept.mBase, document.IsBasedOnOlder(), document.GetCurrentText()};
    const auto note = mLifetime.Guard([this, pointer = &document, path = kept.mPath](const Outcome& outcome) {
        NoteOutcome(pointer, path, outcome);
    });
    mTasks.Submit([text, shown, path = kept.mPath, note] {
        GetServices().mMainThread->Post([note, outcome = WriteFile(path, text, shown)] { note(outcome); });
    });
}

/// On a worker.
TextKeeper::Outcome TextKeeper::WriteFile(const std::string& path, KeptText text, const Shown& shown) {
    try {
        text.mBytes = EditedText(shown.mContent->mBytes).ToBytes(shown.mText);
        if (text.mBytes.size() > kKeptTextLimit) return {.mIsTooLarge = true, .mError = {}};
        if (!shown.mIsBasedOnOlder) text.mBase = MarkContent(shown.mContent->mBytes);
        KeptTexts::Write(path, text);
        return {};
    } catch (const std::exception& exception) {
        return {.mIsTooLarge = false, .mError = exception.what()};
    }
}

void TextKeeper::NoteOutcome(const ProjectDocument* document, const std::string& path, const Outcome& outcome) {
    const auto found = mKept.find(document);
    if (found == mKept.end() || found->second.mPath != path) return;
    Kept& kept = found->second;
    kept.mIsWriting = false;
    // What is too large now is looked at again when it has changed.
    kept.mIsWritten = outcome.mError.empty();
    const bool hasFailed = outcome.mIsTooLarge || !outcome.mError.empty();
    if (hasFailed && !kept.mHasFailed) TellNotKept(kept.mProject, outcome);
    kept.mHasFailed = hasFailed;
}

void TextKeeper::TellNotKept(const host::UTF16String& project, const Outcome& outcome) {
    if (!outcome.mError.empty()) Log(LogLevel::Warning, "Unsaved text is not kept: " + outcome.mError);
    TellUser(outcome.mIsTooLarge
                 ? host::ZString(
                       "$$$/Desk/Recovery/TooLarge=The unsaved text of “@0” is too large to be kept in case "
                       "the program ends without warning: save it now and then.",
                       {ProjectQuestions::NameOf(project)})
                 : host::ZString(
                       "$$$/Desk/Recovery/NotKept=The unsaved text of “@0” cannot be kept in case the program "
                       "ends without warning: save it now and then. The log says why.",
                       {ProjectQuestions::NameOf(project)}));
}

void TextKeeper::Adopt(const ProjectDocumentRef& document, const std::string& path) {
    Kept& kept = mKept[document.get()] = {};
    kept.mPath = KeptTexts::MakePath(mFolder);
    mTasks.Submit([path, own = kept.mPath] { ClaimFile(path, own); });
    // Until this is written its owner is still the program that is gone.
    Write(*document, kept);
}

void TextKeeper::Forget(const ProjectDocument* document) {
    const auto found = mKept.find(document);
    if (found == mKept.end()) return;
    Remove(found->second.mPath);
    mKept.erase(found);
}

void TextKeeper::Remove(const std::string& path) {
    mTasks.Submit([path] { RemoveFile(path); });
}

/// After what is to be written and removed, so that nothing is told that is about to go.
void TextKeeper::List(Listed listed) {
    std::set<std::string> inUse;
    for (const auto& [document, kept] : mKept) inUse.insert(kept.mPath);
    mTasks.Submit([folder = mFolder, inUse, listed = mLifetime.Guard(std::move(listed))] {
        GetServices().mMainThread->Post([listed, files = ListOthers(folder, inUse)] { listed(files); });
    });
}

}  // namespace desk
