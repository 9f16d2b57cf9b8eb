#pragma once

#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/toolkit/UI_Node.h"

namespace host {

/// A menu of the host's resources. A cheap value. UI thread.
class ZUHOST_API Menu {
public:
    /// No menu.
    Menu() = default;
    /// The menu with the resource ID `menuID`; not valid when there is none, which is logged.
    static Menu Load(std::string_view menuID);

    bool IsValid() const { return !mID.empty(); }
    /// Empty for no menu.
    const std::string& GetID() const { return mID; }

private:
    explicit Menu(std::string_view menuID) : mID(menuID) {}

    std::string mID;
};

}  // namespace host

/// Menus on the screen. UI thread.
namespace host::MenuUtils {

/// Shows `menu` as a context menu of `node`, its corner at `point` (view units of the node), and returns at
/// once. The node is kept alive by whoever owns it: when it goes, the menu closes.
///
/// Each entry shows the status of its command as it is when the menu opens: text, mark, and grey for what
/// cannot be carried out; the status bar then says why (`CommandHandler::DescribeWhyDisabled`). The chosen
/// command goes to the commander on duty, as from any menu. Nothing for a menu that is not valid and a node
/// that is nowhere on the screen.
ZUHOST_API void TrackContextMenu(const Menu& menu, UI_Node& node, Point point);

}  // namespace host::MenuUtils
