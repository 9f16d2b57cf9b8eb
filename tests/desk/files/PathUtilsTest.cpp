#include <gtest/gtest.h>

#include "host/files/PathUtils.h"

TEST(PathUtils, SpellingsOfOnePathBecomeOne) {
    const std::pair<const char*, const char*> cases[] = {{"", ""},
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
                                                         {"a/../../b", "../b"}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(host::PathUtils::ToNormalizedPath(host::UTF8to16(path)), host::UTF8to16(expected)) << path;
}
