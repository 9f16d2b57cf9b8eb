#include <unistd.h>

#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"

using host::File;

namespace {

/// What the host's file services answer for listed folders, and for others.
class FileTest : public FollowedFolder {
protected:
    host::ProjectLockFileRef ReadLock(const std::string& name) {
        return host::ReadProjectLockFile(Path(name), mDesktop.mUserName, mDesktop.mMachineName);
    }
    /// Calls that asked the disk.
    int CountAsked() const {
        return mDisk.Count(Operation::Status) + mDisk.Count(Operation::ReadSmallFile) +
               mDisk.Count(Operation::ListFolder);
    }
};

}  // namespace

TEST_F(FileTest, OfAListedFolderNothingWaitsForTheDisk) {
    mFolder.Write("Reel 1.zuproj", "12345");
    mFolder.MakeFolder("Reels");
    Lock("", "Reel 1.zuproj", u"tomas");
    UseFakeSource();
    Follow();
    mDisk.ResetCounts();

    // Nobody has read the facts yet: they are asked for, and absent meanwhile.
    mDisk.CloseGate(Operation::Status, mFolder.Path());
    const File unread(Path("Reel 1.zuproj"));
    EXPECT_TRUE(unread.Exists() && !unread.Size());
    const host::ProjectLockFileRef unreadLock = ReadLock("Reel 1.zuproj");
    ASSERT_TRUE(unreadLock);
    EXPECT_TRUE(unreadLock->IsLocked());
    EXPECT_EQ(unreadLock->GetLockOwner(), u"");
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    mDisk.ResetCounts();

    EXPECT_EQ(File(Path("Reel 1.zuproj")).Size(), 5u);
    EXPECT_EQ(File(Path("Reels/..//Reel 1.zuproj")).Size(), 5u);
    EXPECT_EQ(ReadLock("Reel 1.zuproj")->GetLockOwner(), u"tomas");
    EXPECT_TRUE(host::PathUtils::IsDirectory(Path("Reels")));
    EXPECT_TRUE(host::PathUtils::IsDirectory(Path("Reels") + u"/"));
    EXPECT_FALSE(host::PathUtils::IsDirectory(Path("Reel 1.zuproj")));
    EXPECT_TRUE(host::PathUtils::ExistsOnDisk(Path("Reel 1.zuproj"), true));
    EXPECT_FALSE(File(Path("gone.zuproj")).Exists() || ReadLock("gone.zuproj"));
    EXPECT_FALSE(host::PathUtils::ExistsOnDisk(Path("gone.zuproj"), true));
    mMain.RunUntilIdle();
    EXPECT_EQ(CountAsked(), 0);
}

TEST_F(FileTest, WhatNoListingTellsIsAskedOfTheDisk) {
    using namespace host::PathUtils;
    mFolder.Write("notes.txt", "123");
    mFolder.MakeFolder(".hidden");
    symlink(".hidden", mFolder.Path("link").c_str());
    symlink("nowhere", mFolder.Path("broken").c_str());
    for (const bool isListed : {false, true}) {
        if (isListed) {
            UseFakeSource();
            Follow();
        }
        EXPECT_EQ(File(Path("notes.txt")).Size(), 3u);
        EXPECT_TRUE(ExistsOnDisk(Path("notes.txt"), true) && !ExistsOnDisk(Path("gone.txt"), true));
        EXPECT_TRUE(IsDirectory(Path(".hidden")) && IsDirectory(Path("link")));
        EXPECT_TRUE(!IsDirectory(Path("notes.txt")) && ExistsOnDisk(Path("broken"), false));
        EXPECT_FALSE(ExistsOnDisk(Path("broken"), true));
    }
    // A volume that refuses has lost no file.
    mDisk.SetGone(true);
    EXPECT_FALSE(IsDirectory(Path(".hidden")));
    const File file(Path("notes.txt"));
    EXPECT_TRUE(file.Exists());
    EXPECT_THROW(file.Modified(), host::FileException);
    EXPECT_THROW(file.Created(), host::FileException);
    EXPECT_THROW(file.Size(), host::FileException);
}
