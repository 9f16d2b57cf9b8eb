#include <QDir>

#include "desk/core/names/QtStrings.h"
#include "desk/dialogs/StartFolder.h"
#include "tests/support/HostFixture.h"

using namespace std::chrono_literals;

namespace {

using StartFolderTest = HostFixture;

TEST_F(StartFolderTest, IsTheHomeFolderWhenSomethingBesideDoesNotAnswer) {
    mFolder.Write("North Shore/A.zuproj");
    mFolder.MakeFolder("Hung mount");
    std::filesystem::create_symlink("nowhere", mFolder.Path("Link"));
    const QString wanted = desk::ToQString(mFolder.PathUTF16());
    EXPECT_EQ(desk::FindStartFolder(mFolder.PathUTF16(), 20s), wanted);
    mDisk.CloseGate(Operation::Status, mFolder.Path("Hung mount"));
    EXPECT_EQ(desk::FindStartFolder(mFolder.PathUTF16(), 20ms), QDir::homePath());
    mDisk.OpenGate();
    ASSERT_TRUE(mPool.WaitUntilIdle(20s));
    mFolder.Remove("");
    EXPECT_EQ(desk::FindStartFolder(mFolder.PathUTF16(), 20s), QDir::homePath());
}

}  // namespace
