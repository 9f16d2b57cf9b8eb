#include <gtest/gtest.h>

#include <filesystem>

#include "host/project/ProductionItems.h"
#include "tests/support/HostFixture.h"

namespace fs = std::filesystem;

namespace {

class CopyDirectoryTreeTest : public HostFixture {
protected:
    CopyDirectoryTreeTest() {
        mFolder.Write("From/Sub/a.zuproj", "a");
        mFolder.Write("From/.b.zuproj.lock", "somebody's");
        mFolder.Write("From/b.zuproj", "b");
        fs::create_symlink("/nowhere", mFolder.Path("From/link"));
        mFolder.MakeFolder("To");
    }
    int Copy() {
        return ErrorOf([this] {
            host::Utilities::CopyDirectoryTree(mFolder.PathUTF16("From"), mFolder.PathUTF16("To/"));
        });
    }
};

}  // namespace

TEST_F(CopyDirectoryTreeTest, CopiesWhatIsInAFolderWithoutItsLocks) {
    EXPECT_EQ(Copy(), 0);
    EXPECT_EQ(mFolder.Read("To/Sub/a.zuproj"), "a");
    EXPECT_EQ(mFolder.Read("To/b.zuproj"), "b");
    EXPECT_EQ(fs::read_symlink(mFolder.Path("To/link")), "/nowhere");
    EXPECT_EQ(std::distance(fs::directory_iterator(mFolder.Path("To")), {}), 3) << "and nothing else";
    EXPECT_EQ(fs::last_write_time(mFolder.Path("To")), fs::last_write_time(mFolder.Path("From")));
    EXPECT_EQ(Copy(), ENOTEMPTY);
    EXPECT_EQ(mFolder.Read("To/b.zuproj"), "b");
}

TEST_F(CopyDirectoryTreeTest, AFailureLeavesNothing) {
    for (const Operation operation : {Operation::CopyFile, Operation::CopyLink, Operation::RenameNoReplace}) {
        mDisk.Fail(operation, operation == Operation::CopyLink ? 1 : 2, EIO);
        EXPECT_EQ(Copy(), EIO) << static_cast<int>(operation);
        EXPECT_FALSE(mFolder.Exists("To")) << static_cast<int>(operation);
        mFolder.MakeFolder("To");
    }
    EXPECT_EQ(Copy(), 0);
    EXPECT_TRUE(mFolder.Exists("To/Sub/a.zuproj"));
}
