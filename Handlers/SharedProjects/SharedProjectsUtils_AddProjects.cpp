// Projects from outside, copied into the production.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/Localizer.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/PathUtils.h"
#include "host/framework/Identifiers.h"
#include "host/framework/TabView.h"
#include "host/framework/Workspace.h"
#include "host/project/ProductionItems.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects::Utils {

namespace {

constexpr int kFirstButton = 1;
/// Nobody looks at the selection of more copies than that, and each place costs a look at the disk.
constexpr std::size_t kMostExpectedCopies = 256;

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

bool AskWhetherToCopy(Workspace& workspace, const UTF16String& folder) {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Title=Add Projects to Production");
    const UTF16String question = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Message=A new copy of the chosen projects "
        "will be added to the selected folder inside the Production. Would you like to continue?");
    const UTF16String place =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Folder=Folder: “@0”",
                {Columns::GetPathDisplayName(PathUtils::AddTrailingSlash(folder))});
    const UTF16String text = question + u"\n\n" + place;
    const UTF16String copy = ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Copy=Copy");
    const UTF16String cancel =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProjectsDialog/Cancel=Cancel");
    return Messagebox(workspace.GetMainTopLevelWindow(), title, text, copy, cancel) == kFirstButton;
}

/// Where the host puts the copies, as far as can be told before; of very many nothing is told.
UTF16StringVec GetExpectedCopies(const UTF16StringVec& paths, const UTF16String& folder) {
    UTF16StringVec copies;
    UTF16StringVec names;
    if (paths.size() > kMostExpectedCopies) return copies;
    for (const UTF16String& path : paths) {
        const UTF16String source = PathUtils::ToNormalizedPath(path);
        if (Utilities::IsPathWithinDirectory(source, PathUtils::ToNormalizedPath(folder), false)) continue;
        UTF16String copy = PathUtils::CombinePaths(folder, PathUtils::GetFullFilePart(source));
        if (std::ranges::count(copies, copy) || PathUtils::ExistsOnDisk(copy, false))
            copy = Utilities::MakeUniqueFilename(copy, 1, u"_", names);
        names.push_back(PathUtils::GetFullFilePart(copy));
        copies.push_back(std::move(copy));
    }
    return copies;
}

void ShowProgressPanel(Workspace& workspace) {
    TabView* panel = workspace.FindFirstTabViewOfType(kProgressHandlerID);
    if (!panel) panel = workspace.CreateOrReanimateTabView(kProgressHandlerID, PropertyList());
    if (panel) panel->BringToFront(true, false);
}

}  // namespace

UTF16StringVec AddProjectsToZuProductionWithPrompt(const UTF16StringVec& paths,
                                                   const UTF16String& destinationFolder) {
    if (paths.empty()) return {};
    if (IsWithinCurrentZuProductionFolder(paths.front())) {
        TellTheyAreInTheProduction(paths.size() > 1);
        return {};
    }
    Workspace* workspace = Workspace::Instance().GetPtr();
    if (!workspace || !AskWhetherToCopy(*workspace, destinationFolder)) return {};
    UTF16StringVec copies = GetExpectedCopies(paths, destinationFolder);
    AddProjectsToZuProduction(paths, destinationFolder);
    ShowProgressPanel(*workspace);
    return copies;
}

}  // namespace HandlerSharedProjects::Utils
