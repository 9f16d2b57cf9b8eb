#include "desk/framework/MenuResources.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QStatusTipEvent>
#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "desk/core/language/Localized.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/Shortcuts.h"
#include "desk/toolkit/Theme.h"

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

void UpdateAction(QAction& action, const MenuEntry& entry, const QString& text) {
    const int commandID = entry.mCommandID;
    const CommandStatus status = CommandRouter::Instance().FindStatus(commandID);
    const bool isMarked = status.mIsChecked || status.mMark != host::MenuMark::None;
    const QString key = Shortcuts::Instance().GetKey(commandID).toString(QKeySequence::NativeText);
    const QString shown = status.mText.empty() ? text : LiteralText(status.mText);
    action.setText(key.isEmpty() ? shown : shown + QLatin1Char('\t') + key);
    const bool isEnabled = status.mIsKnown && status.mIsEnabled;
    action.setEnabled(isEnabled);
    action.setVisible(isEnabled || !entry.mNeedsEnabled);
    action.setStatusTip(isEnabled ? QString()
                                  : ToDisplayText(CommandRouter::Instance().DescribeWhyDisabled(commandID)));
    action.setCheckable(isMarked);
    action.setChecked(isMarked);
}

void AddCommand(QMenu& menu, const MenuEntry& entry) {
    const QString text = Localized(entry.mText);
    const int commandID = entry.mCommandID;
    QAction* action = menu.addAction(text);
    action->setObjectName(QStringLiteral("command-%1").arg(commandID));
    UpdateAction(*action, entry, text);
    QObject::connect(&menu, &QMenu::aboutToShow, action, [=] { UpdateAction(*action, entry, text); });
    QObject::connect(action, &QAction::triggered, &menu,
                     [commandID] { CommandRouter::Instance().Send(commandID); });
}

/// A window of its own keeps the tips of a menu from the window that it belongs to.
void TellTips(QMenu& menu, QWidget& owner) {
    const auto tell = [&owner](const QString& tip) {
        QStatusTipEvent event(tip);
        QCoreApplication::sendEvent(&owner, &event);
    };
    QObject::connect(&menu, &QMenu::hovered, &owner, [tell](QAction* action) { tell(action->statusTip()); });
    QObject::connect(&menu, &QMenu::aboutToHide, &owner, [tell] { tell({}); });
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
    // Whatever goes while the menu shows, it goes with its owner.
    auto* menu = new QMenu(&owner);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(ToQStringFromUTF8(menuID));
    Fill(*menu, menuID);
    TellTips(*menu, owner);
    menu->isEmpty() ? menu->deleteLater() : menu->popup(QPoint(screenX, screenY));
}

}  // namespace desk
