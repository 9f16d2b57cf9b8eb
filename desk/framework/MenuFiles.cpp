#include "desk/framework/MenuFiles.h"

#include <QJsonArray>
#include <stdexcept>

#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

constexpr int kMaxDepth = 8;

std::vector<MenuEntry> ReadEntries(const QJsonValue& value, int depth);

MenuEntry ReadEntry(const QJsonObject& object, int depth) {
    const QJsonValue command = object[QLatin1String("command")];
    const QJsonValue text = object[QLatin1String("text")];
    const QJsonValue menu = object[QLatin1String("menu")];
    if (object[QLatin1String("separator")].toBool()) return {};
    if (menu.isString() && !menu.toString().isEmpty())
        return {0, ToUTF8(menu.toString()), true, false,
                ReadEntries(object[QLatin1String("entries")], depth + 1)};
    if (command.toInt() <= 0 || text.toString().isEmpty())
        throw std::runtime_error("needs \"command\" and \"text\", \"menu\" and \"entries\", or \"separator\"");
    return {
        command.toInt(), ToUTF8(text.toString()), false, object[QLatin1String("needsEnabled")].toBool(), {}};
}

std::vector<MenuEntry> ReadEntries(const QJsonValue& value, int depth) {
    if (!value.isArray()) throw std::runtime_error("needs a list of entries");
    if (depth > kMaxDepth) throw std::runtime_error("is too deep");
    std::vector<MenuEntry> entries;
    for (const QJsonValue& item : value.toArray()) {
        try {
            entries.push_back(ReadEntry(item.toObject(), depth));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("entry " + std::to_string(entries.size() + 1) + ' ' + error.what());
        }
    }
    return entries;
}

}  // namespace

Menus ReadMenus(const QJsonObject& file) {
    Menus menus;
    for (auto menu = file.begin(); menu != file.end(); ++menu) {
        const std::string menuID = ToUTF8(menu.key());
        try {
            menus[menuID] = ReadEntries(menu.value(), 1);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("menu \"" + menuID + "\": " + error.what());
        }
    }
    return menus;
}

}  // namespace desk
