#include <gtest/gtest.h>

#include "host/files/PathUtils.h"

using namespace host::PathUtils;

namespace {

std::string Normalized(const std::string& path) {
    return host::UTF16to8(ToNormalizedPath(host::UTF8to16(path)));
}

}  // namespace

TEST(PathUtils, SpellingsOfOnePathBecomeOne) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"/", "/"},
        {"/a/b/", "/a/b"},
        {"//a///b//", "/a/b"},
        {"/a/./b/.", "/a/b"},
        {"/..", "/"},
        {"/a/../b", "/b"},
        {"/a/b/../../..", "/"},
        {"/a/...", "/a/..."},
        {"/a/.hidden/..name", "/a/.hidden/..name"},
        {"a/..", "."},
        {"../a", "../a"},
        {"a/../../b", "../b"},
    };
    for (const auto& [path, expected] : cases) EXPECT_EQ(Normalized(path), expected) << path;
}

TEST(PathUtils, PathsAreTakenApartAndPutTogether) {
    EXPECT_EQ(CombinePaths(u"/a", u"b"), u"/a/b");
    EXPECT_EQ(CombinePaths(u"/a/", u"b"), u"/a/b");
    EXPECT_EQ(AddTrailingSlash(u"/"), u"/");
    EXPECT_EQ(AddTrailingSlash(u"/a//"), u"/a/");
    EXPECT_EQ(RemoveTrailingSlash(u"/"), u"/");
    EXPECT_EQ(GetFilePart(u"/a.b/Show"), u"Show");
    EXPECT_EQ(GetFilePart(u"/a/Show.v2.zuproj"), u"Show.v2");
    EXPECT_EQ(GetFilePart(u"/a/.zuproj"), u".zuproj");
    EXPECT_EQ(GetFullFilePart(u"/a/"), u"");
    EXPECT_EQ(GetFullDirectoryPart(u"b"), u"");
}
