#include <gtest/gtest.h>
#include <unistd.h>

#include <random>

#include "host/files/PathUtils.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/TemporaryFolder.h"

using namespace host::PathUtils;
using host::UTF16String;

namespace {

std::string Normalized(const std::string& path) {
    return host::UTF16to8(ToNormalizedPath(host::UTF8to16(path)));
}

}  // namespace

TEST(PathUtils, SpellingsOfOnePathBecomeOne) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"/", "/"},
        {"///", "/"},
        {"/a/b", "/a/b"},
        {"/a/b/", "/a/b"},
        {"//a///b//", "/a/b"},
        {"/a/./b/.", "/a/b"},
        {"/.", "/"},
        {"/..", "/"},
        {"/../../a", "/a"},
        {"/a/../b", "/b"},
        {"/a/b/..", "/a"},
        {"/a/b/../../..", "/"},
        {"/a/...", "/a/..."},
        {"/a/.hidden/..name", "/a/.hidden/..name"},
        {"/a/b..", "/a/b.."},
        {"/A/a", "/A/a"},
        {"a/b/", "a/b"},
        {"a/..", "."},
        {"../a", "../a"},
        {"a/../../b", "../b"},
        {"../..", "../.."},
    };
    for (const auto& [path, expected] : cases) EXPECT_EQ(Normalized(path), expected) << path;
}

TEST(PathUtils, NormalizingTwiceIsNormalizingOnce) {
    std::mt19937 random(7);
    const char* parts[] = {"/", "//", ".", "..", "a", "/b", "/./", "/../", "...", "c/"};
    for (int i = 0; i < 5000; ++i) {
        std::string path;
        for (auto left = random() % 8; left > 0; --left) path += parts[random() % std::size(parts)];
        const std::string once = Normalized(path);
        ASSERT_EQ(Normalized(once), once) << path;
        ASSERT_EQ(once.find("//"), std::string::npos) << path;
        ASSERT_EQ(once.empty(), path.empty()) << path;
        ASSERT_EQ(once.starts_with('/'), path.starts_with('/')) << path;
    }
}

TEST(PathUtils, PathsAreTakenApartAndPutTogether) {
    EXPECT_EQ(CombinePaths(u"/a", u"b"), u"/a/b");
    EXPECT_EQ(CombinePaths(u"/a/", u"b"), u"/a/b");
    EXPECT_EQ(CombinePaths(u"", u"b"), u"b");
    EXPECT_EQ(AddTrailingSlash(u""), u"");
    EXPECT_EQ(AddTrailingSlash(u"/"), u"/");
    EXPECT_EQ(AddTrailingSlash(u"/a"), u"/a/");
    EXPECT_EQ(AddTrailingSlash(u"/a//"), u"/a/");
    EXPECT_EQ(RemoveTrailingSlash(u"/a/"), u"/a");
    EXPECT_EQ(RemoveTrailingSlash(u"/"), u"/");
    EXPECT_EQ(GetFilePart(u"/a/Show.zuproj"), u"Show");
    EXPECT_EQ(GetFilePart(u"/a.b/Show"), u"Show");
    EXPECT_EQ(GetFilePart(u"/a/Show.v2.zuproj"), u"Show.v2");
    EXPECT_EQ(GetFilePart(u"/a/.zuproj"), u".zuproj");
    EXPECT_EQ(GetFullFilePart(u"/a/Show.zuproj"), u"Show.zuproj");
    EXPECT_EQ(GetFullFilePart(u"/a/"), u"");
    EXPECT_EQ(GetFullDirectoryPart(u"/a/b"), u"/a/");
    EXPECT_EQ(GetFullDirectoryPart(u"b"), u"");
}

TEST(PathUtils, TheDiskIsAskedWhereNothingIsKnown) {
    TemporaryFolder folder;
    FaultyFileSystem disk;
    folder.MakeFolder("folder");
    folder.Write("file");
    symlink("folder", folder.Path("link").c_str());
    symlink("nowhere", folder.Path("broken").c_str());
    EXPECT_TRUE(IsDirectory(folder.PathUTF16("folder")));
    EXPECT_TRUE(IsDirectory(folder.PathUTF16("link")));
    EXPECT_FALSE(IsDirectory(folder.PathUTF16("file")));
    EXPECT_FALSE(IsDirectory(folder.PathUTF16("gone")));
    EXPECT_FALSE(IsDirectory(u""));
    EXPECT_TRUE(ExistsOnDisk(folder.PathUTF16("file"), true));
    EXPECT_TRUE(ExistsOnDisk(folder.PathUTF16("broken"), false));
    EXPECT_FALSE(ExistsOnDisk(folder.PathUTF16("broken"), true));
    disk.SetGone(true);
    EXPECT_FALSE(IsDirectory(folder.PathUTF16("folder")));
}
