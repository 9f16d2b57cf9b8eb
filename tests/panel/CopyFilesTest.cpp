#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

class CopyFilesTest : public CommandsFixture {
protected:
    bool Copy(const std::vector<std::string>& names, const std::string& to, bool makeUniqueNames = false) {
        return Utils::CopyFiles(PathsOf(names), PathOf(to), false, makeUniqueNames);
    }
    bool Move(const std::vector<std::string>& names, const std::string& to, bool makeUniqueNames = false) {
        return Utils::CopyFiles(PathsOf(names), PathOf(to), true, makeUniqueNames);
    }
};

TEST_F(CopyFilesTest, OneRefusedItemRefusesAll) {
    OpenProductionWith({"A", {"B", "new"}, {"To/B", "old"}, {"To/C", "old"}, {"C", "new"}, "Reels/Day 1/D"});
    const DiskTree before = OnDiskNow();
    // A message for each that cannot go.
    mDialogs.ExpectMessage("File Exists");
    mDialogs.ExpectMessage("File Exists");
    EXPECT_FALSE(Move({"A.zuproj", "B.zuproj", "C.zuproj"}, "To"));
    EXPECT_EQ(mDialogs.LastText(), "File already exists");
    mDialogs.ExpectMessage("Copying to Sub-Directory");
    EXPECT_FALSE(Copy({"A.zuproj", "Reels"}, "Reels/Day 1"));
    EXPECT_EQ(mDialogs.LastText(), "Can't copy a folder to one of its sub-directories");
    mDialogs.ExpectMessage("Copying to Sub-Directory");
    EXPECT_FALSE(Move({"Reels"}, "Reels", true));
    EXPECT_EQ(OnDiskNow(), before);
    EXPECT_EQ(Bytes("To/B"), "old");
}

TEST_F(CopyFilesTest, WhatLiesThereAlreadyIsPassedOver) {
    OpenProductionWith({"To/A", "B"});
    EXPECT_TRUE(Move({"To/A.zuproj", "B.zuproj", "To/./A.zuproj"}, "To/"));
    EXPECT_EQ(OnDiskNow(), (DiskTree{"To/", "To/A.zuproj", "To/B.zuproj"}));
}

TEST_F(CopyFilesTest, TheSecondOfOneNameFailsAndTheFirstStays) {
    OpenProductionWith({{"One/A", "first"}, {"Two/A", "second"}, {"Zero/B", "last"}, "To/"});
    ExpectLogged exception("CopyFiles(");
    mDialogs.ExpectMessage("Not Everything Was Moved");
    EXPECT_FALSE(Move({"Zero/B.zuproj", "Two/A.zuproj", "One/A.zuproj"}, "To", true));
    // In the order of their paths: what comes after the failure is not touched.
    EXPECT_EQ(OnDiskNow(),
              (DiskTree{"One/", "To/", "To/A.zuproj", "Two/", "Two/A.zuproj", "Zero/", "Zero/B.zuproj"}));
    EXPECT_EQ(Bytes("To/A"), "first");
}

}  // namespace HandlerSharedProjects
