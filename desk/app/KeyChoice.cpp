#include "desk/app/KeyChoice.h"

#include <QJsonObject>
#include <exception>

#include "desk/app/ProgramCommands.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/core/settings/Profile.h"
#include "desk/framework/MainCommander.h"
#include "desk/toolkit/KeyTable.h"

namespace desk {
namespace {

constexpr QLatin1String kTable("table");

CommandStatus StatusOf(const char* table) {
    const bool isChosen = KeyTable::Instance().GetChosen() == table;
    return {true, true, isChosen, isChosen ? host::MenuMark::Bullet : host::MenuMark::None, {}};
}

}  // namespace

KeyChoice::KeyChoice(const Profile& profile) : mProfile(profile) {
    const SettingsFile file = ReadSettingsFile(profile.PathOf(kFileName));
    mMayWrite = file.mMayWrite;
    if (!file.mNotice.empty()) TellUser(file.mNotice);
    const QString remembered = file.mObject.value(kTable).toString();
    KeyTable::Instance().Choose(remembered.isEmpty() ? KeyTable::kReturnRenames : ToUTF8(remembered));
    const auto add = [this](int command, const char* table) {
        MainCommander::Instance().Register(
            command, [table] { return StatusOf(table); },
            [this, table] {
                Choose(table);
                return true;
            });
    };
    add(kCommandReturnRenames, KeyTable::kReturnRenames);
    add(kCommandReturnOpens, KeyTable::kReturnOpens);
}

KeyChoice::~KeyChoice() {
    for (const int command : {kCommandReturnRenames, kCommandReturnOpens})
        MainCommander::Instance().Register(command, {}, {});
}

void KeyChoice::Choose(const std::string& table) const {
    KeyTable::Instance().Choose(table);
    if (!mMayWrite) return;
    try {
        WriteJsonFile(mProfile.PathOf(kFileName), {{kTable, ToQStringFromUTF8(table)}});
    } catch (const std::exception& exception) {
        Log(LogLevel::Warning, std::string("The choice of keys is not saved: ") + exception.what());
    }
}

}  // namespace desk
