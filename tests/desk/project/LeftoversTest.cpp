#include <gtest/gtest.h>

#include <filesystem>

#include "desk/core/UserNotice.h"
#include "desk/files/HostNames.h"
#include "desk/project/Leftovers.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

using desk::TemporaryPurpose;

namespace {

class LeftoversTest : public HostFixture {
protected:
    std::string SaveOf(const char* target) {
        return MakeTemporaryNameFor(TemporaryPurpose::Save, target, MakeDeadRecord(mDesktop));
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
    EXPECT_TRUE(parsed->IsFor("Reel 1.zuproj"));
    EXPECT_FALSE(parsed->IsFor("Reel 2.zuproj"));
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

TEST_F(LeftoversTest, ATextIsOnlySweptWhereTheFileThatItWasToReplaceIsThere) {
    const ExpectLogged told(mFolder.Path(SaveOf("").substr(0, 8)));
    mFolder.Write("a.zuproj", "old");
    mFolder.Write(SaveOf("a.zuproj"), "new");
    const std::string last = SaveOf("b.zuproj");
    const std::string living = desk::MakeSaveName("a.zuproj");
    for (const std::string& name : {last, living}) mFolder.Write(name, "last");
    Sweep();
    EXPECT_EQ(NamesIn(), (Names{"a.zuproj", last, living}));
    EXPECT_EQ(told.Count(), 2) << "what was removed, and what is kept where";
    mFolder.Write("b.zuproj", "saved again");
    mDisk.Fail(Operation::ListFolder, 2, EIO);
    Sweep();
    EXPECT_TRUE(mFolder.Exists(last)) << "the volume does not tell";
    Sweep();
    EXPECT_EQ(NamesIn(), (Names{"a.zuproj", "b.zuproj", living}));
}

TEST_F(LeftoversTest, AFolderThatWasToBeFilledGoesWithItsMarkWhileItIsEmpty) {
    for (const char* name : {"Empty", "Full/inside", "Other"}) mFolder.MakeFolder(name);
    for (const char* name : {"Empty", "Full", "Gone"}) mFolder.MakeFolder(CopyTo(name));
    const std::string living = desk::MakeFolderCopyName("Other");
    mFolder.MakeFolder(living);
    Sweep();
    EXPECT_EQ(NamesIn(), (Names{"Full", "Other", living}));
}
