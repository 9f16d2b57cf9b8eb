

#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/project/ProjectLockFile.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

using namespace std::chrono_literals;

namespace {

constexpr char kProject[] = "Day 1/Reel 1.zuproj";
constexpr char kLock[] = "Day 1/.Reel 1.zuproj.lock";
constexpr char kMovedLock[] = "Day 2/.Reel 1.zuproj.lock";

class LockKeeperTest : public HostFixture {
protected:
    LockKeeperTest() { mFolder.Write(kProject); }

    host::ProjectLockFileRef Create(std::string_view project = kProject) {
        return host::CreateProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName,
                                           mDesktop.mMachineName);
    }
    host::ProjectLockFileRef Read() {
        return host::ReadProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName,
                                         mDesktop.mMachineName);
    }
    std::string NonceAt(std::string_view lock) const {
        return desk::ParseLockRecord(mFolder.Read(lock)).mNonce;
    }
    /// As a folder is swept when it is first listed.
    void List(const char* folder) {
        const Names names = NamesIn(folder);
        desk::SweepInBackground(mFolder.Path(folder), {names.begin(), names.end()});
        mMain.RunUntilIdle();
    }
};

}  // namespace

TEST_F(LockKeeperTest, TheLastCreatedReferenceRemovesTheFile) {
    host::ProjectLockFileRef first = Create();
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->IsLocked() && first->IsHeldByReader());
    EXPECT_EQ(first->GetLockOwner(), mDesktop.mUserName);
    const std::string nonce = NonceAt(kLock);
    host::ProjectLockFileRef second = Create("./Day 1//Reel 1.zuproj");
    ASSERT_TRUE(second);
    EXPECT_EQ(NonceAt(kLock), nonce) << "the same lock";
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), u"tomas", mDesktop.mMachineName));
    EXPECT_TRUE(Read()->IsHeldByReader());
    EXPECT_TRUE(mFolder.Exists(kLock)) << "a read reference has gone";
    first.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    second.reset();
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_FALSE(Read());
}

TEST_F(LockKeeperTest, RefusesBeforeTheDiskIsTouched) {
    const ExpectLogged why("take lock of"), told("“notes” cannot be locked: Invalid argument.");
    mDisk.ResetCounts();
    // The longest name that has room for what the lock's name adds, and one more.
    const std::string longest = std::string(249 - 7, 'x') + ".zuproj";
    EXPECT_FALSE(Create("x" + longest));
    EXPECT_FALSE(Create("notes.txt"));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), {}, mDesktop.mMachineName));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName, {}));
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
    EXPECT_TRUE(Create(longest));

    mDesktop.mMachineName.clear();
    host::UTF16String user = u"before", machine = u"before";
    EXPECT_FALSE(host::GetProjectLockingPrefs(user, machine));
    EXPECT_TRUE(user.empty() && machine.empty()) << "an identity is whole or none";
}

TEST_F(LockKeeperTest, WhatCannotBeRemovedIsTriedAgainAndCanBeTakenBack) {
    host::ProjectLockFileRef lock = Create();
    std::string nonce = NonceAt(kLock);
    const auto giveUp = [&] {
        mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
        lock.reset();
        EXPECT_TRUE(mFolder.Exists(kLock));
    };
    giveUp();
    mDisk.Allow(mFolder.Path("Day 1"));
    lock = Create();
    ASSERT_TRUE(lock);
    mMain.Advance(10s);
    List("Day 1");
    EXPECT_EQ(NonceAt(kLock), nonce) << "it has been taken back";
    EXPECT_FALSE(lock->IsLost());

    std::optional<ExpectLogged> told;
    for (const auto time : {1s, 60s}) {
        if (time > 3s) told.emplace("could not remove the lock file");
        giveUp();
        mMain.Advance(time);
        mDisk.Allow(mFolder.Path("Day 1"));
        lock = Create();
        EXPECT_EQ(NonceAt(kLock), nonce) << "still this process's";
        giveUp();
        mMain.Advance(time);
        mDisk.Allow(mFolder.Path("Day 1"));
        mMain.Advance(5s);
        EXPECT_FALSE(mFolder.Exists(kLock));
        EXPECT_EQ(mMain.CountDelayed(), 0u);
        lock = Create();
        nonce = NonceAt(kLock);
    }
}

