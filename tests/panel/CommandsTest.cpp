#include <QTest>

#include "desk/core/log/UsageLogFile.h"
#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

class CommandsTest : public CommandsFixture {
protected:
    using IDs = std::vector<int>;
    /// Which of `commands` are enabled.
    IDs EnabledOf(const IDs& commands) {
        IDs enabled;
        for (const int command : commands)
            if (IsEnabled(command))
                enabled.push_back(command);
            else
                EXPECT_FALSE(WhyNot(command).empty()) << command;
        return enabled;
    }
    void NewFolder(const UTF16String& name) {
        mDialogs.ExpectText("New Folder", name);
        EXPECT_TRUE(Send(kNewFolder));
    }
    void DoubleClick(const std::string& name) { DoubleClick(TreeWidget(), RowOf(name)); }
    void DoubleClickHit(const std::string& path) {
        DoubleClick(SearchTreeWidget(), SearchView().GetRowFromPath(PathOf(path)));
    }
    void DoubleClick(QTreeView& tree, const RowRef& row) {
        QModelIndex index = tree.model()->index(0, 0);
        while (index.isValid() && index.internalPointer() != row.get()) index = tree.indexBelow(index);
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(index).center());
        Settle();
    }

    using Names = std::vector<std::string>;
    const IDs kCreating{kNewFolder, kNewProject, kAddProject};
    const IDs kAll{kNewFolder,  kNewProject, kAddProject, kOpen,        kClose,
                   kRefresh,    kRevealRoot, kRevealItem, kToggleLock,  kMakeACopy,
                   kRefreshAll, kSaveAll,    kCloseAll,   kMoveToTrash, kCloseAllOthers};
};

TEST_F(CommandsTest, StatusesFollowSelectionAndProjects) {
    OpenPanel();
    EXPECT_EQ(EnabledOf(kAll), IDs{});
    OpenProductionWith({"A", "B", "Trash/Old", "Reels/"});
    OpenFolder("Trash");
    EXPECT_EQ(EnabledOf(kAll), (IDs{kNewFolder, kNewProject, kAddProject, kRevealRoot}));
    Select({"Reels"});
    EXPECT_EQ(EnabledOf(kAll),
              (IDs{kNewFolder, kNewProject, kAddProject, kRevealRoot, kRevealItem, kMakeACopy, kMoveToTrash}));
    Select({"A"});
    EXPECT_EQ(EnabledOf(kAll), (IDs{kNewFolder, kNewProject, kAddProject, kOpen, kRevealRoot, kRevealItem,
                                    kMakeACopy, kMoveToTrash}));
    Select({"A", "B"});
    EXPECT_EQ(EnabledOf(kAll), (IDs{kOpen, kRevealRoot, kRevealItem, kMakeACopy, kMoveToTrash}));
    for (const char* name : {"Trash", "Trash/Old"}) {
        Select({name});
        EXPECT_EQ(EnabledOf(kCreating), IDs{}) << name;
        EXPECT_FALSE(IsEnabled(kMoveToTrash)) << name;
    }
    Select({"A", "B"});
    OpenDocument("A");
    Settle();
    EXPECT_EQ(EnabledOf(kAll),
              (IDs{kOpen, kClose, kRevealRoot, kRevealItem, kMakeACopy, kSaveAll, kCloseAll, kMoveToTrash}));
    Select({"A"});
    OpenDocument("B");
    Settle();
    EXPECT_EQ(EnabledOf({kOpen, kClose, kToggleLock, kCloseAllOthers}),
              (IDs{kClose, kToggleLock, kCloseAllOthers}));
    EXPECT_EQ(WhyNot(kOpen), "What is selected is open already.");
    // One read-only, one not: they cannot be switched together.
    ASSERT_TRUE(mDocuments.SetProjectReadOnly(FindDocument("B"), true));
    Select({"A", "B"});
    FindDocument("A")->SetOutOfDate(true);
    EXPECT_EQ(EnabledOf({kToggleLock, kSaveAll, kRefreshAll}), IDs{kSaveAll});
    CloseProduction();
    EXPECT_EQ(EnabledOf(kAll), IDs{});
}

