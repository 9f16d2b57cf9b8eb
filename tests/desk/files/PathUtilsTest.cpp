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
