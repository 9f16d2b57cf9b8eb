#include "host/files/PathUtils.h"
#include "tests/support/HostFixture.h"

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

namespace {

class FileNamesTest : public HostFixture {};

TEST_F(FileNamesTest, OnlyWhatTheVolumeHoldsIsAName) {
    const std::u16string longest(248, u'x');
    const struct {
        std::u16string mName;
        bool mIsValid, mIsValidForWindows;
    } cases[] = {{u"Reel 1.zuproj", true, true},
                 {u"Überblick \u0645\u0634\u0647\u062F", true, true},
                 {u"e\u0301", true, true},
                 {u"caf\xDCE9", true, true},
                 {u"", false, false},
                 {u"..", false, false},
                 {u"a/b", false, false},
                 {u"a\nb", false, false},
                 {u"a\u2028", false, false},
                 {u"Reel ", false, false},
                 {u"lone \xD800", false, false},
                 {u".Reel 1.zuproj.lock", false, false},
                 {u".zurecords", false, false},
                 {longest + u"1234567", true, true},
                 {longest + u"12345678", false, false},
                 {std::u16string(86, u'\u4E00'), false, false},
                 {longest.substr(6) + u".zuproj", true, true},
                 {longest.substr(5) + u".zuproj", false, false},
                 {u"12:30", true, false},
                 {u"why?", true, false},
                 {u"a\\b", true, false},
                 {u"Mr.", true, false},
                 {u"CON", true, false},
                 {u"Lpt1.zuproj", true, false},
                 {u"console", true, true},
                 {u"lpt0", true, true}};
    const host::UTF16String folder = host::UTF8to16(mFolder.Path());
    for (const long type : {0xEF53L, 0x4D44L}) {
        mDisk.SetVolumeType(type);
        for (const auto& [name, isValid, isValidForWindows] : cases) {
            const bool expected = type == 0x4D44L ? isValidForWindows : isValid;
            EXPECT_EQ(host::PathUtils::IsValidFileName(name, folder), expected) << host::UTF16to8(name);
            EXPECT_EQ(host::PathUtils::DescribeInvalidFileName(name, folder).empty(), expected);
        }
    }
    EXPECT_EQ(host::PathUtils::GetIllegalPathCharactersDisplay(folder), u"/ \\ : * ? \" < > |");
    const ExpectLogged log("Input/output error");
    mDisk.Fail(Operation::VolumeType, 1, EIO);
    EXPECT_TRUE(host::PathUtils::IsValidFileName(u"12:30", folder)) << "what is not told refuses nothing";
}

TEST_F(FileNamesTest, WhatStandsAtManyPathsOfAFolderIsToldByOneListing) {
    using enum host::PathUtils::PathKind;
    mFolder.MakeFolder("Folder");
    std::filesystem::create_symlink("Folder", mFolder.Path("Link"));
    std::filesystem::create_symlink("nowhere", mFolder.Path("Broken"));
    host::UTF16StringVec paths;
    for (const char* name : {"Folder", "Link", "Broken", "Absent", "FOLDER", "a", "b", "c"})
        paths.push_back(mFolder.PathUTF16(name));
    for (const char* name : {"a", "b", "c"}) mFolder.Write(name);
    mDisk.ResetCounts();
    EXPECT_EQ(host::PathUtils::GetKinds(paths),
              (std::vector{Folder, Folder, File, Nothing, Nothing, File, File, File}));
    EXPECT_EQ(mDisk.Count(Operation::Any), 4) << "two links, and what the volume may take for the folder";
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
}

}  // namespace
