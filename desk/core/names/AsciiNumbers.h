#pragma once

#include <cstddef>
#include <string_view>

namespace desk {

/// A number's length is one byte of a sort key; file names are not longer.
inline constexpr std::size_t kLongestSortKeyText = 255;

inline bool IsAsciiDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

/// The run of digits from `at` on, without its leading zeros; `at` moves behind it.
inline std::u16string_view TakeNumber(const char16_t*& at, const char16_t* end) {
    while (at != end && *at == u'0') ++at;
    const char16_t* begin = at;
    while (at != end && IsAsciiDigit(*at)) ++at;
    return {begin, static_cast<std::size_t>(at - begin)};
}

}  // namespace desk
