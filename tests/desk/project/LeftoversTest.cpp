

#include "desk/core/names/HostNames.h"
#include "desk/project/lock/Leftovers.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

using desk::TemporaryPurpose;

namespace {

class LeftoversTest : public HostFixture {
protected:
    std::string SaveOf(const char* target) {
        return MakeTemporaryNameFor(TemporaryPurpose::Save, target, MakeDeadRecord(mDesktop));
    }
    std::string ToldSaveOf(const char* target) {
        return MakeTemporaryNameFor(TemporaryPurpose::ToldSave, target, MakeDeadRecord(mDesktop));
    }
    std::string CopyTo(const char* target) {
        return MakeTemporaryNameFor(TemporaryPurpose::FolderCopy, target, MakeDeadRecord(mDesktop));
    }
    void Sweep() { desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path()); }
};

}  // namespace

TEST_F(LeftoversTest, TemporariesTellWhatTheyBelongToAndWhoMadeThem) {
    desk::LockRecord owner = MakeDeadRecord(mDesktop);
    const std::string name = MakeTemporaryNameFor(TemporaryPurpose::Save, "Reel 1.zuproj", owner);
    const auto parsed = desk::ParseTargetedTemporary(name);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->mPurpose, TemporaryPurpose::Save);
    EXPECT_TRUE(parsed->IsFor("Reel 1.zuproj") && !parsed->IsFor("Reel 2.zuproj"));
    EXPECT_TRUE(parsed->mOwner.IsGone(mDesktop));
    EXPECT_EQ(desk::ParseTargetedTemporary(CopyTo("x"))->mPurpose, TemporaryPurpose::FolderCopy);

    std::string upper = name;
    upper[9] = 'F';
    std::string other = name;
    other[1] = 'Z';
    owner.mMachineID.clear();
    const std::string nobodys = MakeTemporaryNameFor(TemporaryPurpose::Save, "x", owner);
    for (const std::string& miss :
         Names{".zusave-", name + ".x", name + '.', name.substr(0, name.rfind('.')), upper, other,
               name.substr(1), ".zusave-0" + name.substr(8), nobodys, MakeTemporaryName(owner)})
        EXPECT_FALSE(desk::ParseTargetedTemporary(miss)) << miss;
    for (const std::string& hidden : {name, CopyTo("x"), nobodys})
        EXPECT_TRUE(desk::IsHiddenName(hidden, desk::ItemKind::File)) << hidden;
    owner.mMachineID = owner.mBootID = std::string(64, 'f');
    owner.mPidNamespace = owner.mProcessStart = UINT64_MAX;
    owner.mPid = INT32_MAX;
    const std::string longest = MakeTemporaryNameFor(TemporaryPurpose::Save, std::string(255, 'n'), owner);
    EXPECT_LE(longest.size(), 255u);
    EXPECT_TRUE(desk::ParseTargetedTemporary(longest));
}

TEST_F(LeftoversTest, ATextOfASaveGoesOnlyWhereItIsKnownThatNobodyNeedsIt) {
    const ExpectLogged told("recovered");
    const std::string living = desk::MakeSaveName("a.zuproj");
    mFolder.Write(living, "living");
    mFolder.Write("old.zuproj", "before");
    mFolder.Write(SaveOf("old.zuproj"), "never told to be saved");
    mFolder.Write(ToldSaveOf("old.zuproj"), "text");
    for (const char* target : {"saved.zuproj", "foreign.zuproj", "gone.zuproj"})
        mFolder.Write(SaveOf(target), "text");
    mFolder.Write("saved.zuproj", "text");
    mFolder.Write("foreign.zuproj", "a colleague's");
    const Names before = NamesIn();
    for (int listing = 2; listing < 7; ++listing) mDisk.Fail(Operation::ListFolder, listing, EIO);
    Sweep();
    EXPECT_EQ(NamesIn(), before) << "the volume does not tell";
    Sweep();
    EXPECT_EQ(NamesIn(), (Names{"foreign recovered.zuproj", "foreign.zuproj", living, "old recovered.zuproj",
                                "old.zuproj", "saved.zuproj", "Text recovered.zuproj"}));
    for (const char* name : {"foreign recovered.zuproj", "old recovered.zuproj", "Text recovered.zuproj"})
        EXPECT_EQ(mFolder.Read(name), "text");
    EXPECT_EQ(mFolder.Read("foreign.zuproj"), "a colleague's");
    EXPECT_EQ(told.Count(), 3) << "each told once, and where it is";
}

TEST_F(LeftoversTest, AFolderThatWasToBeFilledGoesWithItsMarkWhileItIsEmpty) {
    for (const char* name : {"Empty", "Full/inside", "Other"}) mFolder.MakeFolder(name);
    for (const char* name : {"Empty", "Full", "Gone"}) mFolder.MakeFolder(CopyTo(name));
    const std::string living = desk::MakeFolderCopyName("Other");
    mFolder.MakeFolder(living);
    Sweep();
    EXPECT_EQ(NamesIn(), (Names{"Full", "Other", living}));
}
