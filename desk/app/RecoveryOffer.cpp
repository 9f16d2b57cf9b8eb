#include "desk/app/RecoveryOffer.h"

#include <QWidget>
#include <algorithm>
#include <utility>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectTexts.h"
#include "desk/app/RecoveryDialog.h"
#include "desk/app/RecoveryRow.h"
#include "desk/app/RecoveryTexts.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/LongWork.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/framework/MainCommander.h"
#include "desk/project/document/FileSinceKept.h"
#include "desk/project/document/ProjectDocuments.h"
#include "host/core/Localizer.h"

namespace desk {
namespace {

using host::UTF16String;

/// Whether there is something to recover is asked whenever a menu opens.
constexpr std::chrono::seconds kBetweenLooks(2);

UTF16String NameOf(const KeptText& text) {
    return ToUTF16(ProjectName(text.mProject));
}

void TellNotRecovered(const KeptText& text, const UTF16String& reason) {
    const UTF16String message = host::ZString(
        "$$$/Desk/Recovery/NotOpenedText=The text of “@0” was not recovered. @1\nIt stays kept, and can be saved as "
        "a copy.",
        {NameOf(text), reason});
    Log(LogLevel::Info, host::UTF16to8(message));
    GetServices().mDialogs->ShowMessage(host::ZString("$$$/Desk/Recovery/NotOpened=The Text Was Not Recovered"),
                                        message, MessageKind::Failure);
}

bool AskToDiscard(const KeptText& text) {
    const Answer answer = GetServices().mDialogs->Ask(
        {.mTitle = host::ZString("$$$/Desk/Recovery/DiscardTitle=Discard Unsaved Text"),
         .mText = host::ZString("$$$/Desk/Recovery/DiscardText=The unsaved text of “@0” from @1 will be lost.",
                                {NameOf(text), ToUTF16(ShownTime(text.mTime))}),
         .mButtons = {host::ZString("$$$/Desk/Recovery/Keep=Keep"),
                      host::ZString("$$$/Desk/Project/Discard=Discard")},
         .mCancel = 0,
         .mIsWarning = true});
    return answer.mButton == 1;
}

}  // namespace

RecoveryOffer::RecoveryOffer(QWidget& window, TextKeeper& keeper) : mWindow(window), mKeeper(keeper) {
    MainCommander::Instance().Register(
        kCommandRecoverText, [this] { return FindStatus(); }, [this] { return ShowAll(), true; });
}

RecoveryOffer::~RecoveryOffer() {
    MainCommander::Instance().Register(kCommandRecoverText, {}, {});
}

void RecoveryOffer::OfferAtStart() {
    mKeeper.List(mLifetime.Guard([this](const std::vector<KeptTextFile>& files) {
        Take(files);
        if (!ChooseShown().empty()) ShowDialog();
    }));
}

CommandStatus RecoveryOffer::FindStatus() {
    if (GetServices().mMainThread->Now() - mLooked >= kBetweenLooks) LookAgain();
    return {.mIsKnown = true, .mIsEnabled = !mFiles.empty(), .mText = {}};
}

void RecoveryOffer::LookAgain() {
    mLooked = GetServices().mMainThread->Now();
    mKeeper.List(mLifetime.Guard([this](const std::vector<KeptTextFile>& files) { Take(files); }));
}

void RecoveryOffer::Take(std::vector<KeptTextFile> files) {
    mFiles = std::move(files);
    if (mDialog) mDialog->Show(ChooseShown());
}

std::vector<KeptTextFile> RecoveryOffer::ChooseShown() const {
    std::vector<KeptTextFile> shown = mFiles;
    if (!mShowsAll)
        std::erase_if(shown, [](const KeptTextFile& file) { return file.mStanding != OwnerStanding::Gone; });
    return shown;
}

void RecoveryOffer::ShowAll() {
    mShowsAll = true;
    if (!mFiles.empty()) ShowDialog();
}

void RecoveryOffer::ShowDialog() {
    if (!mDialog) {
        mDialog = std::make_unique<RecoveryDialog>(&mWindow);
        QObject::connect(mDialog.get(), &RecoveryDialog::RowAdded, mDialog.get(),
                         [this](RecoveryRow* row) { AddRow(*row); });
        QObject::connect(mDialog.get(), &RecoveryDialog::Entered, mDialog.get(), [this] {
            LookAgain();
            for (const KeptTextFile& file : ChooseShown()) FindOut(file);
        });
    }
    mDialog->Show(ChooseShown());
    mDialog->show();
    mDialog->raise();
    mDialog->activateWindow();
}

void RecoveryOffer::AddRow(RecoveryRow& row) {
    const auto connectTo = [&](void (RecoveryRow::*signal)(),
                               void (RecoveryOffer::*action)(const KeptTextFile&)) {
        QObject::connect(&row, signal, mDialog.get(), [this, action, file = row.GetFile()] {
            if (!IsLongWorkRunning()) (this->*action)(file);
        });
    };
    connectTo(&RecoveryRow::OpenChosen, &RecoveryOffer::Open);
    connectTo(&RecoveryRow::CopyChosen, &RecoveryOffer::SaveAsCopy);
    connectTo(&RecoveryRow::DiscardChosen, &RecoveryOffer::Discard);
    FindOut(row.GetFile());
}

void RecoveryOffer::FindOut(const KeptTextFile& file) {
    const auto show = mLifetime.Guard([this, path = file.mPath](const FileSinceKept& found) {
        RecoveryRow* row = mDialog ? mDialog->FindRow(path) : nullptr;
        if (row) row->ShowFound(found);
    });
    mLane->SubmitLast([text = file.mText, show] {
        GetServices().mMainThread->Post(
            [show, found = FindFileSinceKept(*GetServices().mFileSystem, text)] { show(found); });
    });
}

std::optional<KeptText> RecoveryOffer::Read(const KeptTextFile& file) {
    try {
        auto text = AskVolume(host::ZString("$$$/Desk/Recovery/Reading=Reading Unsaved Text"), "read",
                              file.mText.mProject, [path = file.mPath] { return KeptTexts::Read(path); });
        if (text) return text;
        TellUser(host::ZString(
            "$$$/Desk/Recovery/GoneText=The text of “@0” is no longer kept: another window has recovered or "
            "discarded it.",
            {NameOf(file.mText)}));
        LookAgain();
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ECANCELED) TellNotRecovered(file.mText, DescribeReason(exception));
    }
    return {};
}