TEST_F(LockKeeperTest, EachOfTheLocksThatShareARecordIsGivenUpAndTakenBackAlone) {
    const std::string other = "Day 1/.Reel 2.zuproj.lock";
    mFolder.Write("Day 1/Reel 2.zuproj");
    for (const auto time : {1s, 60s}) {
        std::optional<ExpectLogged> told;
        if (time > 3s) told.emplace("could not remove the lock file");
        const desk::LockRecord shared =
            desk::MakeLockRecord(mDesktop, mDesktop.mUserName, mDesktop.mMachineName);
        std::vector<desk::LockRemains> locks;
        for (const std::string& lock : {std::string(kLock), other}) {
            mFolder.Write(lock, WriteLockRecord(shared));
            locks.push_back({mFolder.Path(lock), shared.mNonce, {}});
        }
        mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
        desk::LockKeeper::Instance().GiveUpInBackground(locks, {});
        mMain.Advance(time);
        mDisk.Allow(mFolder.Path("Day 1"));
        const host::ProjectLockFileRef again = Create();
        ASSERT_TRUE(again);
        mMain.Advance(10s);
        EXPECT_TRUE(mFolder.Exists(kLock));
        EXPECT_FALSE(mFolder.Exists(other));
    }
}

TEST_F(LockKeeperTest, ALockOfAVolumeThatIsAwayIsGivenUpWhenItIsBack) {
    host::ProjectLockFileRef lock = Create();
    mFolder.MakeFolder("unmounted");
    mFolder.Rename("Day 1", "unmounted/Day 1");
    mFolder.MakeFolder("Day 1");
    lock.reset();
    const ExpectLogged told("which is not there now");
    mMain.Advance(60s);
    std::filesystem::remove(mFolder.Path("Day 1"));
    mFolder.Rename("unmounted/Day 1", "Day 1");
    mMain.Advance(5s);
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_EQ(mMain.CountDelayed(), 0u);
}

TEST_F(LockKeeperTest, TheEndOfTheProgramWaitsForLocksThatCanBeGivenUpButForNoVolumeThatHangs) {
    host::ProjectLockFileRef lock = Create();
    mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
    lock.reset();
    std::thread reader([this] {
        std::this_thread::sleep_for(300ms);
        mDisk.Allow(mFolder.Path("Day 1"));
    });
    desk::LockKeeper::Instance().FinishGivingUp(20s);
    EXPECT_FALSE(mFolder.Exists(kLock));
    reader.join();

    const auto begin = std::chrono::steady_clock::now();
    lock = Create();
    mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
    lock.reset();
    mDisk.Allow(mFolder.Path("Day 1"));
    mDisk.CloseGate(Operation::RemoveFile, mFolder.Path(kLock));
    desk::LockKeeper::Instance().FinishGivingUp(300ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    mDisk.OpenGate();
    mMain.Advance(5s);
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, ALockFollowsAFolderThatSomebodyElseHasMoved) {
    host::ProjectLockFileRef lock = Create();
    const std::string nonce = NonceAt(kLock);
    mFolder.Rename("Day 1", "Day 2");
    const host::ProjectLockFileRef moved = Create("Day 2/Reel 1.zuproj");
    ASSERT_TRUE(moved);
    EXPECT_EQ(NonceAt(kMovedLock), nonce);
    EXPECT_FALSE(lock->IsLost());
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kMovedLock));

    std::filesystem::copy(mFolder.Path("Day 2"), mFolder.Path("Day 3"));
    EXPECT_FALSE(Create("Day 3/Reel 1.zuproj")) << "a copy of a lock is not the lock";
    EXPECT_FALSE(moved->IsLost());
}

TEST_F(LockKeeperTest, ALostLockStaysLostAndRemovesNothingWhateverComesAfterIt) {
    for (const bool isBroken : {true, false}) {
        host::ProjectLockFileRef lock = Create();
        const std::string ours = mFolder.Read(kLock);
        mDisk.SetGone(true);
        EXPECT_THROW(lock->IsLost(), host::FileException);
        mDisk.SetGone(false);
        mFolder.Remove(kLock);
        if (isBroken) mFolder.Write(kLock, WriteLockRecord(MakeForeignRecord(mDesktop)));
        EXPECT_TRUE(lock->IsLost() && !lock->IsLocked());
        if (isBroken) {
            const ExpectLogged told("“Reel 1” is locked by tomas on edit-bay-2");
            EXPECT_FALSE(Create());
            mFolder.Remove(kLock);
        } else {
            mFolder.Write(kLock, ours);  // It comes to light again.
        }
        const host::ProjectLockFileRef next = Create();
        ASSERT_TRUE(next);
        EXPECT_TRUE(lock->IsLost());
        lock.reset();
        List("Day 1");
        EXPECT_TRUE(mFolder.Exists(kLock)) << "the lost one has not taken it along";
        EXPECT_FALSE(next->IsLost());
    }
}

