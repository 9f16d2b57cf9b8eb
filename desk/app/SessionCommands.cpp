#include "desk/app/SessionCommands.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "desk/app/ProductionCommands.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/ProjectTexts.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/framework/MainCommander.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/production/Production.h"
#include "host/core/Localizer.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {
namespace {

using host::UTF16String;

/// A message of more lines would not fit on a screen.
constexpr std::size_t kMostLines = 10;

/// What could not be opened as it was.
class Shortfall {
public:
    void Add(const UTF16String& path, const ProjectDocuments::QuietOpening& opening) {
        if (opening.mReason.empty()) return;
        const UTF16String line =
            opening.mDocument
                ? host::ZString("$$$/Desk/Session/ReadOnly=@0 It is open read-only.", {opening.mReason})
                : host::ZString("$$$/Desk/Session/NotOpened=“@0” was not opened. @1",
                                {ToUTF16(ProjectName(path)), opening.mReason});
        Log(LogLevel::Info, host::UTF16to8(line));
        if (++mCount <= kMostLines) mText += line + u"\n";
    }

    void Tell() const {
        if (mCount == 0) return;
        UTF16String text = mText;
        if (mCount > kMostLines)
            text += host::ZString("$$$/Desk/Session/More=The log names @0 more.",
                                  {host::NumberToString(static_cast<long long>(mCount - kMostLines))});
        if (text.ends_with(u'\n')) text.pop_back();
        GetServices().mDialogs->ShowMessage(host::ZString("$$$/Desk/Session/Title=Last Session"), text,
                                            MessageKind::Failure);
    }

private:
    UTF16String mText;
    std::size_t mCount = 0;
};

CommandStatus Status(bool isEnabled, bool isChecked = false) {
    return {.mIsKnown = true, .mIsEnabled = isEnabled, .mIsChecked = isChecked, .mText = {}};
}

}  // namespace

SessionCommands::SessionCommands(ProjectArea& projects, ProductionCommands& productions, LastSession& session,
                                 IsClosing isClosing)
    : mProjects(projects), mProductions(productions), mSession(session), mIsClosing(std::move(isClosing)) {
    MainCommander& commander = MainCommander::Instance();
    commander.Register(
        kCommandReopenSession, [this] { return Status(!mSession.Get().mProjects.empty()); },
        [this] { return Reopen(), true; });
    commander.Register(
        kCommandReopenSessionAtStart, [this] { return Status(true, mSession.ReopensAtStart()); },
        [this] { return mSession.SetReopensAtStart(!mSession.ReopensAtStart()), true; });
    QObject::connect(&mProjects, &ProjectArea::ProjectsChanged, &mProjects,
                     mLifetime.Guard([this] { ItemsChanged(); }));
    host::AddListener(host::kStation_ZuProductionFolderPanel, this);
}

SessionCommands::~SessionCommands() {
    host::RemoveListener(host::kStation_ZuProductionFolderPanel, this);
    for (const int command : {kCommandReopenSession, kCommandReopenSessionAtStart})
        MainCommander::Instance().Register(command, {}, {});
}

void SessionCommands::ListenToMessage(const host::Message&) {
    ItemsChanged();
}

void SessionCommands::ItemsChanged() {
    if (mIsClosing()) return;
    OpenItems items;
    items.mProduction = host::UTF16to8(Production::Instance().GetFolder());
    for (const ProjectDocumentRef& document : mProjects.GetDocuments()) {
        if (document == mProjects.GetActiveDocument()) items.mActive = items.mProjects.size();
        items.mProjects.push_back(host::UTF16to8(document->GetProjectPath()));
    }
    mSession.Update(std::move(items));
}

void SessionCommands::Reopen() {
    const std::string folder = mSession.Get().mProduction;
    if (folder.empty() || folder == host::UTF16to8(Production::Instance().GetFolder())) return OpenProjects();
    mProductions.OpenAtStart(folder, mLifetime.Guard([this](const ProductionOpener::Result& result) {
        if (!result.mIsCancelled && !result.mIsSuperseded) OpenProjects();
    }));
}

void SessionCommands::OpenProjects() {
    ProjectDocuments* documents = ProjectDocuments::Instance();
    if (!documents) return;
    const OpenItems items = mSession.Get();
    Shortfall shortfall;
    bool isAllOpen = true;
    ProjectDocumentRef active;
    std::vector<ProjectDocumentRef> opened;
    for (std::size_t i = 0; i < items.mProjects.size(); ++i) {
        const UTF16String path = host::UTF8to16(items.mProjects[i]);
        const ProjectDocuments::QuietOpening opening = documents->OpenWithoutQuestions(path);
        isAllOpen = isAllOpen && opening.mDocument;
        if (opening.mIsCancelled) break;
        if (i == items.mActive) active = opening.mDocument;
        if (opening.mDocument) opened.push_back(opening.mDocument);
        shortfall.Add(path, opening);
    }
    // Some may have been open already.
    mProjects.Arrange(opened);
    if (active) documents->SetActiveProject(active);
    if (isAllOpen) mSession.Forget();
    shortfall.Tell();
}

}  // namespace desk
