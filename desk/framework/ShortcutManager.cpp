#include "host/framework/ShortcutManager.h"

#include "desk/framework/Shortcuts.h"

namespace host {

CommandContext::~CommandContext() = default;

ShortcutManager* ShortcutManager::Instance() {
    static ShortcutManager sInstance;
    return &sInstance;
}

void ShortcutManager::RegisterCommandContext(PopulateFunction populate) {
    desk::Shortcuts::Instance().RegisterCommandContext(populate);
}

CommandContext* ShortcutManager::AddContext(std::string_view name, const UTF16String& displayName) {
    return desk::Shortcuts::Instance().AddContext(name, displayName);
}

CommandContext* ShortcutManager::GetContext(std::string_view name) {
    return desk::Shortcuts::Instance().GetContext(name);
}

void ShortcutManager::ApplyContext(std::string_view name, bool exclusive) {
    desk::Shortcuts::Instance().ApplyContext(name, exclusive);
}

void ShortcutManager::AddWindowMenuID(std::string_view context, const UTF16String& menuDisplayName,
                                      std::string_view menuID) {
    desk::Shortcuts::Instance().AddWindowMenuID(context, menuDisplayName, menuID);
}

}  // namespace host
