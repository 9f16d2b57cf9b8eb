#include "desk/core/names/Isolation.h"

#include <QChar>
#include <algorithm>

namespace desk {

namespace {

constexpr char16_t kBegin = u'\u2068';
constexpr char16_t kEnd = u'\u2069';

bool IsBidirectionalFormat(char16_t unit) {
    return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

bool HasRightToLeft(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t letter = text[i];
        if (QChar::isHighSurrogate(text[i]) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1]))
            letter = QChar::surrogateToUcs4(text[i], text[i + 1]);
        const QChar::Direction direction = QChar::direction(letter);
        if (direction == QChar::DirR || direction == QChar::DirAL) return true;
    }
    return false;
}

}  // namespace

host::UTF16String Isolate(const host::UTF16String& text) {
    const bool hasOwn = text.find_first_of(u"\u2066\u2067\u2068\u2069") != host::UTF16String::npos;
    return hasOwn || !HasRightToLeft(text) ? text : kBegin + text + kEnd;
}

std::size_t FindIsolate(std::u16string_view text) {
    if (text.empty() || text.front() != kBegin) return 0;
    const std::size_t end = text.find(kEnd);
    if (end == std::u16string_view::npos) return 0;
    const std::u16string_view inside = text.substr(1, end - 1);
    return HasRightToLeft(inside) && std::ranges::none_of(inside, IsBidirectionalFormat) ? end + 1 : 0;
}

}  // namespace desk
