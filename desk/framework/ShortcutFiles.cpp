#include "desk/framework/ShortcutFiles.h"

#include <QJsonArray>
#include <algorithm>
#include <optional>

#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

std::optional<QKeySequence> ParseKey(const QJsonValue& value) {
    const QKeySequence key = QKeySequence::fromString(value.toString(), QKeySequence::PortableText);
    if (key.isEmpty()) return {};
    for (int i = 0; i < key.count(); ++i) {
        const Qt::Key part = key[static_cast<uint>(i)].key();
        if (part == Qt::Key_unknown || part == Qt::Key(0)) return {};
    }
    return key;
}

/// A key, a list of keys, or "" and [] for none.
std::optional<std::vector<QKeySequence>> ParseKeys(const QJsonValue& value) {
    std::vector<QKeySequence> keys;
    if (value.isString() && value.toString().isEmpty()) return keys;
    if (!value.isString() && !value.isArray()) return {};
    for (const QJsonValue& item : value.isArray() ? value.toArray() : QJsonArray{value}) {
        const auto key = ParseKey(item);
        if (!key) return {};
        keys.push_back(*key);
    }
    return keys;
}

}  // namespace

void ReadKeyBindings(const QJsonObject& file, const std::string& fileName, KeyBindings& bindings) {
    for (auto context = file.begin(); context != file.end(); ++context) {
        const std::string contextName = ToUTF8(context.key());
        if (!context.value().isObject()) {
            Log(LogLevel::Warning, fileName + ": \"" + contextName + "\" must be an object of commands");
            continue;
        }
        const QJsonObject commands = context.value().toObject();
        for (auto command = commands.begin(); command != commands.end(); ++command) {
            const std::string commandName = ToUTF8(command.key());
            if (auto keys = ParseKeys(command.value()))
                bindings[contextName][commandName] = std::move(*keys);
            else
                Log(LogLevel::Warning, fileName + ": the keys of \"" + commandName + "\" in \"" + contextName +
                                           "\" are not understood");
        }
    }
}

}  // namespace desk
