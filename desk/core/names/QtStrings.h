#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Copies the UTF-16 units as they stand, those that stand for raw bytes too (see `host::UTF16String`), so
/// that `ToUTF16(ToQString(x)) == x`. Any thread.
ZUHOST_API QString ToQString(std::u16string_view text);
ZUHOST_API host::UTF16String ToUTF16(const QString& text);

/// Converts UTF-8 to and from Qt's text by the host's lossless rules. Any thread.
ZUHOST_API QString ToQStringFromUTF8(std::string_view utf8);
ZUHOST_API std::string ToUTF8(const QString& text);

/// `text` as a window's title shows it, in which Qt replaces "[*]" by a mark of unsaved changes. Any thread.
ZUHOST_API QString ToWindowTitle(QString text);

}  // namespace desk
