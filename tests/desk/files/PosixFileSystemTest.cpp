#include <fcntl.h>
#include <unistd.h>

#include "tests/support/FileSizeLimit.h"
#include "tests/support/HostFixture.h"

using desk::ItemKind;

namespace {

class PosixFileSystemTest : public testing::Test {
protected:
    struct stat Facts(const char* name) {
        struct stat facts {};
        stat(mFolder.Path(name).c_str(), &facts);
        return facts;
    }
    void SetTimes(const std::string& path, timespec access, timespec modification) {
        const timespec times[2] = {access, modification};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }

    TemporaryFolder mFolder;
    desk::PosixFileSystem mDisk;
};

}  // namespace

TEST_F(PosixFileSystemTest, StatusTellsTimesBeforeTheEpochAndFollowsLinksWhenAsked) {
    SetTimes(mFolder.Write("file", "12345"), {0, 0}, {-2, 500'000'000});
    symlink("file", mFolder.Path("link").c_str());
    const desk::ItemStatus status = mDisk.Status(mFolder.Path("link"), true);
    EXPECT_EQ(status.mKind, ItemKind::File);
    EXPECT_EQ(status.mSize, 5u);
    EXPECT_EQ(status.mModified, -1'500'000'000);
    EXPECT_GT(status.mCreated.value_or(1), 0);
    EXPECT_EQ(mDisk.Status(mFolder.Path("link"), false).mKind, ItemKind::Link);
    EXPECT_EQ(mDisk.Status("/dev/null", false).mKind, ItemKind::Other);
    EXPECT_EQ(ErrorOf([&] { mDisk.ListFolder(mFolder.Path("file")); }), ENOTDIR);
}

TEST_F(PosixFileSystemTest, ReadSmallFileIsBoundedAndNeverBlocksWhateverStandsThere) {
    auto error = [&](const std::string& path) { return ErrorOf([&] { mDisk.ReadSmallFile(path, 4096); }); };
    EXPECT_EQ(mDisk.ReadSmallFile(mFolder.Write("empty"), 4096), "");
    EXPECT_EQ(mDisk.ReadSmallFile(mFolder.Write("full", std::string(4096, 'a')), 4096), std::string(4096, 'a'));
    EXPECT_EQ(error(mFolder.Write("over", std::string(4097, 'a'))), EFBIG);
    ASSERT_EQ(truncate(mFolder.Write("huge").c_str(), off_t{1} << 30), 0);
    EXPECT_EQ(error(mFolder.Path("huge")), EFBIG);
    mkfifo(mFolder.Path("pipe").c_str(), 0600);
    EXPECT_EQ(error(mFolder.Path("pipe")), EINVAL);
    symlink("full", mFolder.Path("link").c_str());
    EXPECT_EQ(error(mFolder.Path("link")), ELOOP);
    EXPECT_EQ(error(mFolder.Path()), EINVAL);
    EXPECT_EQ(error("/dev/zero"), EINVAL);
    EXPECT_EQ(error(mFolder.Path("gone")), ENOENT);

    // A file of /proc says that its size is 0.
    EXPECT_EQ(mDisk.ReadSmallFile("/proc/sys/kernel/random/boot_id", 4096).size(), 37u);
    EXPECT_EQ(ErrorOf([&] { mDisk.ReadSmallFile("/proc/self/maps", 100); }), EFBIG);
}

TEST_F(PosixFileSystemTest, CopiesContentPermissionsAndTimesByWhateverWayTheVolumeHas) {
    const auto copy = [&](const std::string& from, const char* to) {
        std::uint64_t told = 0;
        const desk::ItemStatus status = mDisk.CopyFile(from, mFolder.Path(to), true, [&](std::uint64_t bytes) {
            told += bytes;
            return true;
        });
        EXPECT_EQ(told, status.mSize);
        return status;
    };
    const std::string from = mFolder.Write("from", std::string(9'000'000, 'c'));
    chmod(from.c_str(), 06755);
    SetTimes(from, {100, 0}, {-2, 500'000'000});
    EXPECT_EQ(copy(from, "to").mModified, -1'500'000'000);
    EXPECT_EQ(Facts("to").st_atim.tv_sec, 100);
    EXPECT_EQ(Facts("to").st_mtim.tv_sec, -2);
    EXPECT_EQ(Facts("to").st_mode & 07777, 0755u) << "it runs as nobody else";
    EXPECT_EQ(mFolder.Read("to"), mFolder.Read("from"));
    copy(mFolder.Write("empty"), "to empty");

    // Holes at both ends and between.
    ASSERT_EQ(truncate(mFolder.Write("holes").c_str(), 10'000'000), 0);
    std::fstream file(mFolder.Path("holes"));
    file.seekp(5'000'000) << "middle";
    file.close();
    copy(mFolder.Path("holes"), "to holes");
    EXPECT_EQ(mFolder.Read("to holes"), mFolder.Read("holes"));
    EXPECT_LT(Facts("to holes").st_blocks * 512, 1'000'000);

    // A file whose size is not told cannot be compared; nothing of it stays.
    EXPECT_EQ(ErrorOf([&] { copy("/proc/self/status", "to proc"); }), EBUSY);
    EXPECT_FALSE(mFolder.Exists("to proc"));
}

TEST_F(PosixFileSystemTest, ACopyThatFailsLeavesNothing) {
    const std::string from = mFolder.Write("from", std::string(9'000'000, 'c'));
    symlink("from", mFolder.Path("link").c_str());
    mkfifo(mFolder.Path("pipe").c_str(), 0600);
    const auto copy = [&](
                          const char* source, desk::CopyStep step = [](std::uint64_t) { return true; }) {
        return ErrorOf([&] { mDisk.CopyFile(mFolder.Path(source), mFolder.Path("to"), false, step); });
    };
    int steps = 0;
    EXPECT_EQ(copy("from", [&](std::uint64_t) { return ++steps < 2; }), ECANCELED);
    EXPECT_EQ(copy("link"), ELOOP);
    EXPECT_EQ(copy("pipe"), EINVAL);
    EXPECT_EQ(copy("gone"), ENOENT);
    EXPECT_EQ(copy("from",
                   [&](std::uint64_t) {
                       mFolder.Write("from", "saved meanwhile");
                       return true;
                   }),
              EBUSY);
    mFolder.Write("from", std::string(9'000'000, 'c'));
    {
        FileSizeLimit full(4096);
        EXPECT_EQ(copy("from"), EFBIG);
    }
    EXPECT_FALSE(mFolder.Exists("to"));
    for (const char* target : {"from", "nowhere"}) {
        symlink(target, mFolder.Path("to").c_str());
        EXPECT_EQ(copy("from"), EEXIST);
        EXPECT_EQ(ErrorOf([&] { mDisk.CopyLink(mFolder.Path("link"), mFolder.Path("to")); }), EEXIST);
        mFolder.Remove("to");
    }
    EXPECT_EQ(ErrorOf([&] { mDisk.CopyLink(mFolder.Path("from"), mFolder.Path("to")); }), EINVAL);
}
