#include "desk/framework/MenuResources.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "desk/core/language/Localized.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/Shortcuts.h"

namespace desk {
namespace {

/// Adds the menus of a file; those that are there already stay.
void AddFile(Menus& menus, const JsonFile& json, const std::string& path) {
    try {
        if (json.mState != JsonFile::State::Read) throw std::runtime_error(json.mReason);
        menus.merge(ReadMenus(json.mObject));
    } catch (const std::exception& error) {
        Log(LogLevel::Warning, "The menu file " + path + " is left out: " + error.what());
    }
}

void AddProfileFiles(Menus& menus, const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code error;
    for (std::filesystem::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error))
        if (file->path().extension() == ".json") paths.push_back(file->path().string());
    std::ranges::sort(paths);
    for (const std::string& path : paths) AddFile(menus, ReadJsonFile(path), path);
}

void AddOwnFiles(Menus& menus) {
    for (const QFileInfo& info : QDir(QStringLiteral(":/menus")).entryInfoList({QStringLiteral("*.json")})) {
        QFile file(info.filePath());
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        AddFile(menus, ParseJsonObject({text.constData(), static_cast<std::size_t>(text.size())}),
                ToUTF8(info.filePath()));
    }
}

/// A text that is no resource's, so that "&" is no mark of a mnemonic.
QString LiteralText(const host::UTF16String& text) {
    return ToQString(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

void UpdateAction(QAction& action, int commandID, const QString& text) {
    const CommandStatus status = CommandRouter::Instance().FindStatus(commandID);
    const bool isMarked = status.mIsChecked || status.mMark != host::MenuMark::None;
    const QString key = Shortcuts::Instance().GetKey(commandID).toString(QKeySequence::NativeText);
    const QString shown = status.mText.empty() ? text : LiteralText(status.mText);
    action.setText(key.isEmpty() ? shown : shown + QLatin1Char('\t') + key);
    action.setEnabled(status.mIsKnown && status.mIsEnabled);
    action.setCheckable(isMarked);
    action.setChecked(isMarked);
}

void AddCommand(QMenu& menu, const MenuEntry& entry) {
    const QString text = Localized(entry.mText);
    const int commandID = entry.mCommandID;
    QAction* action = menu.addAction(text);
    action->setObjectName(QStringLiteral("command-%1").arg(commandID));
    UpdateAction(*action, commandID, text);
    QObject::connect(&menu, &QMenu::aboutToShow, action, [=] { UpdateAction(*action, commandID, text); });
    QObject::connect(action, &QAction::triggered, &menu,
                     [commandID] { CommandRouter::Instance().Send(commandID); });
}

void AddEntries(QMenu& menu, const std::vector<MenuEntry>& entries) {
    for (const MenuEntry& entry : entries) {
        if (entry.mIsMenu)
            AddEntries(*menu.addMenu(Localized(entry.mText)), entry.mEntries);
        else if (entry.mCommandID)
            AddCommand(menu, entry);
        else
            menu.addSeparator();
    }
}

}  // namespace

MenuResources& MenuResources::Instance() {
    static MenuResources sInstance;
    return sInstance;
}

void MenuResources::Load(const std::string& profileFolder) {
    mMenus.clear();
    AddProfileFiles(mMenus, profileFolder + "/menus");
    AddOwnFiles(mMenus);
}

bool MenuResources::HasMenu(std::string_view menuID) const {
    return mMenus.contains(menuID);
}

void MenuResources::Fill(QMenu& menu, std::string_view menuID) {
    const auto found = mMenus.find(menuID);
    if (found == mMenus.end()) {
        Log(LogLevel::Warning, "There is no menu \"" + std::string(menuID) + '"');
        return;
    }
    if (const auto name = Shortcuts::Instance().GetMenuDisplayName(menuID); !name.empty())
        menu.setAccessibleName(ToQString(name));
    AddEntries(menu, found->second);
}

void MenuResources::Track(std::string_view menuID, QWidget& owner, int screenX, int screenY) {
    QMenu menu(&owner);
    Fill(menu, menuID);
    if (!menu.isEmpty()) menu.exec(QPoint(screenX, screenY));
}

}  // namespace desk
