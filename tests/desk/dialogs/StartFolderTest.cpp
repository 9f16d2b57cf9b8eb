#include <gtest/gtest.h>

#include <QDir>
#include <filesystem>

#include "desk/core/QtStrings.h"
#include "desk/dialogs/StartFolder.h"
#include "tests/desk/core/CoreFixture.h"
#include "tests/support/FaultyFileSystem.h"

using namespace std::chrono_literals;

namespace {

class StartFolderTest : public CoreFixture {};

TEST_F(StartFolderTest, IsTheHomeFolderWhenSomethingBesideDoesNotAnswer) {
    FaultyFileSystem disk;
    TemporaryFolder folder;
    folder.Write("North Shore/A.zuproj");
    folder.MakeFolder("Hung mount");
    std::filesystem::create_symlink("nowhere", folder.Path("Link"));
    const QString wanted = desk::ToQString(folder.PathUTF16());
    EXPECT_EQ(desk::FindStartFolder(folder.PathUTF16(), 20s), wanted);
    disk.CloseGate(FaultyFileSystem::Operation::Status, folder.Path("Hung mount"));
    EXPECT_EQ(desk::FindStartFolder(folder.PathUTF16(), 20ms), QDir::homePath());
    disk.OpenGate();
    ASSERT_TRUE(mPool.WaitUntilIdle(20s));
    folder.Remove("");
    EXPECT_EQ(desk::FindStartFolder(folder.PathUTF16(), 20s), QDir::homePath());
}

}  // namespace
