#include <gtest/gtest.h>

#include <limits>

#include "desk/core/QtStrings.h"
#include "host/core/Strings.h"

using host::UTF16to8;
using host::UTF8to16;

TEST(StringsTest, EveryByteStringSurvivesTheRoundTrip) {
    // All strings of two bytes, between text that could wrongly join with them.
    for (unsigned first = 0; first < 256; ++first)
        for (unsigned second = 0; second < 256; ++second) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            for (const std::string& bytes :
                 {pair, "\xF0\x9F\x98\x80" + pair + "\xC3\xA9", "\xED\xA0" + pair + "\x80"}) {
                ASSERT_EQ(UTF16to8(UTF8to16(bytes)), bytes);
                ASSERT_EQ(desk::ToUTF8(desk::ToQStringFromUTF8(bytes)), bytes);
            }
        }
}

TEST(StringsTest, OnlyValidUTF8BecomesText) {
    EXPECT_EQ(UTF8to16("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), u"a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(UTF8to16("\xED\x9F\xBF\xEE\x80\x80"), u"\uD7FF\uE000");
    EXPECT_EQ(UTF8to16("\xF4\x8F\xBF\xBF"), u"\U0010FFFF");
    const auto raw = [](std::initializer_list<int> bytes) {
        host::UTF16String text;
        for (const int byte : bytes) text += static_cast<char16_t>(0xDC00 + byte);
        return text;
    };
    EXPECT_EQ(UTF8to16("\xC0\x80"), raw({0xC0, 0x80})) << "overlong";
    EXPECT_EQ(UTF8to16("\xE0\x9F\xBF"), raw({0xE0, 0x9F, 0xBF})) << "overlong";
    EXPECT_EQ(UTF8to16("\xF0\x8F\xBF\xBF"), raw({0xF0, 0x8F, 0xBF, 0xBF})) << "overlong";
    EXPECT_EQ(UTF8to16("\xED\xA0\x80"), raw({0xED, 0xA0, 0x80})) << "surrogate";
    EXPECT_EQ(UTF8to16("\xF4\x90\x80\x80"), raw({0xF4, 0x90, 0x80, 0x80})) << "past the last code point";
    EXPECT_EQ(UTF8to16("x\xE2\x82"), u"x" + raw({0xE2, 0x82})) << "cut";
}

TEST(StringsTest, LoneSurrogatesBecomeBytesOrTheReplacement) {
    using Text = host::UTF16String;
    EXPECT_EQ(UTF16to8(Text{0xDC80, 0xDCFF}), "\x80\xFF");
    EXPECT_EQ(UTF16to8(Text{0xDC7F}), "\xEF\xBF\xBD");
    EXPECT_EQ(UTF16to8(Text{0xDD00}), "\xEF\xBF\xBD");
    EXPECT_EQ(UTF16to8(Text{0xD800, u'a'}),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(UTF16to8(Text{u'a', 0xDBFF}), "a\xEF\xBF\xBD");
    EXPECT_EQ(UTF16to8(Text{0xD800, 0xDC80}), "\xF0\x90\x82\x80") << "a pair, not a raw byte";
    EXPECT_EQ(UTF16to8(Text{0xD83D, 0xDE00, 0xDC80}), "\xF0\x9F\x98\x80\x80");
    EXPECT_EQ(desk::ToUTF16(desk::ToQString(Text{0xDC80, 0xD800})), (Text{0xDC80, 0xD800}));
}

TEST(StringsTest, OtherConversions) {
    EXPECT_EQ(host::AsciiToUTF16("a~\x80"), u"a~\uFFFD");
    EXPECT_EQ(host::WcharToUTF16(L"\U0001F600"), u"\U0001F600");
    EXPECT_EQ(host::WcharToUTF16(std::wstring{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)}),
              u"\uFFFD\uFFFD");
    EXPECT_EQ(host::NumberToString(25.0, 2), u"25.00");
    EXPECT_EQ(host::NumberToString(-1234.567, 1), u"-1234.6");
    EXPECT_EQ(host::NumberToString(std::numeric_limits<double>::max(), 17).size(), 309u + 18u);
    EXPECT_EQ(host::NumberToString(std::numeric_limits<long long>::min()), u"-9223372036854775808");
}
