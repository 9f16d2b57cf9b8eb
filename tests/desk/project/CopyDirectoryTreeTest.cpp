#include <gtest/gtest.h>

#include <filesystem>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "host/files/FileException.h"
#include "host/project/ProductionItems.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using Operation = FaultyFileSystem::Operation;

namespace {

class CopyDirectoryTreeTest : public testing::Test {
protected:
    CopyDirectoryTreeTest() : mBefore(desk::GetServices().mWorkerPool) {
        desk::GetServices().mWorkerPool = &mPool;
        mFolder.Write("From/Sub/a.zuproj", "a");
        mFolder.Write("From/.b.zuproj.lock", "somebody's");
        mFolder.Write("From/b.zuproj", "b");
        fs::create_symlink("/nowhere", mFolder.Path("From/link"));
        mFolder.MakeFolder("To");
    }
    ~CopyDirectoryTreeTest() override { desk::GetServices().mWorkerPool = mBefore; }

    void Copy() { host::Utilities::CopyDirectoryTree(mFolder.PathUTF16("From"), mFolder.PathUTF16("To/")); }
    int ErrorOfCopy() {
        try {
            Copy();
            return 0;
        } catch (const host::FileException& exception) {
            return exception.SystemError();
        }
    }

    desk::WorkerPool* mBefore;
    ManualMainThread mMain;
    FaultyFileSystem mDisk;
    ScriptedDialogs mDialogs;
    desk::WorkerPool mPool{4};
    TemporaryFolder mFolder;
};

}  // namespace

TEST_F(CopyDirectoryTreeTest, CopiesWhatIsInAFolderWithoutItsLocks) {
    Copy();
    EXPECT_EQ(mFolder.Read("To/Sub/a.zuproj"), "a");
    EXPECT_EQ(mFolder.Read("To/b.zuproj"), "b");
    EXPECT_EQ(fs::read_symlink(mFolder.Path("To/link")), "/nowhere");
    EXPECT_EQ(std::distance(fs::directory_iterator(mFolder.Path("To")), {}), 3) << "and nothing else";
    EXPECT_EQ(fs::last_write_time(mFolder.Path("To")), fs::last_write_time(mFolder.Path("From")));
    EXPECT_EQ(ErrorOfCopy(), ENOTEMPTY);
    EXPECT_EQ(mFolder.Read("To/b.zuproj"), "b");
}

TEST_F(CopyDirectoryTreeTest, AFailureLeavesNothing) {
    for (const Operation operation : {Operation::CopyFile, Operation::CopyLink, Operation::RenameNew})
        for (const int nth : {1, 2}) {
            if (operation == Operation::CopyLink && nth == 2) continue;
            mDisk.Fail(operation, nth, EIO);
            EXPECT_EQ(ErrorOfCopy(), EIO) << static_cast<int>(operation) << ' ' << nth;
            EXPECT_FALSE(mFolder.Exists("To")) << static_cast<int>(operation) << ' ' << nth;
            mFolder.MakeFolder("To");
        }
    Copy();
    EXPECT_TRUE(mFolder.Exists("To/Sub/a.zuproj"));
}
