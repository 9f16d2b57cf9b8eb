#include "desk/core/log/UsageLogFile.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/project/production/TrashMoves.h"
#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

class TrashTest : public CommandsFixture {
protected:
    void Trash(const std::vector<std::string>& names) {
        Utils::MoveToSharedProjectsTrash(PathsOf(names), false, true);
        Settle();
    }
    bool CanGo(const std::vector<std::string>& names) { return Utils::CanAllBeDeleted(PathsOf(names)); }
};

TEST_F(TrashTest, ItemsOfOneNameGoTogetherAndNoneIsReplaced) {
    OpenProductionWith({{"One/A", "1"}, {"Two/A", "2"}, {"Three/a", "3"}, "Three/B"});
    mDisk.ResetCounts();
    Trash({"One/A.zuproj", "Two/A.zuproj", "Three/a.zuproj", "Three/B.zuproj"});
    EXPECT_EQ(mDisk.CountOnUIThread(), 0) << "the first time, too";
    EXPECT_EQ(Bytes("Trash/A") + Bytes("Trash/A_1") + Bytes("Trash/a"), "123");
    EXPECT_TRUE(mFolder.Exists(OnDisk("Trash/B.zuproj")));
}

TEST_F(TrashTest, OpenProjectsAreClosedFirstAndACancelStopsAll) {
    OpenProductionWith({"A", "Reels/Day 1/B", "Kept"});
    for (const char* name : {"A", "Reels/Day 1/B", "Kept"}) OpenDocument(name);
    Edit("Reels/Day 1/B", u"unsaved");
    mDialogs.ExpectQuestion("Save Changes", u"Cancel");
    Trash({"A.zuproj", "Reels", "Kept.zuproj"});
    EXPECT_FALSE(mDialogs.LastOfferedApplyToAll()) << "it is one alone";
    EXPECT_FALSE(IsOpen("A")) << "it was closed before";
    EXPECT_TRUE(IsOpen("Reels/Day 1/B") && IsOpen("Kept"));
    EXPECT_TRUE(mFolder.Exists(OnDisk("A.zuproj")));
    EXPECT_FALSE(mFolder.Exists(OnDisk("Trash")));
    OpenDocument("A");
    Edit("A", u"unsaved too");
    for (int i = 0; i < 2; ++i) mDialogs.ExpectQuestion("Save Changes", u"Save");
    Trash({"A.zuproj", "Reels"});
    EXPECT_TRUE(mDialogs.LastOfferedApplyToAll());
    EXPECT_EQ(Bytes("Trash/Reels/Day 1/B"), "unsaved");
    EXPECT_TRUE(IsOpen("Kept"));
    EXPECT_FALSE(mFolder.Exists(OnDisk("Trash/Reels/Day 1/.B.zuproj.lock")));
}

TEST_F(TrashTest, AMoveThatFailsLeavesTheTabOpen) {
    OpenProductionWith({"A", "B"});
    const auto open = OpenDocument("A");
    // It cannot begin: the project is not even closed.
    mDisk.Deny(mFolder.Path(mProduction), EROFS);
    mDialogs.ExpectMessage("Nothing Was Moved");
    Trash({"A.zuproj", "B.zuproj"});
    EXPECT_NE(mDialogs.LastText().find("“A.zuproj” was not moved. Read-only file system"), std::string::npos)
        << mDialogs.LastText();
    EXPECT_EQ(FindDocument("A"), open);
    mDisk.Allow(mFolder.Path(mProduction));
    // It fails on the way: the project is opened again.
    ExpectLogged exception("CopyFiles(");
    mDisk.Fail(Operation::RenameNoReplace, 1, ENOSPC);
    mDialogs.ExpectMessage("Nothing Was Moved");
    Trash({"A.zuproj", "B.zuproj"});
    EXPECT_TRUE(IsOpen("A") && !IsOpen("B"));
    EXPECT_FALSE(FindDocument("A")->IsReadOnly());
}

