#pragma once

#include <QJsonObject>
#include <map>
#include <string>
#include <vector>

namespace desk {

/// A line of a menu: a command, a sub-menu, or a separator (neither).
struct MenuEntry {
    int mCommandID = 0;
    /// A localisation key.
    std::string mText;
    bool mIsMenu = false;
    /// The entry shows only while its command is enabled.
    bool mNeedsEnabled = false;
    std::vector<MenuEntry> mEntries;
};

/// Menus by their ID.
using Menus = std::map<std::string, std::vector<MenuEntry>, std::less<>>;

/// Reads the object of a menu file: by menu ID a list of entries, each
/// {"command": ID, "text": key} (with "needsEnabled": true one that shows only while it is enabled), {"menu":
/// key, "entries": [...]} or {"separator": true}. Throws `std::runtime_error` with the menu and the entry that
/// is not understood.
Menus ReadMenus(const QJsonObject& file);

}  // namespace desk
