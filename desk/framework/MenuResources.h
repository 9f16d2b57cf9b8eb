#pragma once

#include <string>
#include <string_view>

#include "host/core/Export.h"

class QMenu;
class QWidget;

namespace desk {

/// Menus by the ID of their resource, from menu files (JSON): the program's own (":/menus/*.json") and any
/// in the profile's "menus" folder, which go before. A file that is not understood is logged and left out.
/// An entry names a command ID and a localisation key, a sub-menu, or a separator; shortcuts come from
/// `ShortcutManager`. UI thread.
class ZUHOST_API MenuResources {
public:
    static MenuResources& Instance();
    void Load(const std::string& profileFolder);
    bool HasMenu(std::string_view menuID) const;
    /// Fills `menu` with the entries of the resource; each entry's text, mark and enabled state are asked of
    /// the `CommandRouter` when the menu is about to show, and choosing it sends its command.
    void Fill(QMenu& menu, std::string_view menuID);
    /// Shows a menu at a screen position, as a context menu.
    void Track(std::string_view menuID, QWidget& owner, int screenX, int screenY);
};

}  // namespace desk
