#pragma once

#include <algorithm>
#include <string_view>

/// The case of ASCII letters, which is all that names of the program's own (extensions, folders) are compared
/// without. Any thread.
namespace host {

/// Folds the ASCII letters A to Z to lower case; everything else stays. Of a byte of UTF-8, or a unit of
/// UTF-16.
template <class Unit>
constexpr Unit FoldASCII(Unit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<Unit>(unit + ('a' - 'A')) : unit;
}

/// True for texts that differ in the case of ASCII letters at most.
constexpr bool IsEqualFoldingASCII(std::u16string_view a, std::u16string_view b) {
    return std::ranges::equal(a, b, {}, FoldASCII<char16_t>, FoldASCII<char16_t>);
}

/// True when `text` ends like `ending`, and has something before it.
constexpr bool HasEndingFoldingASCII(std::u16string_view text, std::u16string_view ending) {
    return text.size() > ending.size() && IsEqualFoldingASCII(text.substr(text.size() - ending.size()), ending);
}

}  // namespace host