TEST_F(CommandsTest, AFolderThatIsCalledLikeAProjectIsAFolder) {
    for (const bool areKindsHidden : {false, true}) {
        mDisk.HideKinds(areKindsHidden);
        OpenProduction(areKindsHidden ? "South Shore" : "North Shore");
        MakeProject("Day.zuproj/Scene 1");
        MakeProject("A");
        ASSERT_TRUE(Shows({"A", "Day.zuproj"}));
        EXPECT_EQ(Says("Day.zuproj"), "Day.zuproj, folder");
        OpenFolder("Day.zuproj");
        EXPECT_TRUE(Shows({"A", "Day.zuproj", "  Scene 1"}));
        Select({"Day.zuproj"});
        EXPECT_EQ(EnabledOf({kOpen, kMakeACopy, kMoveToTrash}), (IDs{kMakeACopy, kMoveToTrash}));
        Send(kMakeACopy);
        ASSERT_TRUE(Shows([&] { return FindRow("Day.zuproj copy") != nullptr; }));
        EXPECT_EQ(Bytes("Day.zuproj copy/Scene 1"), "project");
        TypeSearch(QStringLiteral("zuproj"));
        EXPECT_EQ(ShownHits(), (Rows{"Day.zuproj", "Day.zuproj copy"}));
        TypeSearch(QStringLiteral("scene"));
        EXPECT_EQ(ShownHits(), (Rows{"Day.zuproj", "  Scene 1", "Day.zuproj copy", "  Scene 1"}));
        TypeSearch({});
        for (const char* trashed : {"Trash/Day.zuproj/Scene 1", "Trash/Day.zuproj_1/Scene 1"}) {
            ASSERT_TRUE(Shows([&] { return FindRow("Day.zuproj") != nullptr; }));
            Select({"Day.zuproj"});
            Send(kMoveToTrash);
            EXPECT_TRUE(mFolder.Exists(OnDisk(trashed) + ".zuproj"));
            MakeProject("Day.zuproj/Scene 1");
        }
        // A name may come to stand for another kind of item.
        RemoveProject("A");
        MakeFolder("A.zuproj");
        EXPECT_TRUE(Shows([&] { return FindRow("A") && Says("A") == "A.zuproj, folder"; }));
        mFolder.Remove(OnDisk("A.zuproj"));
        MakeProject("A");
        EXPECT_TRUE(Shows([&] { return FindRow("A") && Says("A") == "A"; }));
    }
}

TEST_F(CommandsTest, NamesThatCannotBe) {
    OpenProductionWith({"Reels/"});
    const DiskTree before = OnDiskNow();
    for (const UTF16String& name :
         {UTF16String(), UTF16String(u"  \t"), UTF16String(u"a/b"), UTF16String(u"."), UTF16String(u" .. "),
          UTF16String(u"a\0b", 3), UTF16String(u"Day.ZUPROJ"), UTF16String(256, u'x')}) {
        mDialogs.ExpectText("New Folder", name);
        mDialogs.ExpectMessage("Invalid Name");
        Send(kNewFolder);
        EXPECT_NE(mDialogs.LastText().find("\n/"), std::string::npos) << mDialogs.LastText();
    }
    mDialogs.ExpectText("New Folder", u"Reels");
    mDialogs.ExpectMessage("Directory Exists");
    Send(kNewFolder);
    mDialogs.ExpectText("New Folder", std::nullopt);
    Send(kNewFolder);
    EXPECT_EQ(OnDiskNow(), before);
    NewFolder(u" a b ");
    EXPECT_TRUE(mFolder.Exists(OnDisk("a b")));
    ASSERT_TRUE(Shows([&] { return SelectedNames() == Names{"a b"}; }));
    mDialogs.ExpectText("New Folder", u".cache");
    mDialogs.ExpectMessage("Folder Created");
    Send(kNewFolder);
    EXPECT_TRUE(mFolder.Exists(OnDisk("a b/.cache"))) << "it is told that it does not show";
}