TEST_F(TrashTest, WhatMayGo) {
    Make({"A", "Held", "Reels/B", "Locked/Day 1/C", "Trash/Old"});
    for (const char* name : {"Held", "Locked/Day 1/C"}) OtherUserLocks(name);
    OpenProduction();
    EXPECT_FALSE(CanGo({}));
    EXPECT_TRUE(CanGo({"A.zuproj", "Reels"}));
    EXPECT_FALSE(CanGo({"Trash"}));
    EXPECT_FALSE(CanGo({"A.zuproj", "Trash/Old.zuproj"}));
    for (const char* folder : {"Locked", "Locked/Day 1"}) OpenFolder(folder);
    EXPECT_FALSE(CanGo({"Locked"}));
    Unlock("Locked/Day 1/C");
    EXPECT_TRUE(Shows([&] { return CanGo({"Locked"}); }));
    EXPECT_TRUE(Utils::IsInTrash(PathOf("Trash"), true));
    EXPECT_FALSE(Utils::IsInTrash(PathOf("Trash"), false));
    OpenFolder("Trash");
    const auto typesOf = [this](const std::vector<std::string>& names) {
        Select(names);
        return DirectoryView().GetItems().GetSelectedTypes();
    };
    EXPECT_EQ(typesOf({"Held", "A", "Trash"}), 5);
    EXPECT_TRUE(WhyNot(kMoveToTrash).starts_with("“Held” in “North Shore” is in use.")) << "the first one";
    EXPECT_EQ(typesOf({"Reels", "Trash/Old"}), 10);
    EXPECT_EQ(WhyNot(kMoveToTrash), "“Old” is in the trash already.");
    Select({"A", "Held", "Locked"});
    EXPECT_TRUE(WhyNot(kMoveToTrash).starts_with("“Held”")) << WhyNot(kMoveToTrash);
}

