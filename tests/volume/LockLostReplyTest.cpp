#include <gtest/gtest.h>

#include <filesystem>

#include "desk/files/PosixFileSystem.h"
#include "desk/project/LockProtocol.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/volume/FaultyMount.h"

using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockTaking;

namespace {

class LockLostReply : public testing::TestWithParam<const char*> {
protected:
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path()))
            names.push_back(entry.path().filename());
        return names;
    }

    TemporaryFolder mFolder;
    desk::PosixFileSystem mDisk;
};

INSTANTIATE_TEST_SUITE_P(Rules, LockLostReply,
                         testing::Values("link:2:5:after", "link:2:5:before", "create:2:5:after",
                                         "create:2:5:before", "unlink:2:5:after", "unlink:2:5:before",
                                         "write:2:5:after", "write:2:28:before", "fsync:2:5:after",
                                         "fsync:2:5:before", "link:2:17:after", "unlink:2:2:after"));

constexpr char kLock[] = ".Reel 1.zuproj.lock";
constexpr int kRounds = 250;

}  // namespace

TEST_P(LockLostReply, LeavesNoOrphanAndHoldsNobodyOff) {
    if (!FaultyMount::IsPossible()) GTEST_SKIP() << "no /dev/fuse: lost replies were not tried";
    FaultyMount mounts[] = {{mFolder.Path(), GetParam()}, {mFolder.Path(), GetParam()}};
    RecordingDesktop machines[2];
    machines[1].mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
    for (FaultyMount& mount : mounts)
        if (!mount.IsMounted())
            GTEST_SKIP() << "not allowed to mount, lost replies were not tried: " << mount.ErrorText();

    int taken = 0;
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::string lock = mounts[round % 2].Path(kLock);
        LockProtocol protocol(mDisk, machines[round % 2]);
        const LockRecord mine = desk::MakeLockRecord(machines[round % 2], u"ines", u"edit-bay-1");
        const LockTaking taking = protocol.Take(lock, mine);
        ASSERT_NE(taking.mOutcome, LockTaking::Outcome::Held) << "nobody has it";
        for (const desk::LockRemains& remains : protocol.TakeRemains()) protocol.RemoveRemains(remains);
        if (taking.mOutcome == LockTaking::Outcome::Ours) {
            ++taken;
            ASSERT_EQ(desk::ParseLockRecord(mFolder.Read(kLock)).mNonce, mine.mNonce);
            LockProtocol other(mDisk, machines[1 - round % 2]);
            if (round % 10 == 0) {
                const LockRecord second =
                    desk::MakeLockRecord(machines[1 - round % 2], u"tomas", u"edit-bay-2");
                ASSERT_NE(other.Take(mounts[1 - round % 2].Path(kLock), second).mOutcome,
                          LockTaking::Outcome::Ours);
                for (const desk::LockRemains& remains : other.TakeRemains()) other.RemoveRemains(remains);
            }
            ASSERT_EQ(protocol.Release(lock, mine.mNonce), LockRelease::Done);
        }
        ASSERT_TRUE(Names().empty()) << Names().front();
    }
    EXPECT_GT(taken, kRounds / 3);
}
