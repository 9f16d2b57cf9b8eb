#include "desk/app/ProductionCommands.h"

#include <QDir>
#include <QMenu>

#include "desk/app/CopiesUnderWay.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/SampleProduction.h"
#include "desk/app/StatusLine.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/Profile.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/framework/Handler.h"
#include "host/framework/Identifiers.h"
#include "host/framework/Workspace.h"

namespace desk {
namespace {

/// The productions' panel may have been closed: who opens a production wants to see it.
void ShowProductionPanel() {
    host::Workspace* workspace = host::Workspace::Instance().GetPtr();
    const std::vector<host::UTF16String> panels = PanelRegistry::Instance().GetHandlerIDs();
    const bool isThere =
        std::find(panels.begin(), panels.end(), host::kZuProductionFolderHandlerID) != panels.end();
    if (workspace && isThere) workspace->OpenTab(host::UTF16to8(host::kZuProductionFolderHandlerID));
}

host::UTF16String ParentFolder(const host::UTF16String& folder) {
    return host::PathUtils::RemoveTrailingSlash(host::PathUtils::GetFullDirectoryPart(folder));
}

QString MenuText(const std::string& folder) {
    const host::UTF16String path = host::UTF8to16(folder);
    QString text = ToDisplayText(host::PathUtils::GetFullFilePart(path)) + QStringLiteral(" — ") +
                   ToDisplayText(ParentFolder(path));
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

ProductionCommands::ProductionCommands(StatusLine& statusLine, RecentProductions* recent)
    : mStatusLine(statusLine), mRecent(recent) {
    MainCommander& commander = MainCommander::Instance();
    const auto done = [](auto action) {
        return [action] {
            action();
            return true;
        };
    };
    commander.Register(kCommandNewProduction, {}, done([this] { New(); }));
    commander.Register(kCommandOpenProduction, {}, done([this] { Open(); }));
    commander.Register(
        kCommandCloseProduction,
        [] {
            return CommandStatus{.mIsKnown = true, .mIsEnabled = Production::Instance().IsOpen(), .mText = {}};
        },
        done([this] { Close(); }));
}

ProductionCommands::~ProductionCommands() {
    for (const int command : {kCommandNewProduction, kCommandOpenProduction, kCommandCloseProduction})
        MainCommander::Instance().Register(command, {}, {});
}

void ProductionCommands::OpenAtStart(const std::string& folder, ProductionOpener::Done done) {
    SetOpening(folder);
    mOpener.Open(folder, ShowResultAtStart(std::move(done)));
}

void ProductionCommands::OpenSample(ProductionOpener::Done done) {
    mStatusLine.SetActivity(Localized("$$$/Desk/Status/MakingSample=Making the sample production…"));
    mOpener.Open([] { return EnsureSampleProduction(Profile::UserDataFolder(), kTrashFolderName); },
                 ShowResultAtStart(std::move(done)));
}

/// Where the user most likely keeps productions: beside the open one, or the last one.
host::UTF16String ProductionCommands::FindUsualPlace() const {
    if (Production::Instance().IsOpen()) return ParentFolder(Production::Instance().GetFolder());
    if (mRecent && !mRecent->Get().empty()) return ParentFolder(host::UTF8to16(mRecent->Get().front()));
    return ToUTF16(QDir::homePath());
}

void ProductionCommands::New() {
    const auto folder = GetServices().mDialogs->AskNewFolder(
        host::ZString("$$$/Desk/Production/NewTitle=New Production"), FindUsualPlace());
    if (!folder) return;
    const std::string path = host::UTF16to8(host::PathUtils::ToNormalizedPath(*folder));
    SetOpening(path);
    mOpener.Create(path, kTrashFolderName,
                   ShowResult("$$$/Desk/Production/NotMade=The Production Was Not Made"));
}

void ProductionCommands::Open() {
    const auto folder = GetServices().mDialogs->AskFolder(
        host::ZString("$$$/Desk/Production/OpenTitle=Open Production"), FindUsualPlace());
    if (folder) OpenRecent(host::UTF16to8(host::PathUtils::ToNormalizedPath(*folder)));
}

void ProductionCommands::OpenRecent(const std::string& folder) {
    SetOpening(folder);
    mOpener.Open(folder, ShowResult("$$$/Desk/Production/NotOpened=The Production Was Not Opened"));
}

void ProductionCommands::Close() {
    if (!CopiesUnderWay::MayBeCancelled()) return;
    ProjectDocuments* documents = ProjectDocuments::Instance();
    if (documents && !documents->CloseProjectsIn(Production::Instance().GetFolder())) return;
    Production::Instance().Close();
    if (mRecent) mRecent->ForgetFolderToOpen();
}

ProductionOpener::Done ProductionCommands::ShowResult(const char* title) {
    return [this, title](const ProductionOpener::Result& result) {
        if (result.mIsSuperseded) return;
        mStatusLine.SetActivity({});
        if (result.mIsCancelled) return;
        if (result.mProblem.isEmpty()) {
            Opened(result.mFolder);
            return ShowProductionPanel();
        }
        if (mRecent && result.mIsMissing) mRecent->Remove(result.mFolder);
        GetServices().mDialogs->ShowMessage(host::ZString(title), ToUTF16(result.mProblem),
                                            MessageKind::Failure);
    };
}

ProductionOpener::Done ProductionCommands::ShowResultAtStart(ProductionOpener::Done done) {
    return [this, done = std::move(done)](const ProductionOpener::Result& result) {
        if (!result.mIsSuperseded) ShowOutcomeAtStart(result);
        if (done) done(result);
    };
}

void ProductionCommands::ShowOutcomeAtStart(const ProductionOpener::Result& result) {
    mStatusLine.SetActivity({});
    if (result.mProblem.isEmpty())
        Opened(result.mFolder);
    else
        mStatusLine.ShowNotice(result.mProblem);
}

void ProductionCommands::Opened(const std::string& folder) {
    if (mRecent) mRecent->Add(folder);
}

void ProductionCommands::SetOpening(const std::string& folder) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(host::UTF8to16(folder));
    mStatusLine.SetActivity(Localized("$$$/Desk/Status/Opening=Opening @0…", {ToUTF16(ToDisplayText(name))}));
}

void ProductionCommands::FillRecentMenu(QMenu& menu) {
    menu.clear();
    if (mRecent)
        for (const std::string& folder : mRecent->Get())
            menu.addAction(MenuText(folder), &menu, [this, folder] { OpenRecent(folder); });
    if (menu.isEmpty()) menu.addAction(Localized("$$$/Desk/Production/NoRecent=None Yet"))->setEnabled(false);
}

}  // namespace desk
