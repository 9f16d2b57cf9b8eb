// Projects from outside, copied into the production.
#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/core/Localizer.h"
#include "host/dialogs/MessageBox.h"
#include "host/framework/Identifiers.h"
#include "host/framework/TabView.h"
#include "host/framework/Workspace.h"
#include "host/project/ProductionItems.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects::Utils {

namespace {

constexpr int kFirstButton = 1;

void TellTheyAreInTheProduction(bool areSeveral) {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/WithinZuProduction=Already in Production Folder");
    const UTF16String text = ZString(
        areSeveral
            ? "$$$/Vantor/Handlers/ZuProductionFolder/WithinZuProductionMessagePlr=The selected projects are "
              "already part of this production."
            : "$$$/Vantor/Handlers/ZuProductionFolder/WithinZuProductionMessage=The selected project is "
              "already part of this production.");
    MessageBox(title, text, kMessageBoxOK, kMessageBoxIconInformation, 0);
}

bool AskWhetherToCopy(Workspace& workspace) {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Title=Add Projects to Production");
    const UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Message=A new copy of the chosen projects "
        "will be added to the selected folder inside the Production. Would you like to continue?");
    const UTF16String copy = ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Copy=Copy");
    const UTF16String cancel =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Cancel=Cancel");
    return Messagebox(workspace.GetMainTopLevelWindow(), title, text, copy, cancel) == kFirstButton;
}

void ShowProgressPanel(Workspace& workspace) {
    TabView* panel = workspace.FindFirstTabViewOfType(kProgressHandlerID);
    if (!panel) panel = workspace.CreateOrReanimateTabView(kProgressHandlerID, PropertyList());
    if (panel) panel->BringToFront(true, false);
}

}  // namespace

void AddProjectsToZuProductionWithPrompt(const UTF16StringVec& paths, const UTF16String& destinationFolder) {
    if (paths.empty()) return;
    if (IsWithinCurrentZuProductionFolder(paths.front())) return TellTheyAreInTheProduction(paths.size() > 1);
    Workspace* workspace = Workspace::Instance().GetPtr();
    if (!workspace || !AskWhetherToCopy(*workspace)) return;
    AddProjectsToZuProduction(paths, destinationFolder);
    ShowProgressPanel(*workspace);
}

}  // namespace HandlerSharedProjects::Utils
