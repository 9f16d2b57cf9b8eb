#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"

namespace host {

/// The host's string: UTF-16 code units. Used for all paths and all texts that a user sees.
///
/// A path may hold a unit in U+DC80..U+DCFF that is not the second half of a surrogate pair:
/// it stands for one byte (0x80..0xFF) of a file name that is not UTF-8, so that every name a
/// disk can hold survives the trip to UTF-16 and back.
using UTF16String = std::u16string;
using UTF16StringVec = std::vector<UTF16String>;

/// Converts 7-bit ASCII. Bytes above 0x7F become U+FFFD. Any thread.
ZUHOST_API UTF16String AsciiToUTF16(std::string_view ascii);

/// Converts UTF-16 to UTF-8 (RFC 3629). A unit that stands for a raw byte (see `UTF16String`)
/// becomes that byte; any other lone surrogate becomes U+FFFD. Any thread.
ZUHOST_API std::string UTF16to8(std::u16string_view text);

/// Converts UTF-8 (RFC 3629) to UTF-16. Each byte that is not part of valid UTF-8 becomes the unit
/// U+DC00 + byte, so `UTF16to8(UTF8to16(x)) == x` for every byte string. Any thread.
ZUHOST_API UTF16String UTF8to16(std::string_view utf8);

/// Converts the C library's wide text (UTF-32 on this platform). Any thread.
ZUHOST_API UTF16String WcharToUTF16(std::wstring_view wide);

/// Formats `value` with `precision` digits after the point (0..17), "." as the decimal point and no
/// grouping, whatever the locale. Any thread.
ZUHOST_API UTF16String NumberToString(double value, int precision);

/// Formats `value` as plain decimal digits, "-" before negative values. Any thread.
ZUHOST_API UTF16String NumberToString(long long value);

}  // namespace host
