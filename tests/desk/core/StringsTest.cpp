#include <gtest/gtest.h>

#include "desk/core/names/QtStrings.h"
#include "host/core/Strings.h"

using host::UTF16String;
using host::UTF16to8;
using host::UTF8to16;

TEST(StringsTest, EveryByteStringSurvivesTheRoundTripAndValidUTF8IsText) {
    // All pairs, alone, between text that could wrongly join with them, and where forms are overlong,
    // surrogates or past the last code point.
    for (unsigned first = 0; first < 256; ++first)
        for (unsigned second = 0; second < 256; ++second) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            for (const std::string& bytes :
                 {pair, "\xF0\x9F\x98\x80" + pair + "\xC3\xA9", "\xED\xA0" + pair + "\x80", "\xE0" + pair,
                  "\xED" + pair, "\xF0" + pair + "\xBF", "\xF4" + pair + "\x80"}) {
                ASSERT_EQ(UTF16to8(UTF8to16(bytes)), bytes);
                ASSERT_EQ(desk::ToUTF8(desk::ToQStringFromUTF8(bytes)), bytes);
            }
        }
    EXPECT_EQ(UTF8to16("a\xC3\xA9\xE2\x82\xAC\xED\x9F\xBF\xEE\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"),
              u"a\u00E9\u20AC\uD7FF\uE000\U0001F600\U0010FFFF");
    EXPECT_EQ(UTF8to16("x\xE2\x82"), (UTF16String{u'x', 0xDCE2, 0xDC82})) << "cut";
}

TEST(StringsTest, LoneSurrogatesBecomeBytesOrTheReplacement) {
    EXPECT_EQ(UTF16to8(UTF16String{0xDC80, 0xDCFF}), "\x80\xFF");
    EXPECT_EQ(UTF16to8(UTF16String{0xDC7F, u'-', 0xDD00, u'-', 0xD800, u'-', 0xDBFF}),
              "\xEF\xBF\xBD-\xEF\xBF\xBD-\xEF\xBF\xBD-\xEF\xBF\xBD");
    EXPECT_EQ(UTF16to8(UTF16String{0xD800, 0xDC80}), "\xF0\x90\x82\x80") << "a pair, not a raw byte";
    EXPECT_EQ(UTF16to8(UTF16String{0xD83D, 0xDE00, 0xDC80}), "\xF0\x9F\x98\x80\x80");
    EXPECT_EQ(desk::ToUTF16(desk::ToQString(UTF16String{0xDC80, 0xD800})), (UTF16String{0xDC80, 0xD800}));
    EXPECT_EQ(host::AsciiToUTF16("a~\x80"), u"a~\uFFFD");
    EXPECT_EQ(host::WcharToUTF16(std::wstring{L'\U0001F600', wchar_t(0xD800), wchar_t(0x110000)}),
              u"\U0001F600\uFFFD\uFFFD");
}
