#pragma once

#include <string>
#include <string_view>

#include "desk/framework/MenuFiles.h"
#include "host/core/Export.h"

class QAction;
class QMenu;
class QWidget;

namespace desk {

/// Menus by the ID of their resource, from menu files (JSON): the program's own (":/menus/*.json") and any
/// in the profile's "menus" folder, which go before. A file that is not understood is logged and left out.
/// An entry names a command ID and a localisation key, a sub-menu, or a separator; shortcuts come from
/// `Shortcuts`. UI thread.
class ZUHOST_API MenuResources {
public:
    static MenuResources& Instance();
    void Load(const std::string& profileFolder);
    bool HasMenu(std::string_view menuID) const;
    /// Adds the entries of the resource to `menu`; each entry's text, mark and enabled state are asked of
    /// the `CommandRouter` when the menu is about to show, and choosing it sends its command. A menu that is
    /// not known is logged.
    void Fill(QMenu& menu, std::string_view menuID);
    /// Shows a menu at a screen position, as a context menu of `owner`, and returns at once; its window's
    /// status bar tells why entries are grey. The menu goes when it is closed, and with its owner.
    void Track(std::string_view menuID, QWidget& owner, int screenX, int screenY);

private:
    Menus mMenus;
};

}  // namespace desk
