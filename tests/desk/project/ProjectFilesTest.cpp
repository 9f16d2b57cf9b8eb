#include <gtest/gtest.h>

#include "host/project/ProjectFiles.h"

using host::IsVantorProjectFile;
using host::UTF16String;

TEST(ProjectFiles, NamesOfProjectsAndNearMisses) {
    for (const char16_t* path :
         {u"Scene 1.zuproj", u"/a/Scene 1.zuproj", u"/a.b/c.ZuProj", u"x.zuproj", u"..zuproj",
          u"/a/.hidden.zuproj", u"/a/ .zuproj", u"/a/b.tmp.zuproj", u"/a/\u00E9\xDCE9.zuproj"})
        EXPECT_TRUE(IsVantorProjectFile(path)) << host::UTF16to8(path);
    for (const char16_t* path :
         {u"", u"/", u".zuproj", u"/a/.zuproj", u"/a/b.zuproj/", u"a.zuproj.tmp", u"azuproj", u"a.zuproj ",
          u"a.zuproj2", u"/x.zuproj/a", u"a.zupro\u212A", u"a\uFF0Ezuproj"})
        EXPECT_FALSE(IsVantorProjectFile(path)) << host::UTF16to8(path);
}

TEST(ProjectFiles, ANameHasAtMost255BytesOnTheDisk) {
    // The longest stems of characters of one, two, three and four bytes, and of raw bytes.
    const std::pair<UTF16String, std::size_t> cases[] = {{u"a", 248},         {u"\u00E9", 124},
                                                         {u"\u6F22", 82},     {u"\U0001F3AC", 62},
                                                         {u"\U000104C0", 62}, {u"\xDCE9", 248}};
    for (const auto& [character, longest] : cases) {
        UTF16String stem;
        for (std::size_t i = 0; i < longest; ++i) stem += character;
        const UTF16String name = u"/a/" + stem + u".zuproj";
        ASSERT_LE(host::UTF16to8(name).size(), 258u);
        EXPECT_TRUE(IsVantorProjectFile(name)) << host::UTF16to8(character);
        const UTF16String longer = u"/a/" + stem + character + u".zuproj";
        ASSERT_GT(host::UTF16to8(longer).size(), 258u);
        EXPECT_FALSE(IsVantorProjectFile(longer)) << host::UTF16to8(character);
    }
}
