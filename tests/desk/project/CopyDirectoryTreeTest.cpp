#include <algorithm>
#include <functional>
#include <future>

#include "desk/core/names/TemporaryNames.h"
#include "host/project/ProductionItems.h"
#include "tests/support/HostFixture.h"
#include "tests/support/TreeSnapshot.h"

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

bool IsMarkOfTo(const std::string& name) {
    const auto mark = desk::ParseTargetedTemporary(name);
    return mark && mark->mPurpose == desk::TemporaryPurpose::FolderCopy && mark->IsFor("To");
}

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

TEST_F(CopyDirectoryTreeTest, ComesToItsPlaceInOneStepAndOnlyOntoAnEmptyFolder) {
    const auto copyWhile = [this](Operation operation, const std::function<void()>& meanwhile) {
        mDisk.CloseGate(operation, mFolder.Path());
        auto done = std::async(std::launch::async, [this] { return Copy(); });
        EXPECT_TRUE(mDisk.WaitAtGate());
        meanwhile();
        mDisk.OpenGate();
        return done.get();
    };
    // A process that is killed now leaves what a sweep can tell.
    EXPECT_EQ(copyWhile(Operation::Rename,
                        [this] {
                            EXPECT_TRUE(fs::is_empty(mFolder.Path("To")));
                            EXPECT_EQ(NamesIn().size(), 4u) << "the copy, and the mark";
                            EXPECT_EQ(std::ranges::count_if(NamesIn(), IsMarkOfTo), 1);
                        }),
              0);
    mFolder.Remove("To");
    mFolder.MakeFolder("To");
    EXPECT_EQ(copyWhile(Operation::CopyFile, [this] { mFolder.Write("To/theirs"); }), ENOTEMPTY);
    EXPECT_EQ(NamesIn(), (Names{"From", "To"}));
    EXPECT_EQ(NamesIn("To"), Names{"theirs"});
    // A volume that replaces no folders.
    mFolder.Remove("To/theirs");
    mDisk.Fail(Operation::Rename, 1, EEXIST);
    EXPECT_EQ(Copy(), 0);
    EXPECT_EQ(mFolder.Read("To/Sub/a.zuproj"), "a");
    EXPECT_EQ(NamesIn(), (Names{"From", "To"}));
}
