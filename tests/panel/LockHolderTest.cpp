#include <unistd.h>

#include "desk/core/names/ProcessFacts.h"
#include "host/files/File.h"
#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

class LockHolderTest : public CommandsFixture {
protected:
    desk::LockRecord OurRecord() {
        return desk::MakeLockRecord(mDesktop, mDesktop.mUserName, mDesktop.mMachineName);
    }
    desk::LockRecord RecordOfAnotherProgram() {
        desk::LockRecord record = OurRecord();
        record.mPid = ::getppid();
        record.mProcessStart = desk::ReadProcessFacts(record.mPid).value().mStart;
        return record;
    }
    /// The file of a lock of ours is gone for a moment, or somebody else's stands there.
    void Lose(const std::string& name, const std::string& bytes) {
        WeLock(name);
        Unlock(name);
        EXPECT_TRUE(mLocks.back()->IsLost());
        WriteLock(name, bytes);
    }
    /// All who ask, about the project P in `folder`.
    void ExpectHeld(const std::string& folder, const UTF16String& owner, bool isInTheWay) {
        const std::string project = folder + "/P.zuproj";
        Columns::FileMetadata row(PathOf(project));
        row.Update(true, Columns::kNameColumnID);
        EXPECT_EQ(row.GetColumnDisplayString(Columns::kLockedColumnID), owner);
        EXPECT_EQ(Utils::IsALockedProject(PathOf(project)), isInTheWay) << "the menus, and drops";
        EXPECT_EQ(Utils::CanAllBeDeleted(PathsOf({project})), !isInTheWay) << "the trash";
        if (isInTheWay) {
            EXPECT_LT(File::Move(PathOf(project), PathOf(folder + "/Q.zuproj")), 0);
            mDialogs.ExpectMessage("Not Renamed");
        }
        EXPECT_EQ(Utils::MoveProjectAndLockFiles(PathOf(project), ProjectPath(folder + "/Q")), !isInTheWay);
        Select({folder});
        if (isInTheWay) mDialogs.ExpectMessage("Nothing Was Moved");
        Send(kMoveToTrash);
        EXPECT_EQ(mFolder.Exists(OnDisk(folder)), isInTheWay) << "the folder";
    }
};

TEST_F(LockHolderTest, AllWhoAskGetOneAnswer) {
    const ExpectLogged anything(""), notMoved("Move Project Result: -1");
    const std::string ours = WriteLockRecord(OurRecord());
    const std::string others = WriteLockRecord(MakeForeignRecord(mDesktop));
    const struct {
        std::string mName;
        std::function<void(const std::string& name)> mLock;
        const char16_t* mOwner;
        bool mIsInTheWay = true;
    } cases[] = {
        {"own", [&](auto& name) { WeLock(name); }, u"ines", false},
        {"own, of another machine", [&](auto& name) { OtherUserLocks(name, u"ines"); },
         u"ines on machine-of-ines"},
        {"own, of another program",
         [&](auto& name) { WriteLock(name, WriteLockRecord(RecordOfAnotherProgram())); },
         u"ines on edit-bay-1"},
        {"another's", [&](auto& name) { WriteLock(name, others); }, u"tomas"},
        {"of a user whose name differs in case", [&](auto& name) { OtherUserLocks(name, u"Ines"); }, u"Ines"},
        {"stale", [&](auto& name) { WriteLock(name, WriteLockRecord(MakeDeadRecord(mDesktop))); }, u"", false},
        {"unreadable", [&](auto& name) { WriteLock(name, "{"); }, u"Unknown user"},
        {"given up", [&](auto& name) { WriteLock(name, ours); }, u"", false},
        {"lost", [&](auto& name) { Lose(name, ours); }, u"", false},
        {"lost to another", [&](auto& name) { Lose(name, others); }, u"tomas"},
    };
    for (const auto& c : cases)
        for (const char* listed : {"", ", listed"}) {
            MakeProject(c.mName + listed + "/P");
            c.mLock(c.mName + listed + "/P");
        }
    OpenProduction();
    for (const auto& c : cases)
        for (const std::string listed : {"", ", listed"}) {
            SCOPED_TRACE(c.mName + listed);
            if (!listed.empty()) {
                OpenFolder(c.mName + listed);
                EXPECT_EQ(Utils::CanAllBeDeleted(PathsOf({c.mName + listed})), !c.mIsInTheWay);
            }
            ExpectHeld(c.mName + listed, c.mOwner, c.mIsInTheWay);
        }
}

}  // namespace HandlerSharedProjects
