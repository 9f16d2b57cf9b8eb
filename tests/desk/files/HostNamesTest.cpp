#include <gtest/gtest.h>

#include "desk/files/HostNames.h"

using desk::IsHiddenName;
using desk::ItemKind;

TEST(HostNames, TheHostsAndTheVolumesOwnFilesAreHidden) {
    for (const char* name :
         {".nfs0000000012345", ".fuse_hidden0001", ".zutmp-0123", ".Reel 1.zuproj.lock", "..hidden.zuproj.lock",
          ".R\xE9"
          "el.ZUPROJ.lock"})
        EXPECT_TRUE(IsHiddenName(name, ItemKind::File)) << name;
    EXPECT_TRUE(IsHiddenName(desk::MakeTemporaryName(), ItemKind::File));
}

TEST(HostNames, HiddenFoldersAreHiddenAndHiddenProjectsAreNot) {
    EXPECT_TRUE(IsHiddenName(".git", ItemKind::Folder));
    EXPECT_FALSE(IsHiddenName("git", ItemKind::Folder));
    for (const char* name :
         {".Reel 1.zuproj", "Reel 1.zuproj", "Reel 1.zuproj.lock", ".notes.lock", "nfs", "zutmp-1"})
        EXPECT_FALSE(IsHiddenName(name, ItemKind::File)) << name;
}
