#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include "desk/app/SampleProduction.h"
#include "desk/project/LockRecord.h"
#include "host/files/FileException.h"
#include "tests/desk/core/CoreFixture.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

struct SampleProductionTest : CoreFixture {
    TemporaryFolder mData;
};

TEST_F(SampleProductionTest, IsWhatAFirstStartIsToShow) {
    const std::string root = EnsureSampleProduction(mData.Path("data"), "Trash");
    EXPECT_EQ(root, mData.Path("data/North Shore"));

    std::map<std::string, int> projectsOfFolder;
    std::set<std::string> users;
    std::set<fs::file_time_type> times;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        const fs::path folder = item.path().parent_path().lexically_relative(root);
        const host::UTF16String lockName = host::UTF8to16(item.path().filename().string());
        if (item.is_directory()) {
            projectsOfFolder.emplace(item.path().lexically_relative(root).string(), 0);
        } else if (item.path().extension() == ".zuproj") {
            ++projectsOfFolder[folder.string()];
            times.insert(item.last_write_time());
        } else {
            const auto record = ReadLockRecord(mDisk, item.path().string());
            ASSERT_TRUE(record && record->mIsReadable) << item.path();
            EXPECT_TRUE(
                fs::exists(item.path().parent_path() / host::UTF16to8(GetProjectNameOfLockFile(lockName))));
            users.insert(host::UTF16to8(record->mUser));
        }
    }
    EXPECT_EQ(projectsOfFolder["05 Stock footage"], 500);
    EXPECT_EQ(projectsOfFolder["06 Delivery"], 0);
    EXPECT_EQ(projectsOfFolder["."], 1);
    EXPECT_EQ(projectsOfFolder.count("Trash"), 1u);
    int others = 0;
    for (const auto& [folder, count] : projectsOfFolder) others += folder == "05 Stock footage" ? 0 : count;
    EXPECT_NEAR(others, 40, 3);
    EXPECT_EQ(users, (std::set<std::string>{"edit-bay-2", "edit-bay-4"}));
    EXPECT_GT(times.size(), 400u);
    EXPECT_EQ(std::distance(fs::directory_iterator(mData.Path("data")), {}), 1) << "nothing unfinished is left";
}

TEST_F(SampleProductionTest, IsMadeOnce) {
    mData.MakeFolder("North Shore");
    mData.MakeFolder(".North Shore.1.unfinished");
    EnsureSampleProduction(mData.Path(), "Trash");
    EXPECT_TRUE(fs::is_empty(mData.Path("North Shore"))) << "what stands there is the user's";
}

TEST_F(SampleProductionTest, SweepsOnlyWhatADeadProcessLeft) {
    mData.Write(".North Shore.1.unfinished/a");
    mData.Write(".North Shore.4194399.unfinished/a");
    mData.Write(".North Shore.x.unfinished/a");
    EnsureSampleProduction(mData.Path(), "Trash");
    EXPECT_TRUE(mData.Exists(".North Shore.1.unfinished"));
    EXPECT_FALSE(mData.Exists(".North Shore.4194399.unfinished"));
    EXPECT_TRUE(mData.Exists(".North Shore.x.unfinished"));
}

TEST_F(SampleProductionTest, LeavesNothingBehindWhenItCannotBeMade) {
    EXPECT_THROW(EnsureSampleProduction(mData.Path("data"), "no/" + std::string(300, 'x')),
                 host::FileException);
    EXPECT_TRUE(fs::is_empty(mData.Path("data")));
}

}  // namespace
}  // namespace desk
