#include "desk/core/language/LanguageTable.h"

#include <QFile>
#include <QLocale>
#include <algorithm>
#include <utility>
#include <vector>

#include "desk/core/log/Log.h"
#include "desk/core/names/Isolation.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "host/core/Localizer.h"

namespace desk {
namespace {

constexpr std::string_view kKeyPrefix = "$$$/";

struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
};

struct CurrentLanguage {
    /// Workers make texts too.
    std::mutex mMutex;
    LanguageTable mTable;
    /// Whole keys to their texts.
    std::unordered_map<std::string, host::UTF16String, TextHash, std::equal_to<>> mCache;
};

CurrentLanguage& Current() {
    static auto& current = *new CurrentLanguage;
    return current;
}

std::string WithoutComments(std::string_view text) {
    std::string out;
    for (;;) {
        const std::size_t begin = text.find("#{");
        out += text.substr(0, begin);
        if (begin == std::string_view::npos) return out;
        const std::size_t end = text.find('}', begin);
        if (end == std::string_view::npos) return out;
        text.remove_prefix(end + 1);
    }
}

/// "de-AT.UTF-8@euro" as "de_AT"; empty when it is no language's tag. Keeps what becomes a file name tame.
std::string NormalizedTag(std::string_view tag) {
    std::string out(tag.substr(0, tag.find_first_of(".@")));
    std::ranges::replace(out, '-', '_');
    const auto isTame = [](char c) {
        return c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return out.size() <= 35 && std::ranges::all_of(out, isTame) ? out : std::string();
}

bool IsEnglish(std::string_view tag) {
    return tag == "en" || tag.starts_with("en_") || tag == "C" || tag == "POSIX";
}

/// Adds the program's own table and then the profile's; false when there is none.
bool AddTables(LanguageTable& table, const std::string& tag, const std::string& profileFolder) {
    bool isKnown = false;
    const auto add = [&](const JsonFile& file, const std::string& source) {
        if (file.mState == JsonFile::State::Absent) return;
        if (file.mState == JsonFile::State::Read) {
            table.Add(file.mObject, source);
            isKnown = true;
        } else {
            Log(LogLevel::Warning, "The language table \"" + source + "\" is left out: " + file.mReason);
        }
    };
    QFile resource(ToQStringFromUTF8(":/languages/" + tag + ".json"));
    if (resource.open(QIODevice::ReadOnly))
        add(ParseJsonObject(resource.readAll().toStdString()), tag + ".json");
    if (profileFolder.empty()) return isKnown;
    const std::string path = profileFolder + "/languages/" + tag + ".json";
    add(ReadJsonFile(path), path);
    return isKnown;
}

/// Loads the tables of `tag`, those of its country over those of its language. Returns what was found.
std::string Load(LanguageTable& table, const std::string& tag, const std::string& profileFolder) {
    std::string found;
    for (std::size_t end = tag.find('_');; end = tag.find('_', end + 1)) {
        const std::string part = tag.substr(0, end);
        if (AddTables(table, part, profileFolder)) found = part;
        if (end == std::string::npos) return found;
    }
}

std::vector<std::string> WantedLanguages(std::string_view tag) {
    if (!tag.empty()) return {NormalizedTag(tag)};
    std::vector<std::string> tags;
    for (const QString& language : QLocale::system().uiLanguages())
        tags.push_back(NormalizedTag(ToUTF8(language)));
    return tags;
}

}  // namespace

LocalizationKey ParseLocalizationKey(std::string_view key) {
    if (!key.starts_with(kKeyPrefix)) return {{}, std::string(key)};
    const std::size_t equals = key.find('=');
    if (equals == std::string_view::npos) return {key, std::string(key)};
    return {key.substr(0, equals), WithoutComments(key.substr(equals + 1))};
}

void LanguageTable::Add(const QJsonObject& texts, const std::string& source) {
    for (auto it = texts.begin(); it != texts.end(); ++it) {
        if (it.value().isString())
            mTexts.insert_or_assign(ToUTF8(it.key()), ToUTF16(it.value().toString()));
        else
            Log(LogLevel::Warning,
                "The language table \"" + source + "\": \"" + ToUTF8(it.key()) + "\" is no text");
    }
}

const host::UTF16String* LanguageTable::Find(std::string_view name) const {
    const auto found = mTexts.find(std::string(name));
    return found == mTexts.end() ? nullptr : &found->second;
}

std::string SetLanguage(std::string_view tag, const std::string& profileFolder) {
    CurrentLanguage& current = Current();
    const std::lock_guard lock(current.mMutex);
    current.mTable = {};
    current.mCache.clear();
    for (const std::string& wanted : WantedLanguages(tag)) {
        if (IsEnglish(wanted)) {
            Load(current.mTable, wanted, profileFolder);
            return "en";
        }
        const std::string found = Load(current.mTable, wanted, profileFolder);
        if (!found.empty()) return found;
    }
    Log(LogLevel::Info, "There are no texts in the language \"" + std::string(tag) + "\"; they are English");
    return "en";
}

}  // namespace desk

namespace host {
namespace {

/// The number after "@" at `position`; its end, or `position` when there is none.
std::size_t ReadPlaceholder(const UTF16String& text, std::size_t position, std::size_t& index) {
    index = 0;
    while (position < text.size() && text[position] >= u'0' && text[position] <= u'9' && index < 1000)
        index = index * 10 + (text[position++] - u'0');
    return position;
}

}  // namespace

Localizer* Localizer::Get() {
    static Localizer localizer;
    return &localizer;
}

UTF16String Localizer::Localize(std::string_view key) const {
    if (!key.starts_with(desk::kKeyPrefix)) return UTF8to16(key);
    desk::CurrentLanguage& current = desk::Current();
    const std::lock_guard lock(current.mMutex);
    auto& cache = current.mCache;
    if (const auto found = cache.find(key); found != cache.end()) return found->second;
    const desk::LocalizationKey parsed = desk::ParseLocalizationKey(key);
    const UTF16String* text = current.mTable.Find(parsed.mName);
    return cache.emplace(key, text ? *text : UTF8to16(parsed.mDefault)).first->second;
}

UTF16String ZString(std::string_view key, std::initializer_list<UTF16String> arguments) {
    const UTF16String text = Localizer::Get()->Localize(key);
    UTF16String out;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t index = 0;
        const std::size_t end = text[i] == u'@' ? ReadPlaceholder(text, i + 1, index) : i + 1;
        if (text[i] == u'@' && end > i + 1 && index < arguments.size())
            out += desk::Isolate(arguments.begin()[index]);
        else
            out.append(text, i, end - i);
        i = end;
    }
    return out;
}

}  // namespace host
