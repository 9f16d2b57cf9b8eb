
#include "host/core/SharedSettingsFile.h"
#include "tests/support/HostFixture.h"

namespace desk {
namespace {

using SharedSettingsFileTest = HostFixture;

TEST_F(SharedSettingsFileTest, WhoChangesItUnderTheLockLosesNobodysChange) {
    const host::SharedSettingsFile file(mFolder.PathUTF16("settings"));
    EXPECT_FALSE(file.Read());
    // What a program that was killed has left.
    mFolder.Write("settings.lock", "");
    constexpr int kChanges = 40;
    const auto change = [&] {
        for (int i = 0; i < kChanges; ++i) {
            const host::SharedSettingsFile::Lock lock(file);
            ASSERT_TRUE(lock.IsHeld());
            file.Replace(file.Read().value_or(std::string()) + 'x');
        }
    };
    std::thread other(change);
    change();
    other.join();
    EXPECT_EQ(file.Read(), std::string(2 * kChanges, 'x'));
    EXPECT_EQ(NamesIn(), (Names{"settings", "settings.lock"}));
}

TEST_F(SharedSettingsFileTest, AWriteInDoubtFailsWithoutWaitingForCaches) {
    const host::SharedSettingsFile file(mFolder.PathUTF16("settings"));
    mFolder.Write("settings", "old");
    mDisk.SetLies(FaultyFileSystem::Lies::Names);
    mDisk.FailAfter(Operation::Rename, 1, EIO);
    ExpectLogged kept("is kept in");
    EXPECT_THROW(file.Replace("new"), host::FileException);
    mFolder.Write("settings", "broken");
    mDisk.FailAfter(Operation::RenameNoReplace, 1, EIO);
    ExpectLogged inDoubt("perhaps done"), notMoved("left as it is");
    EXPECT_FALSE(file.SetAside("it is broken"));
}

TEST_F(SharedSettingsFileTest, TellsOnceWhyNothingIsRemembered) {
    const host::SharedSettingsFile file(mFolder.PathUTF16("settings"));
    mFolder.Write("settings");
    mDisk.Deny(mFolder.Path("settings"), EIO);
    mFolder.MakeFolder("settings.lock");
    ExpectLogged read("could not be read: Input/output error"), notLocked("locking them failed");
    ExpectLogged locked("cannot be changed: Is a directory");
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(file.Read(), host::FileException);
        EXPECT_FALSE(host::SharedSettingsFile::Lock(file).IsHeld());
    }
    EXPECT_EQ(read.Count(), 1);
    EXPECT_EQ(locked.Count(), 1);
}

}  // namespace
}  // namespace desk
