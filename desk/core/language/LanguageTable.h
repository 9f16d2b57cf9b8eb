#pragma once

#include <QJsonObject>
#include <string>
#include <string_view>
#include <unordered_map>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// The parts of a localisation key "$$$/Area/Name=Default text#{comment}".
struct LocalizationKey {
    /// "$$$/Area/Name"; empty when the text is no key.
    std::string_view mName;
    /// The English text without the translators' comments.
    std::string mDefault;
};

/// Takes a localisation key apart. A key without "=" has its own name as the default. Any thread.
ZUHOST_API LocalizationKey ParseLocalizationKey(std::string_view key);

/// The texts of one language by the names of their keys.
class ZUHOST_API LanguageTable {
public:
    /// Adds the texts of a table, over those that are there. Values that are no text are logged with
    /// `source` and left out.
    void Add(const QJsonObject& texts, const std::string& source);
    /// The text of the key `name`, or null.
    const host::UTF16String* Find(std::string_view name) const;
    bool IsEmpty() const { return mTexts.empty(); }

private:
    std::unordered_map<std::string, host::UTF16String> mTexts;
};

/// Chooses the language of all texts that are localised from now on: `tag` is a language with or without a
/// country ("de", "de_AT", "de-AT", "de_DE.UTF-8"), or empty for the system's. Texts come from
/// "languages/<tag>.json" in `profileFolder` (may be empty), then from the program's own tables, those of the
/// country before those of the language; what has no text stays English. An unknown language means English;
/// a broken table is logged and left out. Returns the language in effect ("de_AT", "de", "en"). UI thread.
ZUHOST_API std::string SetLanguage(std::string_view tag, const std::string& profileFolder);

}  // namespace desk
