#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// `text` as it is to be put into a sentence: when it has right-to-left letters, between U+2068 and U+2069
/// (first strong isolate, pop directional isolate; Unicode Standard Annex 9), so that it does not turn the
/// sentence around. A text with isolates of its own stays as it is. Any thread.
ZUHOST_API host::UTF16String Isolate(const host::UTF16String& text);

/// The length of the isolate that `Isolate` made at the beginning of `text`; 0 when none stands there. Any
/// thread.
ZUHOST_API std::size_t FindIsolate(std::u16string_view text);

}  // namespace desk
