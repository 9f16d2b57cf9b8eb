#include "host/project/ProductionItems.h"
#include "tests/support/HostFixture.h"

namespace {

using CopyDirectoryTreeTest = HostFixture;

}  // namespace

TEST_F(CopyDirectoryTreeTest, ComesToItsPlaceInOneStepWithoutLocksAndOnlyOntoAnEmptyFolder) {
    mFolder.Write("From/Sub/a.zuproj", "a");
    mFolder.Write("From/Sub/.a.zuproj.lock", "somebody's");
    mFolder.MakeFolder("To");
    const auto copy = [this] {
        return ErrorOf([this] {
            host::Utilities::CopyDirectoryTree(mFolder.PathUTF16("From"), mFolder.PathUTF16("To/"));
        });
    };
    const auto copyWhile = [&](Operation operation, const std::function<void()>& meanwhile) {
        mDisk.CloseGate(operation, mFolder.Path());
        auto done = std::async(std::launch::async, copy);
        EXPECT_TRUE(mDisk.WaitAtGate());
        meanwhile();
        mDisk.OpenGate();
        return done.get();
    };
    const auto expectNothingYet = [this] {
        EXPECT_EQ(NamesIn("To"), Names{});
        EXPECT_EQ(NamesIn().size(), 4u) << "the copy, and the mark by which a sweep can tell it";
    };
    EXPECT_EQ(copyWhile(Operation::Rename, expectNothingYet), 0);
    EXPECT_EQ(NamesIn("To/Sub"), Names{"a.zuproj"});
    EXPECT_EQ(copy(), ENOTEMPTY);
    mFolder.Remove("To/Sub");
    EXPECT_EQ(copyWhile(Operation::CopyFile, [this] { mFolder.Write("To/theirs"); }), ENOTEMPTY);
    EXPECT_EQ(NamesIn(), (Names{"From", "To"}));
    EXPECT_EQ(NamesIn("To"), Names{"theirs"});
    // A volume that replaces no folders.
    mFolder.Remove("To/theirs");
    mDisk.Fail(Operation::Rename, 1, EEXIST);
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(mFolder.Read("To/Sub/a.zuproj"), "a");
    EXPECT_EQ(NamesIn(), (Names{"From", "To"}));
}
