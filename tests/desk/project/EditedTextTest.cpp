#include <gtest/gtest.h>

#include <QtWidgets>

#include "desk/core/names/QtStrings.h"
#include "desk/project/document/EditedText.h"

namespace desk {
namespace {

using Obstacle = EditedText::Obstacle;

constexpr char kMark[] = "\xEF\xBB\xBF";

/// Through a real editor and back.
host::UTF16String ThroughEditor(const EditedText& text) {
    QPlainTextEdit editor;
    editor.setPlainText(ToQString(text.GetEditorText()));
    return ToUTF16(editor.document()->toRawText());
}

TEST(EditedText, EveryCharacterComesBackFromTheEditorOrIsRefused) {
    std::string bytes = kMark;
    std::vector<int> refused;
    for (char32_t c = 1; c < 0x10FFFF; c += c < 0x10000 ? 1 : 0x321) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const std::string line = 'a' + host::UTF16to8(ToUTF16(QString::fromUcs4(&c, 1))) + "b";
        if (EditedText::FindObstacle(line) == Obstacle::None)
            bytes += line + (c % 3 == 0 ? "\r\n" : "\n");
        else
            refused.push_back(static_cast<int>(c));
    }
    EXPECT_EQ(refused, (std::vector<int>{0xFDD0, 0xFDD1, 0xFFFC}));
    ASSERT_EQ(EditedText::FindObstacle(bytes), Obstacle::None);
    const EditedText text(bytes);
    EXPECT_TRUE(text.ToBytes(ThroughEditor(text)) == bytes);
}

TEST(EditedText, EditsTakeTheLineEndsOfTheirPlace) {
    const struct {
        const char* mWhat;
        std::string mBytes;
        host::UTF16String mEdited;
        std::string mExpected;
    } cases[] = {{"new line", "a\r\nb\r\n", u"a\nx\nb\n", "a\r\nx\r\nb\r\n"},
                 {"behind a last line without end", "a\r\nb\nc\rd", u"a\nb\nc\nd\ne", "a\r\nb\nc\rd\re"},
                 {"edits in two places", "1\r\n2\n3\r\n4\n5", u"1x\n2\n3\n4y\n5", "1x\r\n2\n3\r\n4y\n5"},
                 {"lines inserted and removed", "1\n2\n3\r\n4\r5\n6\n", u"1\nnew\nnew\n2\n4\n5\n6\n",
                  "1\nnew\nnew\r\n2\r\n4\r5\n6\n"},
                 {"the last end removed", "1\r\n2\n", u"1\n2", "1\r\n2"},
                 {"mark", std::string(kMark) + "a", u"b", std::string(kMark) + "b"},
                 {"U+2029 from the editor", "a\r\nb", u"a\u2029b", "a\r\nb"},
                 {"U+2029 of the file", "a\u2029b\n", u"a\nb\nc", "a\u2029b\nc"},
                 {"Shift+Return", "a\nb", u"a\u2028c\nb", "a\nc\nb"},
                 {"U+2028 of the file", "a\u2028c\nb", u"a\u2028c\nbx", "a\u2028c\nbx"},
                 {"no text", "a", host::UTF16String(u"a\0\xD800\xDC41\xDC80\xFFFC", 6),
                  "a\xEF\xBF\xBD\xF0\x90\x81\x81\xEF\xBF\xBD\xEF\xBF\xBD"}};
    for (const auto& c : cases) EXPECT_EQ(EditedText(c.mBytes).ToBytes(c.mEdited), c.mExpected) << c.mWhat;
}

}  // namespace
}  // namespace desk
