// The panel's commands: which function of the view answers which command.
#include "Handlers/SharedProjects/SharedProjectsTabView.h"

namespace HandlerSharedProjects {

namespace {

/// Runs `action` on the tree that is shown.
template <class Action>
void OnShownView(const SharedProjectsTabView& tabView, Action action) {
    if (!tabView.AreTreeViewsCreated()) return;
    const SharedProjectsTreeView& views = tabView.GetTreeView();
    if (views.GetViewType() == TreeViewType::SearchResultsView)
        action(*views.GetSearchResultsView());
    else
        action(*views.GetDirectoryView());
}

}  // namespace

/// What a command's status is asked of, and who carries it out. Both answer false to decline: the command
/// then goes to the base.
struct SharedProjectsTabView::CommandPair {
    int mID;
    bool (SharedProjectsTabView::*mStatus)(bool& enabled) const;
    bool (SharedProjectsTabView::*mObey)(const Command& command);
};

const SharedProjectsTabView::CommandPair* SharedProjectsTabView::FindCommandPair(int id) {
    using Self = SharedProjectsTabView;
    static constexpr CommandPair kCommandPairs[] = {
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
    OnShownView(*this, [](auto& view) { view.DeselectAll(); });
    return true;
}

bool SharedProjectsTabView::OnMoveHomeCommand(const Command&) {
    OnShownView(*this, [](auto& view) { view.MoveHome(); });
    return true;
}

bool SharedProjectsTabView::OnMoveEndCommand(const Command&) {
    OnShownView(*this, [](auto& view) { view.MoveEnd(); });
    return true;
}

bool SharedProjectsTabView::OnMovePageUpCommand(const Command&) {
    OnShownView(*this, [](auto& view) { view.MovePageUp(); });
    return true;
}

bool SharedProjectsTabView::OnMovePageDownCommand(const Command&) {
    OnShownView(*this, [](auto& view) { view.MovePageDown(); });
    return true;
}

}  // namespace HandlerSharedProjects
