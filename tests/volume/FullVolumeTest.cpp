#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/LogExpectation.h"
#include "tests/volume/Stack.h"

namespace {

constexpr int kProjects = 6;
/// Of several pages of memory.
constexpr char kScene[] = "Sound/Stems/Scene 5.zuproj";

/// A volume of 4 MB in memory, which takes the right to mount.
class SmallVolume {
public:
    SmallVolume() : mError(::mount("tmpfs", mFolder.Path().c_str(), "tmpfs", 0, "size=4m") == 0 ? 0 : errno) {}
    ~SmallVolume() {
        if (mError == 0) ::umount2(mFolder.Path().c_str(), MNT_DETACH);
    }
    int Error() const { return mError; }
    const TemporaryFolder& Folder() const { return mFolder; }

    /// Fills it but for `pages` pages of memory.
    void FillBut(int pages) {
        const int file = ::open(mFolder.Path("ballast").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const std::string page(4096, 'x');
        ::lseek(file, 0, SEEK_END);
        while (::write(file, page.data(), page.size()) == static_cast<ssize_t>(page.size())) {
        }
        const off_t size = ::lseek(file, 0, SEEK_END) / 4096 * 4096;
        EXPECT_EQ(::ftruncate(file, size - pages * 4096), 0);
        ::close(file);
    }

private:
    TemporaryFolder mFolder;
    const int mError;
};

}  // namespace

TEST(FullVolume, KeepsTheSavedProjectAndTheUnsavedChanges) {
    SmallVolume volume;
    if (volume.Error() != 0)
        GTEST_SKIP() << "not allowed to mount, a full volume was not tried: " << std::strerror(volume.Error());
    const ExpectLogged errors("No space left on device");
    Stack stack(volume.Folder().MakeFolder("North Shore"));
    testproduction::Make(stack.mProduction, kProjects);
    const auto document = stack.OpenAndEdit(kScene);
    ASSERT_TRUE(document);
    for (int pages = 0; document->IsDirty(); ++pages) {
        SCOPED_TRACE(std::to_string(pages) + " pages are free");
        ASSERT_LT(pages, 20);
        volume.FillBut(pages);
        const bool isSaved = stack.mDocuments->SaveProject(document);
        EXPECT_EQ(isSaved, !document->IsDirty());
        EXPECT_EQ(volume.Folder().Read(std::string("North Shore/") + kScene),
                  testproduction::MakeContent(5, isSaved ? 1 : 0));
        stack.Settle();
        const std::vector<std::string> told = std::exchange(stack.mDialogs.mTold, {});
        EXPECT_EQ(told.empty(), isSaved);
        EXPECT_THAT(told, testing::Each(testing::HasSubstr("There is no room left")));
        const auto found = testproduction::Examine(stack.mProduction);
        EXPECT_EQ(found.DescribeLosses(kProjects), "");
        EXPECT_THAT(found.mHidden, testing::ElementsAre(stack.Path("Sound/Stems/.Scene 5.zuproj.lock")));
        EXPECT_TRUE(!isSaved || pages > 2) << "the volume was never full";
    }
    EXPECT_TRUE(stack.mDocuments->CloseProject(document, true));
}
