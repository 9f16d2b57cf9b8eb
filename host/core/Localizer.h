#pragma once

#include <initializer_list>
#include <string_view>

#include "host/core/Strings.h"

namespace host {

/// Turns localisation keys into the user's language.
///
/// A key has the form "$$$/Area/Name=Default text#{comment}": up to the first "=" the name, then the
/// English default; "#{" starts a translator's comment, up to "}", that is never shown.
/// Any thread.
class ZUHOST_API Localizer {
public:
    /// The process-wide localiser; never null.
    static Localizer* Get();

    /// Returns the text of `key` in the current language, or the key's own default when the language's
    /// table has none. A string that is no key (does not begin with "$$$/") is returned as it stands.
    UTF16String Localize(std::string_view key) const;
};

/// Localises `key` (see `Localizer`) and replaces "@0", "@1", ... by `arguments` in that order; a
/// placeholder without an argument stays, and the arguments are not searched for placeholders. An argument with
/// right-to-left letters stands between U+2068 and U+2069, so that it does not turn the sentence around: the
/// text is for people, and no name. Any thread.
ZUHOST_API UTF16String ZString(std::string_view key, std::initializer_list<UTF16String> arguments = {});

/// What an error of the system (an errno, errno(3)) means, in the user's language where it has a text for it,
/// else in the system's words; without a full stop. Any thread.
ZUHOST_API UTF16String DescribeSystemError(int systemError);

}  // namespace host