TEST_F(CommandsTest, WhatIsMadeGoesIntoTheSelectedFolderOrBesideTheSelectedProjectAndIsScrolledTo) {
    MakeProject("Reels/Day 1/A");
    for (int i = 100; i < 200; ++i) MakeProject("Reels/R " + std::to_string(i));
    OpenProduction();
    const desk::UsageLogFile usage(mFolder.Path("usage.jsonl"));
    // A closed folder that was never read is opened to show what was made in it.
    Select({"Reels"});
    mDisk.ResetCounts();
    NewFolder(u"Zero");
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
    EXPECT_TRUE(Shows([&] { return SelectedNames() == Names{"Zero"}; }));
    EXPECT_TRUE(Tree()->IsRowVisible(RowOf("Reels/Zero").get()));
    QTest::keyClick(&TreeWidget(), Qt::Key_Up);
    Settle();
    EXPECT_EQ(SelectedNames(), Names{"R 199"}) << "the arrow keys go on from there";
    Select({"Reels/R 110"});
    Send(kNewProject);
    EXPECT_TRUE(Shows([&] { return SelectedNames() == Names{"Untitled"}; }));
    EXPECT_TRUE(mFolder.Exists(OnDisk("Reels/Untitled.zuproj")));
    for (const char* made : {"NewFolder", "NewProject"})
        EXPECT_NE(mFolder.Read("usage.jsonl").find(made), std::string::npos) << made;
    EXPECT_TRUE(!IsOpen("Reels/Untitled") && Tree()->IsRowVisible(RowOf("Reels/Untitled").get()));
    // Who selects something else meanwhile is left alone.
    DirectoryView().SelectWhenShown({PathOf("Reels/Later")});
    Select({"Reels/R 150"});
    MakeFolder("Reels/Later");
    EXPECT_TRUE(Shows([&] { return FindRow("Reels/Later") != nullptr; }));
    EXPECT_EQ(SelectedNames(), Names{"R 150"});
}

TEST_F(CommandsTest, CopiesStandBesideTheirOriginalsAndAreSelected) {
    Make({{"A", "a"}, {"Reels/B", "b"}, {"Reels/Day 1/C", "c"}});
    OtherUserLocks("Reels/Day 1/C");
    OpenProduction();
    OpenFolder("Reels");
    Select({"Reels", "A", "Reels/B"});
    Send(kMakeACopy);
    EXPECT_TRUE(
        Shows([&] { return SelectedNames().size() == 2 && FindRow("A copy") && FindRow("Reels copy"); }));
    EXPECT_EQ(Bytes("Reels copy/Day 1/C"), "c");
    EXPECT_FALSE(mFolder.Exists(OnDisk("Reels copy/Day 1/.C.zuproj.lock")));
    EXPECT_FALSE(mFolder.Exists(OnDisk("Reels/B copy.zuproj"))) << "it went along with its folder";
    Select({"A"});
    Send(kMakeACopy);
    EXPECT_TRUE(Shows([&] { return SelectedNames() == Names{"A copy 2"}; }));
    EXPECT_EQ(Bytes("A copy 2"), "a");
}

TEST_F(CommandsTest, ACopyOfAFolderThatFailsLeavesNothingAndIsTold) {
    OpenProductionWith({{"Reels/B", "b"}});
    const DiskTree before = OnDiskNow();
    Select({"Reels"});
    {
        ExpectLogged refused("Input/output error"), told("“Reels” was not copied");
        mDisk.Fail(Operation::CopyFile, 1, EIO);
        Send(kMakeACopy);
    }
    ExpectLogged refused("Read-only file system");
    mDialogs.ExpectMessage("Folder Not Created");
    mDisk.Fail(Operation::CreateFolder, 1, EROFS);
    Send(kMakeACopy);
    EXPECT_NE(mDialogs.LastText().find("/Reels copy”"), std::string::npos) << mDialogs.LastText();
    EXPECT_EQ(OnDiskNow(), before);
}