TEST_F(TrashTest, TheCommandTakesWhatMayGoAndNamesTheRest) {
    Make({"A", "Reels/B", "Reels/C", "Locked/Day 1/D"});
    OtherUserLocks("Locked/Day 1/D");
    OpenProduction();
    OpenFolder("Reels");
    const desk::UsageLogFile usage(mFolder.Path("usage.jsonl"));
    // Of a folder that was never opened nobody knows yet that somebody works in it.
    Select({"A", "Reels", "Reels/C", "Locked"});
    EXPECT_TRUE(IsEnabled(kMoveToTrash));
    // One message tells of this and of what fails on the way.
    mDisk.Fail(Operation::RenameNoReplace, 2, ENOSPC);
    ExpectLogged exception("CopyFiles(");
    mDialogs.ExpectMessage("Not Everything Was Moved");
    EXPECT_TRUE(Send(kMoveToTrash));
    EXPECT_TRUE(
        mDialogs.LastText().starts_with("“Locked” was not moved. edit-bay-2 has “D.zuproj” in it open on "
                                        "machine-of-edit-bay-2.\n“Reels” was not moved. There is no room"))
        << mDialogs.LastText();
    Select({"Reels", "Reels/C"});
    EXPECT_TRUE(Send(kMoveToTrash));
    EXPECT_TRUE(Shows({"Locked", "Trash"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"Locked"});
    EXPECT_TRUE(mFolder.Exists(OnDisk("Trash/Reels/C.zuproj")));
    mMain.RunUntilIdle();
    EXPECT_NE(mFolder.Read("usage.jsonl").find("DeleteCommand"), std::string::npos);
}

TEST_F(TrashTest, WhoCancelsTheSearchForLocksAndProjectsMovesAndClosesNothing) {
    // The last folder that is looked through.
    OpenProductionWith({"Reels/A"});
    OpenDocument("Reels/A");
    Select({"Reels"});
    mDialogs.mWhileWaiting = [](desk::WorkProgress& progress) { progress.Cancel(); };
    ExpectLogged cancelled("Operation canceled");
    const std::string folder = mFolder.Path(OnDisk("Reels"));
    mDisk.CloseGate(Operation::ListFolder, folder);
    mDisk.ResetCounts();
    EXPECT_TRUE(mTabView->ObeyCommand(Command(kMoveToTrash)));
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
    mDisk.OpenGate();
    mDialogs.mWhileWaiting = [this](desk::WorkProgress& progress) {
        progress.Cancel();
        mDisk.OpenGate();
    };
    mDisk.CloseGate(Operation::ListFolder, folder);
    EXPECT_FALSE(Utils::CloseOpenProjectsInList(PathsOf({"Reels"}), false, true));
    mDisk.CloseGate(Operation::ListFolder, folder);
    EXPECT_FALSE(Utils::CloseOpenProjectsNotInList(PathsOf({"Reels"}), false, true));
    EXPECT_TRUE(IsOpen("Reels/A") && mFolder.Exists(OnDisk("Reels/A.zuproj")));
}

TEST_F(TrashTest, WhoCancelsTheMoveIsToldHowFarItCame) {
    OpenProductionWith({"A", "B", "C", "Trash/Old"});
    mDisk.CloseGate(Operation::RenameNoReplace, mFolder.Path(OnDisk("B.zuproj")));
    mDialogs.mWhileWaiting = [this](desk::WorkProgress& progress) {
        for (int i = 0; i < 100 && progress.Get().mItem != u"B.zuproj"; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (progress.Get().mItem != u"B.zuproj") return;
        progress.Cancel();
        mDisk.OpenGate();
    };
    const ExpectLogged exception("CopyFiles("),
        told("Cancelled: moved to “Trash”: 2, left where they were: 1.");
    Trash({"A.zuproj", "B.zuproj", "C.zuproj"});
}

TEST_F(TrashTest, TheRowThatFollowsIsSelected) {
    using Names = std::vector<std::string>;
    for (const char* name : {"A", "B", "Reels/C", "Reels/D", "X", "Y"}) MakeProject(name);
    OpenProductionWith({"Trash/Old"});
    OpenFolder("Reels");
    const auto trashed = [this](
                             const Names& names, const std::function<void()>& meanwhile = [] {}) {
        Select(names);
        mTabView->ObeyCommand(Command(kMoveToTrash));
        meanwhile();
        for (const std::string& name : names) EXPECT_TRUE(Shows([&] { return !FindRow(name); }));
        Settle();
        return SelectedNames();
    };
    EXPECT_EQ(trashed({"A"}), Names{"B"});
    EXPECT_EQ(trashed({"Reels/D"}), Names{"C"}) << "who presses on stays in the folder";
    EXPECT_EQ(trashed({"Reels/C"}), Names{"Reels"});
    EXPECT_EQ(trashed({"Reels"}), Names{"X"}) << "nothing in the trash is selected";
    EXPECT_EQ(trashed({"Y"}, [this] { Select({"B"}); }), Names{"B"}) << "the user was quicker";
    EXPECT_EQ(trashed({"X"}), Names{"B"}) << "nothing follows";
    EXPECT_EQ(trashed({"B"}), Names{});
    // Among hits it is the next one, or the one before, never a folder that only leads to one.
    for (const char* name : {"Day/Deep/Take 1", "Day/Take 2", "Take 3"}) MakeProject(name);
    TypeSearch(QStringLiteral("take"));
    ASSERT_TRUE(Shows([&] {
        return ShownHits() == Rows{"Day", "  Deep", "    Take 1", "  Take 2", "Take 3"};
    }));
    for (const auto& [name, next] : {std::pair("Day/Take 2", "Take 3"), {"Take 3", "Take 1"}}) {
        SearchView().SelectRowsByPaths({ProjectPath(name)});
        Settle();
        Send(kMoveToTrash);
        EXPECT_TRUE(Shows([&, next = next] { return SelectedNames() == Names{next}; })) << name;
    }
}

TEST_F(TrashTest, ScriptsMoveToTheTrashWhileThePanelIsThere) {
    Make({"A", "B"});
    OtherUserLocks("B");
    OpenProduction();
    EXPECT_TRUE(desk::TryToMoveToTrash(PathsOf({"A.zuproj", "B.zuproj"})));
    EXPECT_TRUE(mFolder.Exists(OnDisk("A.zuproj"))) << "one that may not go keeps all";
    EXPECT_TRUE(desk::TryToMoveToTrash(PathsOf({"A.zuproj"})));
    EXPECT_TRUE(mFolder.Exists(OnDisk("Trash/A.zuproj")));
    ClosePanel();
    EXPECT_FALSE(desk::TryToMoveToTrash({}));
}

}  // namespace HandlerSharedProjects
