#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstring>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/project/ProductionItems.h"
#include "tests/support/LogExpectation.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int kProjects = 6;
/// Of several pages of memory.
constexpr char kScene[] = "Sound/Stems/Scene 5.zuproj";
const auto kSaysSo = testing::AnyOf(HasSubstr("No space left on device"), HasSubstr("There is no room left"));

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
    void Empty() { mFolder.Remove("ballast"); }

private:
    TemporaryFolder mFolder;
    const int mError;
};

class FullVolume : public testing::Test {
protected:
    void SetUp() override {
        if (mVolume.Error() != 0)
            GTEST_SKIP() << "not allowed to mount, a full volume was not tried: "
                         << std::strerror(mVolume.Error());
        mStack = std::make_unique<Stack>(mVolume.Folder().MakeFolder("North Shore"));
        testproduction::Make(mStack->mProduction, kProjects);
    }
    void TearDown() override {
        mVolume.Empty();
        mStack.reset();
    }

    /// What the user was told last; it is taken back.
    std::string TakeTold() {
        mStack->Settle();
        std::string told;
        for (const std::string& text : mStack->Told()) told += text + '\n';
        mStack->mDialogs.mTold.clear();
        return told;
    }
    void ExpectNothingLost(const std::vector<std::string>& hidden = {}) {
        const auto found = testproduction::Examine(mStack->mProduction);
        EXPECT_EQ(found.DescribeLosses(kProjects), "");
        EXPECT_EQ(found.mHidden, hidden);
    }

    SmallVolume mVolume;
    const ExpectLogged mErrors{"No space left on device"};
    std::unique_ptr<Stack> mStack;
};

}  // namespace

TEST_F(FullVolume, KeepsTheSavedProjectAndTheUnsavedChanges) {
    const auto document = mStack->OpenAndEdit(kScene);
    ASSERT_TRUE(document);
    const std::string lock = mStack->Path("Sound/Stems/.Scene 5.zuproj.lock");
    for (int pages = 0; document->IsDirty(); ++pages) {
        SCOPED_TRACE(std::to_string(pages) + " pages are free");
        ASSERT_LT(pages, 20);
        mVolume.FillBut(pages);
        const bool isSaved = mStack->mDocuments->SaveProject(document);
        EXPECT_EQ(isSaved, !document->IsDirty());
        EXPECT_EQ(mVolume.Folder().Read(std::string("North Shore/") + kScene),
                  testproduction::MakeContent(5, isSaved ? 1 : 0));
        EXPECT_THAT(TakeTold(), isSaved ? testing::Matcher<std::string>("") : kSaysSo);
        ExpectNothingLost({lock});
        EXPECT_TRUE(!isSaved || pages > 2) << "the volume was never full";
    }
    EXPECT_TRUE(mStack->mDocuments->CloseProject(document, true));
}

TEST_F(FullVolume, TakesNoLockAndMovesNothingWithoutOne) {
    mVolume.FillBut(0);
    UTF16String user, machine;
    GetProjectLockingPrefs(user, machine);
    EXPECT_FALSE(CreateProjectLockFile(mStack->PathUTF16(kScene), user, machine));
    Utils::MoveToSharedProjectsTrash({mStack->PathUTF16(kScene)}, false, true);
    EXPECT_THAT(TakeTold(), Not(IsEmpty()));
    ExpectNothingLost();
    mVolume.Empty();
    Utils::MoveToSharedProjectsTrash({mStack->PathUTF16(kScene)}, false, true);
    EXPECT_TRUE(std::filesystem::exists(mStack->TrashFolder() + "/Scene 5.zuproj"));
    mStack->Settle();
    ExpectNothingLost();
}

TEST_F(FullVolume, TakesNoHalfCopies) {
    mVolume.FillBut(2);
    EXPECT_FALSE(Utils::CopyFiles({mStack->PathUTF16(kScene)}, mStack->PathUTF16("Sound"), false, false));
    EXPECT_THAT(TakeTold(), kSaysSo);
    EXPECT_FALSE(Utils::CopyFiles({mStack->PathUTF16("Reels")}, mStack->PathUTF16("Sound"), false, false));
    EXPECT_THAT(TakeTold(), kSaysSo);
    AddProjectToZuProduction(mStack->PathUTF16(kScene), mStack->PathUTF16("Sound/New.zuproj"));
    EXPECT_THAT(TakeTold(), kSaysSo);
    ExpectNothingLost();
    EXPECT_THAT(testproduction::List(mStack->Path("Sound")).mFolders, testing::SizeIs(2))
        << "a part of a folder";
}
