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
    // At most 255 bytes on the disk.
    EXPECT_TRUE(IsVantorProjectFile(UTF16String(124, u'\u00E9') + u".zuproj"));
    EXPECT_FALSE(IsVantorProjectFile(UTF16String(124, u'\u00E9') + u"a.zuproj"));
}