TEST_F(CommandsTest, OpensClosesAndSaves) {
    for (const char* name : {"A", "B", "C"}) MakeProject(name, "text");
    mFolder.Write("Outside/X.zuproj", "text");
    OpenProduction();
    Select({"A", "B"});
    Send(kOpen);
    EXPECT_TRUE(IsOpen("A") && IsOpen("B") && !IsOpen("C"));
    ASSERT_TRUE(mDocuments.OpenProject(mFolder.PathUTF16("Outside/X.zuproj")));
    for (const char* name : {"A", "B"}) Edit(name, u"changed");
    Send(kSaveAll);
    EXPECT_EQ(Bytes("A") + Bytes("B"), "changedchanged");
    // What cannot be saved is told each time, by a project that has become read-only too.
    Edit("A", u"more");
    Unlock("A");
    for (const char* told : {"Lock Lost", "Project Is Read-Only"}) {
        mDialogs.ExpectQuestion(told, u"Cancel");
        Send(kSaveAll);
    }
    ASSERT_TRUE(mDocuments.CloseProject(FindDocument("A"), false));
    OpenDocument("A");
    Select({"B"});
    Send(kCloseAllOthers);
    EXPECT_TRUE(IsOpen("B") && OpenProjectCount() == 1);
    Send(kClose);
    EXPECT_EQ(OpenProjectCount(), 0);
    // A double click opens a project, but none in the trash.
    MakeProject("Trash/Old", "text");
    ASSERT_TRUE(Shows({"A", "B", "C", "Trash"}));
    OpenFolder("Trash");
    DoubleClick("C");
    {
        const ExpectLogged told("“Old” is in the trash.");
        DoubleClick("Trash/Old");
        Select({"Trash/Old"});
        Send(kOpen);
        EXPECT_EQ(told.Count(), 2) << "one answer, whoever asks";
    }
    EXPECT_TRUE(IsOpen("C") && OpenProjectCount() == 1);
    Send(kCloseAll);
    EXPECT_EQ(OpenProjectCount(), 0);
}

TEST_F(CommandsTest, ItemsAreRevealed) {
    OpenProductionWith({"A", "Reels/"});
    Send(kRevealRoot);
    EXPECT_EQ(mDesktop.mShown, (Names{"folders", mFolder.Path(mProduction)}));
    mDesktop.mShown.clear();
    Select({"A"});
    Send(kRevealItem);
    Select({"A", "Reels"});
    Send(kRevealItem);
    const std::string a = mFolder.Path(OnDisk("A.zuproj"));
    EXPECT_EQ(mDesktop.mShown, (Names{"items", a, "items", a, mFolder.Path(OnDisk("Reels"))}));
    const ExpectLogged told("No file browser could be opened to show “/Reels”.");
    mDesktop.mRevealFailedFor = "/Reels";
    Send(kRevealItem);
}

TEST_F(CommandsTest, HitsOfASearchTakeCommandsToo) {
    OpenProductionWith({{"Reels/Take 1", "1"}, {"Other/Day 1/Take 2", "2"}});
    TypeSearch(QStringLiteral("take"));
    ASSERT_TRUE(ShowsHits({"Other", "  Day 1", "    Take 2", "Reels", "  Take 1"}));
    DoubleClickHit("Reels/Take 1.zuproj");
    EXPECT_TRUE(IsOpen("Reels/Take 1"));
    DoubleClickHit("Other/Day 1");
    EXPECT_EQ(ShownHits(), (Rows{"Other", "  Day 1", "Reels", "  Take 1"}));
    EXPECT_EQ(SelectionCount(), "4 items");
    DoubleClickHit("Other/Day 1");
    SearchView().SelectRowsByPaths({ProjectPath("Reels/Take 1"), PathOf("Reels"), PathOf("Nowhere")});
    Settle();
    EXPECT_EQ(SearchView().GetSelectedNonRedundantPaths(), UTF16StringVec{PathOf("Reels")});
    EXPECT_TRUE(IsEnabled(kMoveToTrash));
    Send(kMoveToTrash);
    EXPECT_TRUE(mFolder.Exists(OnDisk("Trash/Reels/Take 1.zuproj")) && !mFolder.Exists(OnDisk("Reels")));
    ASSERT_TRUE(ShowsHits({"Other", "  Day 1", "    Take 2", "Trash", "  Reels", "    Take 1"}));
    DoubleClickHit("Trash/Reels/Take 1.zuproj");
    EXPECT_EQ(OpenProjectCount(), 0);
    // What is made shows where it is, under folders that were never opened.
    SearchView().SelectRowsByPaths({ProjectPath("Other/Day 1/Take 2")});
    Settle();
    NewFolder(u"New");
    EXPECT_TRUE(SearchField()->text().isEmpty());
    EXPECT_TRUE(Shows({"Other", "  Day 1", "    New", "    Take 2", "Trash"}));
    EXPECT_EQ(SelectedNames(), Names{"New"});
}

}  // namespace HandlerSharedProjects
