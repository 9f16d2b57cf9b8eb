
#include "desk/core/durable/VolumeMove.h"
#include "tests/support/HostFixture.h"
#include "tests/support/TreeSnapshot.h"

using desk::MoveInDoubt;
using desk::Presence;

namespace {

/// What a volume can do, and what is moved on it.
struct Volume {
    const char* mName;
    bool mHasRenameFlags;
    bool mHasLinks;
    bool mIsFolder;
};

/// A volume without rename flags that loses the reply to a removal; at once somebody else takes the name.
class ContendedVolume : public desk::PosixFileSystem {
public:
    void RenameNoReplace(const std::string& from, const std::string&) override {
        desk::ThrowFileException("rename", from, EINVAL);
    }
    void RemoveFile(const std::string& path) override {
        PosixFileSystem::RemoveFile(path);
        if (std::exchange(mIsContended, true)) return;
        CreateNewFile(path, "somebody else's", 0600);
        desk::ThrowFileException("remove", path, EIO);
    }

private:
    bool mIsContended = false;
};

class VolumeMoveTest : public HostFixture {
protected:
    VolumeMoveTest() { mDisk.SkipFlushes(); }

    void MakeItem(const Volume& volume) {
        mFolder.Remove("old");
        mFolder.Remove("new");
        mFolder.MakeFolder("new");
        mFolder.Write(volume.mIsFolder ? "old/item/inside" : "old/item", "kept");
        mDisk.SetHasRenameFlags(volume.mHasRenameFlags);
        mDisk.SetHasLinks(volume.mHasLinks);
        mDisk.ForgetFaults();
        mDisk.ForgetLies();
        mDisk.ResetCounts();
    }
    desk::VolumeMove Move() { return desk::MoveOnVolume(mFrom, mTo); }

    const std::string mFrom = mFolder.Path("old/item");
    const std::string mTo = mFolder.Path("new/item");
};

class VolumeMoveFaultTest : public VolumeMoveTest, public testing::WithParamInterface<Volume> {
protected:
    void Fail(int step, bool isCarriedOut) {
        isCarriedOut ? mDisk.FailAfter(Operation::Any, step, EIO) : mDisk.Fail(Operation::Any, step, EIO);
    }

    /// Moves, and holds what it says against what is on the disk.
    void MoveAndCheck() {
        const TreeSnapshot item = TakeSnapshot(mFrom), nothing;
        try {
            const desk::VolumeMove move = Move();
            EXPECT_EQ(move.mIsFolder, GetParam().mIsFolder);
            EXPECT_EQ(TakeSnapshot(mTo), item);
            if (move.mOldPlace != Presence::NotTold) {
                EXPECT_EQ(TakeSnapshot(mFrom), move.mOldPlace == Presence::There ? item : nothing);
            }
            EXPECT_EQ(move.mOldPlaceError, move.mOldPlace == Presence::Gone ? 0 : EIO);
        } catch (const MoveInDoubt& doubt) {
            EXPECT_EQ(host::UTF16to8(doubt.From()), mFrom);
            EXPECT_EQ(host::UTF16to8(doubt.To()), mTo);
            EXPECT_TRUE(TakeSnapshot(mFrom) == item || TakeSnapshot(mTo) == item);
            ++mDoubts;
        } catch (const host::FileException& exception) {
            EXPECT_EQ(exception.SystemError(), EIO);
            EXPECT_EQ(TakeSnapshot(mFrom), item);
            EXPECT_EQ(TakeSnapshot(mTo), nothing);
        }
    }

    int mDoubts = 0;
};

INSTANTIATE_TEST_SUITE_P(Volumes, VolumeMoveFaultTest,
                         testing::Values(Volume{"FileByRename", true, true, false},
                                         Volume{"FolderByRename", true, true, true},
                                         Volume{"FileByLink", false, true, false},
                                         Volume{"FileWithoutLinks", false, false, false},
                                         Volume{"FolderWithoutFlags", false, true, true}),
                         [](const auto& volume) { return volume.param.mName; });

}  // namespace

TEST_P(VolumeMoveFaultTest, WhateverTwoStepsFailItStandsWhereItIsToldToBe) {
    const ExpectLogged anything("");
    MakeItem(GetParam());
    MoveAndCheck();
    int steps = mDisk.Count(Operation::Any);
    for (int first = 1; first <= steps; ++first)
        for (int second = first + 1; second <= first + 8; ++second)
            for (int kind = 0; kind < 8; ++kind) {
                SCOPED_TRACE(std::to_string(first) + (kind & 1 ? " after, " : " before, ") +
                             std::to_string(second) + (kind & 2 ? " after" : " before") +
                             (kind & 4 ? ", names kept" : ""));
                MakeItem(GetParam());
                Fail(first, kind & 1);
                Fail(second, kind & 2);
                mDisk.SetLies(kind & 4 ? FaultyFileSystem::Lies::Names : FaultyFileSystem::Lies::None);
                MoveAndCheck();
                steps = std::max(steps, mDisk.Count(Operation::Any));
                if (HasFailure()) return;
            }
    EXPECT_GT(mDoubts, 0);
}

TEST_F(VolumeMoveTest, NothingIsReplacedOnAnyVolume) {
    const std::function<void()> obstacles[] = {[&] { mFolder.Write("new/item", "other"); },
                                               [&] { mFolder.MakeFolder("new/item"); },
                                               [&] { std::filesystem::create_symlink("nowhere", mTo); }};
    for (const Volume& volume :
         {Volume{"ByRename", true, true, false}, Volume{"ByLink", false, true, false},
          Volume{"WithoutLinks", false, false, false}, Volume{"FolderWithoutFlags", false, true, true}}) {
        SCOPED_TRACE(volume.mName);
        for (const auto& putThere : obstacles) {
            MakeItem(volume);
            putThere();
            const TreeSnapshot before = TakeSnapshot(mFolder.Path());
            EXPECT_EQ(ErrorOf([&] { Move(); }), EEXIST);
            EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
        }
    }
}

TEST_F(VolumeMoveTest, WhatSomebodyElsePutsUnderTheOldNameStays) {
    MakeItem({"ByLink", false, true, false});
    ContendedVolume volume;
    EXPECT_EQ(desk::MoveOnVolume(volume, mFrom, mTo).mOldPlace, Presence::There);
    EXPECT_EQ(mFolder.Read("old/item"), "somebody else's");
    EXPECT_EQ(mFolder.Read("new/item"), "kept");
}

TEST_F(VolumeMoveTest, AMoveThatSucceedsAtOnceTakesNoMoreStepsThanItMust) {
    const auto countSteps = [&](const Volume& volume) {
        MakeItem(volume);
        Move();
        return mDisk.Count(Operation::Any);
    };
    // Status, rename, and both folders flushed; then also status, access, link and removal; or status, (link,)
    // listing and rename.
    EXPECT_EQ(countSteps({"ByRename", true, true, false}), 4);
    EXPECT_EQ(countSteps({"ByLink", false, true, false}), 8);
    EXPECT_EQ(countSteps({"WithoutLinks", false, false, false}), 9);
    EXPECT_EQ(countSteps({"FolderWithoutFlags", false, true, true}), 7);
}
