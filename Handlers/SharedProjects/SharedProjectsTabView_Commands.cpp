// Which command is whose, and the commands on the view itself: selection and zoom.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsCommands.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/framework/CommandIdentifiers.h"

namespace HandlerSharedProjects {

namespace {

const PanelCommand* FindPanelCommand(int id) {
    for (const std::span<const PanelCommand> topic :
         {GetFileCommands(), GetProjectCommands(), GetViewCommands()})
        if (const auto found = std::ranges::find(topic, id, &PanelCommand::mID); found != topic.end())
            return &*found;
    return nullptr;
}

CommandStatus IsAlwaysEnabled(const SharedProjectsTabView&) {
    return UTF16String();
}

CommandStatus OnSelectCommandStatus(const SharedProjectsTabView& panel) {
    return EnabledIf(panel.IsCreated(), kNoProductionIsOpen);
}

bool OnSelectAllCommand(SharedProjectsTabView& panel) {
    if (!panel.AreTreeViewsCreated()) return false;
    const SharedProjectsTreeView& trees = panel.GetTreeView();
    if (trees.GetViewType() == TreeViewType::SearchResultsView)
        trees.GetSearchResultsView()->SelectAllProjects();
    else
        trees.GetDirectoryView()->SelectAll();
    return true;
}

bool OnDeselectAllCommand(SharedProjectsTabView& panel) {
    SharedProjectsItemTree* items = panel.GetShownItems();
    if (items) items->DeselectAll();
    return items != nullptr;
}

template <void (SharedProjectsItemTree::*Move)()>
bool OnMoveCommand(SharedProjectsTabView& panel) {
    if (SharedProjectsItemTree* items = panel.GetShownItems()) (items->*Move)();
    return true;
}

template <int Direction>
bool OnZoomCommand(SharedProjectsTabView& panel) {
    panel.StepZoom(Direction);
    return true;
}

}  // namespace

CommandStatus EnabledIf(bool isPossible, const char* reasonKey, std::initializer_list<UTF16String> names) {
    return isPossible ? UTF16String() : ZString(reasonKey, names);
}

std::span<const PanelCommand> GetViewCommands() {
    using Items = SharedProjectsItemTree;
    static constexpr PanelCommand kCommands[] = {
        {CommandID::kSelectAll, OnSelectCommandStatus, OnSelectAllCommand},
        {CommandID::kDeselectAll, OnSelectCommandStatus, OnDeselectAllCommand},
        {CommandID::kMoveHome, IsAlwaysEnabled, OnMoveCommand<&Items::MoveHome>},
        {CommandID::kMoveEnd, IsAlwaysEnabled, OnMoveCommand<&Items::MoveEnd>},
        {CommandID::kMovePageUp, IsAlwaysEnabled, OnMoveCommand<&Items::MovePageUp>},
        {CommandID::kMovePageDown, IsAlwaysEnabled, OnMoveCommand<&Items::MovePageDown>},
        {CommandID::kZoomIn, IsAlwaysEnabled, OnZoomCommand<1>},
        {CommandID::kZoomOut, IsAlwaysEnabled, OnZoomCommand<-1>},
    };
    return kCommands;
}

bool SharedProjectsTabView::FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark,
                                              UTF16String& text) {
    const PanelCommand* command = FindPanelCommand(id);
    const CommandStatus status = command ? command->mStatus(*this) : CommandStatus();
    if (!status) return CommandHandler::FindCommandStatus(id, enabled, checked, mark, text);
    enabled = status->empty();
    checked = false;
    mark = MenuMark::None;
    if (enabled && command->mText) text = command->mText(*this);
    return true;
}

UTF16String SharedProjectsTabView::DescribeWhyDisabled(int id) {
    const PanelCommand* command = FindPanelCommand(id);
    const CommandStatus status = command ? command->mStatus(*this) : CommandStatus();
    return status ? *status : CommandHandler::DescribeWhyDisabled(id);
}

bool SharedProjectsTabView::ObeyCommand(const Command& command) {
    const PanelCommand* own = FindPanelCommand(command.GetID());
    return (own && own->mObey(*this)) || CommandHandler::ObeyCommand(command);
}

}  // namespace HandlerSharedProjects
