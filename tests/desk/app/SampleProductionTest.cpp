#include "desk/app/SampleProduction.h"
#include "desk/core/names/LockRecord.h"
#include "tests/support/HostFixture.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

using SampleProductionTest = HostFixture;

TEST_F(SampleProductionTest, HasProjectsAndTheLocksOfTwoOthers) {
    const fs::path root = EnsureSampleProduction(mFolder.Path("data"), "Trash");
    int projects = 0;
    std::set<std::string> users;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        projects += item.path().extension() == ".zuproj";
        if (item.path().extension() != ".lock") continue;
        const auto record = ReadLockRecord(mDisk, item.path().string());
        ASSERT_TRUE(record && record->mIsReadable) << item.path();
        const auto lockName = host::UTF8to16(item.path().filename().string());
        EXPECT_TRUE(fs::exists(item.path().parent_path() / host::UTF16to8(GetProjectNameOfLockFile(lockName))));
        users.insert(host::UTF16to8(record->mUser));
    }
    EXPECT_GT(projects, 500);
    EXPECT_TRUE(fs::is_directory(root / "Trash"));
    EXPECT_EQ(users, (std::set<std::string>{"edit-bay-2", "edit-bay-4"}));
    EXPECT_EQ(NamesIn("data"), Names{"North Shore"}) << "nothing unfinished is left";
}

TEST_F(SampleProductionTest, LeavesWhatIsNotItsOwn) {
    const char *const living = ".North Shore.1.unfinished/a", *const foreign = ".North Shore.x.unfinished/a";
    for (const char* file : {living, foreign}) mFolder.Write(file);
    mFolder.MakeFolder("North Shore");
    EnsureSampleProduction(mFolder.Path(), "Trash");
    EXPECT_TRUE(mFolder.Exists(living) && mFolder.Exists(foreign));
    EXPECT_TRUE(fs::is_empty(mFolder.Path("North Shore"))) << "what stands there is the user's";
}

}  // namespace
}  // namespace desk