TEST_F(LockKeeperTest, ALockThatSomebodyElseHasMovedIsFoundBesideItsFolderOrWhenItsNewFolderIsListed) {
    mFolder.Write("A/B/Reel 1.zuproj");
    const struct {
        const char* mProject;
        const char* mFrom;
        const char* mTo;
        const char* mLock;
        bool mIsBeside = true;
    } cases[] = {
        {kProject, "Day 1", "Day 2", kMovedLock},
        {"A/B/Reel 1.zuproj", "A", "C", "C/B/.Reel 1.zuproj.lock"},
        {kProject, "Day 1", "A/Day 3", "A/Day 3/.Reel 1.zuproj.lock", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mTo);
        host::ProjectLockFileRef lock = Create(c.mProject);
        mFolder.Rename(c.mFrom, c.mTo);
        const std::string folder = std::filesystem::path(c.mLock).parent_path();
        List(folder.c_str());
        EXPECT_TRUE(mFolder.Exists(c.mLock)) << "it is still held";
        EXPECT_THROW(lock->IsLost(), host::FileException);
        lock.reset();
        EXPECT_EQ(mFolder.Exists(c.mLock), !c.mIsBeside);
        if (!c.mIsBeside) {
            host::ProjectLockFileRef again = Create(folder + "/Reel 1.zuproj");
            List(folder.c_str());
            EXPECT_TRUE(mFolder.Exists(c.mLock)) << "it has been taken back";
            mFolder.Rename(c.mTo, c.mFrom);
            again.reset();
            mFolder.Rename(c.mFrom, c.mTo);
            List(folder.c_str());
        }
        EXPECT_FALSE(mFolder.Exists(c.mLock));
        mFolder.Rename(c.mTo, c.mFrom);
        mMain.Advance(5s);
        EXPECT_EQ(mMain.CountDelayed(), 0u);
    }
}

TEST_F(LockKeeperTest, ALockThatTheFolderStoreSeesElsewhereIsRemovedThere) {
    const auto store = desk::CreateFolderStore(desk::SweepInBackground);
    desk::GetServices().mFolderStore = store.get();
    host::DirectoryChangeMonitor::MonitorDirectory(mFolder.PathUTF16(), true, true);
    host::ProjectLockFileRef lock = Create();
    mFolder.MakeFolder("A");
    mFolder.Rename("Day 1", "A/Day 3");
    store->RequestListing(mFolder.PathUTF16("A/Day 3"), [](const desk::FolderStore::Delivery&) {});
    mMain.RunUntilIdle();
    store->RequestFacts(mFolder.PathUTF16("A/Day 3"), {u"Reel 1.zuproj"});
    mMain.RunUntilIdle();
    lock.reset();
    EXPECT_TRUE(mFolder.Exists("A/Day 3/.Reel 1.zuproj.lock"));
    mMain.Advance(1s);
    EXPECT_FALSE(mFolder.Exists("A/Day 3/.Reel 1.zuproj.lock"));
    desk::GetServices().mFolderStore = nullptr;
}

namespace {

/// A volume without links on which locks are made and not written, while their folder is renamed or not.
class HollowDisk : public FaultyFileSystem {
public:
    explicit HollowDisk(std::function<void()> meanwhile) : mMeanwhile(std::move(meanwhile)) {
        SetHasLinks(false);
    }
    void CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        const bool isLock = path.ends_with(".lock") && mMeanwhile;
        FaultyFileSystem::CreateNewFile(path, isLock ? bytes.substr(0, 20) : bytes, mode);
        if (!isLock) return;
        std::exchange(mMeanwhile, nullptr)();
        throw host::FileException("create", host::UTF8to16(path), EIO);
    }

private:
    std::function<void()> mMeanwhile;
};

}  // namespace

TEST_F(LockKeeperTest, ALockThatWasMadeAndNotWrittenGoesAfterAWhileWhereverItStands) {
    const ExpectLogged told("");
    mFolder.MakeFolder("A");
    const std::string other = desk::MakeTemporaryNameFor(desk::TemporaryPurpose::Lock, ".Reel 1.zuproj.lock",
                                                         MakeForeignRecord(mDesktop));
    mFolder.Write("Day 1/" + other);
    for (const char* place : {"Day 1", "Day 2", "A/Day 3"}) {
        SCOPED_TRACE(place);
        const std::string now = mFolder.Exists("Day 2") ? "Day 2" : "Day 1";
        const HollowDisk disk([&] { now != place ? mFolder.Rename(now, place) : void(); });
        EXPECT_FALSE(Create(now + "/Reel 1.zuproj"));
        const std::string lock = place + std::string("/.Reel 1.zuproj.lock");
        EXPECT_TRUE(mFolder.Exists(lock));
        mMain.Advance(5s);
        EXPECT_TRUE(mFolder.Exists(lock)) << "another machine may be making one";
        if (place == std::string("A/Day 3")) {
            EXPECT_FALSE(Create("A/Day 3/Reel 1.zuproj")) << "for now";
        }
        EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return NamesIn(place) == Names{other, "Reel 1.zuproj"}; }));
        mMain.Advance(1s);  // What swept has its last word before the disk goes.
    }
    mFolder.Remove("A/Day 3/" + other);
    const HollowDisk disk([] {});
    EXPECT_TRUE(Create("A/Day 3/Reel 1.zuproj")) << "nobody else can have made it";
}
