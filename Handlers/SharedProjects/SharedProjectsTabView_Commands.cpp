// The panel's commands: which function of the view answers which command.
#include "Handlers/SharedProjects/SharedProjectsTabView.h"

namespace HandlerSharedProjects {

/// What a command's status is asked of, and who carries it out. Both answer false to decline: the command
/// then goes to the base.
struct SharedProjectsTabView::CommandPair {
    int mID;
    bool (SharedProjectsTabView::*mStatus)(bool& enabled) const;
    bool (SharedProjectsTabView::*mObey)(const Command& command);
    /// The menu text; null, or one that is empty, for the menu's own.
    UTF16String (SharedProjectsTabView::*mText)() const = nullptr;
};

const SharedProjectsTabView::CommandPair* SharedProjectsTabView::FindCommandPair(int id) {
    using Self = SharedProjectsTabView;
    static constexpr CommandPair kCommandPairs[] = {
        {1296191078, &Self::OnNewFolderCommandStatus, &Self::OnNewFolderCommand},
        {30303, &Self::OnNewProjectCommandStatus, &Self::OnNewProjectCommand},
        {30304, &Self::OnAddProjectCommandStatus, &Self::OnAddProjectCommand},
        {30305, &Self::OnOpenProjectCommandStatus, &Self::OnOpenProjectCommand},
        {30306, &Self::OnCloseProjectCommandStatus, &Self::OnCloseProjectCommand},
        {30307, &Self::OnRefreshProjectCommandStatus, &Self::OnRefreshProjectCommand},
        {30309, &Self::OnRevealRootInSystemCommandStatus, &Self::OnRevealRootInSystemCommand},
        {30310, &Self::OnRevealItemInSystemCommandStatus, &Self::OnRevealItemInSystemCommand},
        {30311, &Self::OnToggleLockCommandStatus, &Self::OnToggleLockCommand, &Self::GetToggleLockCommandText},
        {30319, &Self::OnMakeACopyCommandStatus, &Self::OnMakeACopyCommand},
        {30320, &Self::OnRefreshAllProjectsCommandStatus, &Self::OnRefreshAllProjectsCommand},
        {30321, &Self::OnSaveAllProjectsCommandStatus, &Self::OnSaveAllProjectsCommand},
        {30322, &Self::OnCloseAllProjectsCommandStatus, &Self::OnCloseAllProjectsCommand},
        {30325, &Self::OnDeleteItemCommandStatus, &Self::OnDeleteItemCommand},
        {11215, &Self::OnCloseAllOtherProjectsCommandStatus, &Self::OnCloseAllOtherProjectsCommand},
        {30313, &Self::OnMovementCommandStatus, &Self::OnMoveHomeCommand},
        {30314, &Self::OnMovementCommandStatus, &Self::OnMoveEndCommand},
        {30315, &Self::OnMovementCommandStatus, &Self::OnMovePageDownCommand},
        {30316, &Self::OnMovementCommandStatus, &Self::OnMovePageUpCommand},
        {30323, &Self::OnZoomCommandStatus, &Self::OnZoomInCommand},
        {30324, &Self::OnZoomCommandStatus, &Self::OnZoomOutCommand},
        {57642, &Self::OnSelectAllCommandStatus, &Self::OnSelectAllCommand},
        {11303, &Self::OnDeselectAllCommandStatus, &Self::OnDeselectAllCommand},
    };
    for (const CommandPair& pair : kCommandPairs)
        if (pair.mID == id) return &pair;
    return nullptr;
}

bool SharedProjectsTabView::FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark,
                                              UTF16String& text) {
    const CommandPair* pair = FindCommandPair(id);
    if (!pair || !(this->*pair->mStatus)(enabled))
        return CommandHandler::FindCommandStatus(id, enabled, checked, mark, text);
    checked = false;
    mark = MenuMark::None;
    if (pair->mText) text = (this->*pair->mText)();
    return true;
}

bool SharedProjectsTabView::ObeyCommand(const Command& command) {
    const CommandPair* pair = FindCommandPair(command.GetID());
    return (pair && (this->*pair->mObey)(command)) || CommandHandler::ObeyCommand(command);
}

bool SharedProjectsTabView::OnMovementCommandStatus(bool& enabled) const {
    enabled = true;
    return true;
}

bool SharedProjectsTabView::OnZoomCommandStatus(bool& enabled) const {
    enabled = true;
    return true;
}

bool SharedProjectsTabView::OnSelectAllCommandStatus(bool& enabled) const {
    enabled = IsCreated();
    return true;
}

bool SharedProjectsTabView::OnDeselectAllCommandStatus(bool& enabled) const {
    enabled = IsCreated();
    return true;
}

bool SharedProjectsTabView::OnSelectAllCommand(const Command&) {
    if (!AreTreeViewsCreated()) return false;
    if (mTreeView->GetViewType() == TreeViewType::SearchResultsView)
        mTreeView->GetSearchResultsView()->SelectAllProjects();
    else
        mTreeView->GetDirectoryView()->SelectAll();
    return true;
}

bool SharedProjectsTabView::OnDeselectAllCommand(const Command&) {
    if (!AreTreeViewsCreated()) return false;
    OnShownView([](auto& view) { view.DeselectAll(); });
    return true;
}

bool SharedProjectsTabView::OnMoveHomeCommand(const Command&) {
    OnShownView([](auto& view) { view.MoveHome(); });
    return true;
}

bool SharedProjectsTabView::OnMoveEndCommand(const Command&) {
    OnShownView([](auto& view) { view.MoveEnd(); });
    return true;
}

bool SharedProjectsTabView::OnMovePageUpCommand(const Command&) {
    OnShownView([](auto& view) { view.MovePageUp(); });
    return true;
}

bool SharedProjectsTabView::OnMovePageDownCommand(const Command&) {
    OnShownView([](auto& view) { view.MovePageDown(); });
    return true;
}

}  // namespace HandlerSharedProjects
