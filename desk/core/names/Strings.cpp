#include "host/core/Strings.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace host {
namespace {

constexpr char16_t kReplacement = u'\uFFFD';
constexpr char32_t kRawByteBase = 0xDC00;

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr bool IsRawByte(char32_t unit) {
    return unit >= kRawByteBase + 0x80 && unit <= kRawByteBase + 0xFF;
}

void AppendUTF16(UTF16String& out, char32_t code) {
    if (code < 0x10000) {
        out += static_cast<char16_t>(code);
        return;
    }
    out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
}

void AppendUTF8(std::string& out, char32_t code) {
    const auto trail = [&](int shift) { out += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        trail(0);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        trail(6);
        trail(0);
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        trail(12);
        trail(6);
        trail(0);
    }
}

struct Decoded {
    char32_t mCode = 0;
    std::size_t mLength = 0;
};

/// The code point at the beginning of `bytes` (not empty); length 0 when no valid sequence stands there.
Decoded DecodeUTF8(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return {};
    char32_t code = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) return {};
        code = code << 6 | (byte & 0x3F);
    }
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
    return {code, length};
}

template <class... Format>
UTF16String Print(Format... format) {
    std::array<char, 400> digits;  // The largest double has 309 digits before the point.
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), format...).ptr;
    return {digits.data(), end};
}

}  // namespace

UTF16String AsciiToUTF16(std::string_view ascii) {
    UTF16String out(ascii.size(), u'\0');
    std::transform(ascii.begin(), ascii.end(), out.begin(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x80 ? static_cast<char16_t>(byte) : kReplacement;
    });
    return out;
}

std::string UTF16to8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            AppendUTF8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[++i] - 0xDC00u));
        else if (IsRawByte(unit))
            out += static_cast<char>(unit - kRawByteBase);
        else
            AppendUTF8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? char32_t{kReplacement} : unit);
    }
    return out;
}

UTF16String UTF8to16(std::string_view utf8) {
    UTF16String out;
    out.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded decoded = DecodeUTF8(utf8);
        if (decoded.mLength)
            AppendUTF16(out, decoded.mCode);
        else
            out += static_cast<char16_t>(kRawByteBase + static_cast<unsigned char>(utf8[0]));
        utf8.remove_prefix(std::max<std::size_t>(decoded.mLength, 1));
    }
    return out;
}

UTF16String WcharToUTF16(std::wstring_view wide) {
    UTF16String out;
    out.reserve(wide.size());
    for (const wchar_t c : wide) {
        const auto code = static_cast<char32_t>(c);
        AppendUTF16(out, code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) ? char32_t{kReplacement} : code);
    }
    return out;
}

UTF16String NumberToString(double value, int precision) {
    return Print(value, std::chars_format::fixed, std::clamp(precision, 0, 17));
}

UTF16String NumberToString(long long value) {
    return Print(value);
}

}  // namespace host
