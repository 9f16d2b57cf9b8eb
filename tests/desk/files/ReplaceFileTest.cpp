#include <sys/syscall.h>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/ReplaceFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/HostFixture.h"

using Outcome = desk::FileReplacement::Outcome;
namespace fs = std::filesystem;

namespace {

/// The paths of the files and folders that this thread flushes.
thread_local std::vector<std::string>* sFlushed = nullptr;

}  // namespace

/// In place of the C library's.
extern "C" int fsync(int file) {
    if (sFlushed) sFlushed->push_back(fs::read_symlink("/proc/self/fd/" + std::to_string(file)));
    return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace {

/// A disk that replaces a file by a removal and a rename, of which the next `mFailures` renames fail.
class TwoStepDisk : public FaultyFileSystem {
public:
    void Rename(const std::string& from, const std::string& to) override {
        if (mFailures == 0) return FaultyFileSystem::Rename(from, to);
        --mFailures;
        ::unlink(to.c_str());
        desk::ThrowFileException("rename", from, mError);
    }
    bool WaitForCaches(const std::string& path) noexcept override {
        return mForgetsSoon && FaultyFileSystem::WaitForCaches(path);
    }

    int mFailures = 0, mError = EEXIST;
    bool mForgetsSoon = true;
};

class ReplaceFileTest : public HostFixture {
protected:
    desk::FileReplacement Replace(const char* name, const std::string& bytes) {
        return desk::ReplaceFile(mDisk, mFolder.Path(name), bytes, 0604);
    }
    int ErrorOfReplace(const char* name, const std::string& bytes) {
        const desk::FileReplacement replacement = Replace(name, bytes);
        EXPECT_EQ(replacement.mOutcome == Outcome::Done, !replacement.mError);
        return replacement.mError ? replacement.mError->SystemError() : 0;
    }
    mode_t Mode(const char* name) {
        struct stat facts {};
        stat(mFolder.Path(name).c_str(), &facts);
        return facts.st_mode & 07777;
    }
    /// What stands in the folder, by content.
    Names Contents() {
        Names contents;
        for (const std::string& name : NamesIn())
            contents.insert((name[0] == '.' ? "kept " : "") + mFolder.Read(name));
        return contents;
    }
};

}  // namespace

TEST_F(ReplaceFileTest, WritesAllOrLeavesTheOldFileAndNothingElse) {
    mDisk.ResetCounts();
    EXPECT_EQ(ErrorOfReplace("settings", "first"), 0);
    EXPECT_EQ(mDisk.Count(Operation::Any), 4) << "look for the mode, write, rename, flush the folder";
    std::vector<std::string> flushed;
    sFlushed = &flushed;
    EXPECT_EQ(ErrorOfReplace("settings", "second"), 0);
    sFlushed = nullptr;
    ASSERT_EQ(flushed.size(), 2u);
    EXPECT_TRUE(fs::path(flushed[0]).filename().string().starts_with('.')) << "the temporary";
    EXPECT_EQ(flushed[1], mFolder.Path());
    EXPECT_EQ(Mode("settings"), 0604u);
    chmod(mFolder.Path("settings").c_str(), 0640);
    const std::string large(3'000'000, 'z');
    EXPECT_EQ(ErrorOfReplace("settings", large), 0);
    {
        FileSizeLimit full(4096);  // the write fails half-way
        EXPECT_EQ(ErrorOfReplace("settings", std::string(100'000, 'n')), EFBIG);
    }
    EXPECT_EQ(mFolder.Read("settings"), large);
    EXPECT_EQ(Mode("settings"), 0640u);
    mFolder.Write("folder/inside");  // the rename fails
    EXPECT_EQ(ErrorOfReplace("folder", "new"), EISDIR);
    EXPECT_EQ(ErrorOfReplace("gone/settings", "new"), ENOENT);
    EXPECT_EQ(NamesIn(), (Names{"folder", "settings"}));
    EXPECT_EQ(NamesIn("folder"), Names{"inside"});
}

TEST_F(ReplaceFileTest, ATextWhoseFileTheVolumeHasRemovedStaysUntilTheFileIsThere) {
    const ExpectLogged log("is kept in");
    TwoStepDisk disk;
    mFolder.Write("file", "old");
    const auto replace = [&](const std::string& bytes) {
        return desk::ReplaceFile(disk, mFolder.Path("file"), bytes, 0600);
    };
    disk.mFailures = 1;
    EXPECT_EQ(replace("new").mOutcome, Outcome::Done);
    EXPECT_EQ(Contents(), Names{"new"});

    disk.mFailures = 2;
    const desk::FileReplacement lost = replace("newer");
    EXPECT_EQ(lost.mOutcome, Outcome::NotKnown);
    EXPECT_EQ(mFolder.Read(lost.mKept.substr(mFolder.Path().size() + 1)), "newer");
    EXPECT_EQ(Contents(), Names{"kept newer"});
    disk.mFailures = 1;
    disk.mError = EACCES;
    disk.mForgetsSoon = false;
    EXPECT_EQ(replace("refused").mOutcome, Outcome::NotKnown) << "the old file may be gone";
    EXPECT_EQ(Contents(), (Names{"kept newer", "kept refused"}));
    EXPECT_EQ(replace("newest").mOutcome, Outcome::Done);
    EXPECT_EQ(Contents(), Names{"newest"});
}

TEST_F(ReplaceFileTest, ATextThatSomebodyRemovedBeforeItHadItsNameDoesNotCountAsWritten) {
    struct : FaultyFileSystem {
        void Rename(const std::string& from, const std::string& to) override {
            RemoveFile(from);
            FaultyFileSystem::Rename(from, to);
        }
    } disk;
    mFolder.Write("file", "old");
    EXPECT_EQ(desk::ReplaceFile(disk, mFolder.Path("file"), "new", 0600).mOutcome, Outcome::NotKnown);
    EXPECT_EQ(Contents(), Names{"old"});
}

TEST_F(ReplaceFileTest, ANewFileReplacesNothingAndCountsOnlyWhenItsNameIsFlushed) {
    const ExpectLogged anything("");
    const std::string path = mFolder.Path("file");
    const auto make = [&] { return ErrorOf([&] { desk::MakeNewFile(path, "new", 0640); }); };
    EXPECT_EQ(make(), 0);
    EXPECT_EQ(Mode("file"), 0640u);
    EXPECT_EQ(make(), EEXIST);
    mFolder.Remove("file");
    mDisk.ResetCounts();
    mDisk.Fail(Operation::FlushFolder, 1, EIO);
    EXPECT_EQ(make(), EIO) << "the name may be lost with the power";
}
