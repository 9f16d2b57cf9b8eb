#include "desk/toolkit/KeyTable.h"

#include <QFile>
#include <QJsonObject>
#include <QKeySequence>

#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"

namespace desk {

namespace {

std::map<int, int> ReadKeys(const QJsonObject& table) {
    std::map<int, int> codes;
    for (auto key = table.begin(); key != table.end(); ++key)
        codes[QKeySequence::fromString(key.key(), QKeySequence::PortableText)[0].key()] = key.value().toInt();
    return codes;
}

}  // namespace

KeyTable::KeyTable() {
    QFile file(QStringLiteral(":/keytables.json"));
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const JsonFile json = ParseJsonObject({text.constData(), static_cast<std::size_t>(text.size())});
    if (json.mState != JsonFile::State::Read) Log(LogLevel::Error, "The key tables: " + json.mReason);
    for (auto table = json.mObject.begin(); table != json.mObject.end(); ++table)
        mTables[ToUTF8(table.key())] = ReadKeys(table.value().toObject());
}

KeyTable& KeyTable::Instance() {
    static KeyTable sInstance;
    return sInstance;
}

void KeyTable::Choose(const std::string& id) {
    if (mTables.contains(id))
        mChosen = id;
    else
        Log(LogLevel::Warning, "There is no key table \"" + id + '"');
}

std::optional<int> KeyTable::FindCode(int key) const {
    const auto table = mTables.find(mChosen);
    if (table == mTables.end()) return {};
    const auto code = table->second.find(key);
    return code == table->second.end() ? std::nullopt : std::optional(code->second);
}

}  // namespace desk