void RecoveryOffer::Open(const KeptTextFile& file) {
    ProjectDocuments* documents = ProjectDocuments::Instance();
    const std::optional<KeptText> text = Read(file);
    if (!text || !documents) return;
    const ProjectDocuments::QuietOpening opening = documents->OpenWithoutQuestions(text->mProject);
    if (!opening.mDocument) {
        if (!opening.mIsCancelled) TellNotRecovered(*text, opening.mReason);
        return;
    }
    if (!PutIntoEditor(*text, opening.mDocument, file.mPath)) return;
    Settle(file.mPath);
    if (!opening.mReason.empty())
        TellUser(host::ZString("$$$/Desk/Recovery/ReadOnly=@0 The recovered text can be saved as a copy.",
                               {opening.mReason}));
}

/// False when it does not go together with what the project shows.
bool RecoveryOffer::PutIntoEditor(const KeptText& text, const ProjectDocumentRef& document,
                                  const std::string& path) {
    const ProjectContent& content = document->GetContent();
    if (document->IsDirty()) {
        TellNotRecovered(text, host::ZString("$$$/Desk/Recovery/Dirty=The project is open with other unsaved "
                                             "changes: save or discard them first."));
        return false;
    }
    if (!document->IsEditable() || EditedText::FindObstacle(text.mBytes) != EditedText::Obstacle::None) {
        TellNotRecovered(text, host::ZString("$$$/Desk/Recovery/NoText=It cannot be shown in an editor."));
        return false;
    }
    if (content.mBytes == text.mBytes) {
        // It may not be on the disk yet, or no more.
        TellUser(host::ZString(
            "$$$/Desk/Recovery/Held=“@0” shows this text already. It stays kept until you discard it.",
            {NameOf(text)}));
        return false;
    }
    document->Recover(EditedText(text.mBytes).GetEditorText(), MarkContent(content.mBytes) != text.mBase);
    mKeeper.Adopt(document, path);
    return true;
}

void RecoveryOffer::SaveAsCopy(const KeptTextFile& file) {
    ProjectDocuments* documents = ProjectDocuments::Instance();
    const std::optional<KeptText> text = Read(file);
    if (!text || !documents || !documents->SaveTextAsCopy(text->mProject, text->mBytes)) return;
    mKeeper.Remove(file.mPath);
    Settle(file.mPath);
}

void RecoveryOffer::Discard(const KeptTextFile& file) {
    if (!AskToDiscard(file.mText)) return;
    mKeeper.Remove(file.mPath);
    Settle(file.mPath);
}

void RecoveryOffer::Settle(const std::string& path) {
    std::erase_if(mFiles, [&](const KeptTextFile& file) { return file.mPath == path; });
    Take(std::move(mFiles));
    LookAgain();
}

}  // namespace desk
