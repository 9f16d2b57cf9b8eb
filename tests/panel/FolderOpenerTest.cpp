#include <QTest>

#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class FolderOpenerTest : public PanelFixture {
protected:
    using State = FolderOpener::State;
    using StateData = SharedProjectsDirectoryView::StateData;

    void MakeProduction() {
        Make({"A/Day 1/Morning/Take 1", "A/Day 1/Evening/", "A/Day 2/", "A/Take 2", "B/Take 3", "Empty/", "C"});
    }
    State OpenerState() { return DirectoryView().GetFolderOpener().GetState(); }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&TreeWidget(), key, modifiers);
    }
    void ClickTriangle(const std::string& name, Qt::KeyboardModifiers modifiers = {}) {
        const RowVec rows = Tree()->GetOpenedRows();
        const auto index = static_cast<int>(std::ranges::find(rows, RowOf(name)) - rows.begin());
        QTest::mouseClick(TreeWidget().viewport(), Qt::LeftButton, modifiers, {9, 25 * index + 12});
    }
    UTF16StringVec PathsOf(const std::vector<std::string>& names) {
        UTF16StringVec paths;
        for (const std::string& name : names) paths.push_back(PathUtils::ToNormalizedPath(PathOf(name)));
        return paths;
    }
    void GoTo(const std::string& name) { Tree()->SelectRow(RowOf(name).get(), true, false, true); }

    const Rows kClosed = {"A", "B", "C", "Empty"};
    const Rows kAOpen = {"A",       "  Day 1",  "    Evening", "    Morning", "      Take 1",
                         "  Day 2", "  Take 2", "B",           "C",           "Empty"};
};

TEST_F(FolderOpenerTest, DoesOneJobAtATimeAndWaitsForNoFolderThatHasGone) {
    MakeProduction();
    OpenProduction();
    FolderOpener opener(DirectoryView());
    int completions = 0;
    opener.OpenFolders(PathsOf({"A", "B"}), {}, [&] { ++completions; });
    opener.OpenFolders(PathsOf({"Empty"}), {}, [] { ADD_FAILURE() << "a running job was replaced"; });
    mMain.RunUntilIdle();
    opener.OnContentUpdated(PathsOf({"A"}).front(), true);
    opener.OnFolderRemoved(PathsOf({"B"}).front());
    EXPECT_EQ(completions, 0);
    opener.OnContentUpdated(PathsOf({""}).front(), true);
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(opener.IsIdle() && !RowOf("Empty")->IsOpen());
}

TEST_F(FolderOpenerTest, AltAndTheStarOpenAndCloseAllBelow) {
    MakeProduction();
    OpenProduction();
    EXPECT_EQ(ShownRows(), kClosed);
    ClickTriangle("A", Qt::AltModifier);
    EXPECT_NE(OpenerState(), State::Idle);
    // A second one during the first opens its own level only; what is closed by hand stays closed.
    ClickTriangle("B", Qt::AltModifier);
    Settle();
    EXPECT_EQ(OpenerState(), State::Idle);
    Rows expected = kAOpen;
    expected.insert(expected.begin() + 8, "  Take 3");
    EXPECT_EQ(ShownRows(), expected);
    ClickTriangle("A", Qt::AltModifier);
    ClickTriangle("B");
    Settle();
    EXPECT_EQ(ShownRows(), kClosed);
    ClickTriangle("A", Qt::AltModifier);
    ClickTriangle("A");
    Settle();
    EXPECT_EQ(ShownRows(), kClosed) << "closed again while its folders were looked for";
    OpenFolder("A");
    EXPECT_FALSE(RowOf("A/Day 1")->IsOpen()) << "closed on every level";

    GoTo("A");
    for (const auto& [key, modifiers] :
         {std::pair(Qt::Key_Right, Qt::AltModifier), std::pair(Qt::Key_Asterisk, Qt::ShiftModifier)}) {
        Press(key, modifiers);
        Settle();
        EXPECT_EQ(ShownRows(), kAOpen);
        Select({"A", "A/Day 1/Morning/Take 1", "C"});
        Tree()->SelectRow(RowOf("A").get(), false, false, false);
        Press(Qt::Key_Left, Qt::AltModifier);
        Settle();
        EXPECT_EQ(ShownRows(), kClosed);
        EXPECT_EQ(SelectedNames(), (std::vector<std::string>{"A", "C"}));
    }
}

TEST_F(FolderOpenerTest, EscapeAndClosingStopItAndAFailedListingDoesNot) {
    MakeProduction();
    OpenProduction();
    GoTo("A");
    Press(Qt::Key_Escape);
    Press(Qt::Key_Asterisk);
    Press(Qt::Key_Escape);
    EXPECT_EQ(OpenerState(), State::Idle);
    Settle();
    EXPECT_EQ(ShownRows().size(), kClosed.size() + 3) << "its own level, which was open already";
    Press(Qt::Key_Asterisk);
    ClickTriangle("A", Qt::AltModifier);
    EXPECT_EQ(OpenerState(), State::Idle);
    Settle();
    EXPECT_EQ(ShownRows(), kClosed);

    const ExpectLogged log("(faulty)");
    mDisk.Deny(mFolder.Path(OnDisk("A/Day 1/Morning")), EIO);
    Press(Qt::Key_Asterisk);
    Settle();
    EXPECT_EQ(OpenerState(), State::Idle);
    EXPECT_TRUE(RowOf("A/Day 2")->IsOpen() && RowOf("A/Day 1/Evening")->IsOpen());
    EXPECT_TRUE(RowOf("A/Day 1/Morning")->IsOpen()) << "it holds none that is known";
    EXPECT_FALSE(FindRow("A/Day 1/Morning/Take 1"));
}

TEST_F(FolderOpenerTest, PutsAViewBackAsItWasLeft) {
    MakeProduction();
    for (int i = 0; i < 60; ++i) MakeProject("D/Reel " + std::to_string(i), std::string(i % 7, 'x'));
    OpenProduction();
    for (const char* folder : {"A", "A/Day 1", "A/Day 1/Morning", "D"}) OpenFolder(folder);
    Select({"A/Day 1/Morning/Take 1", "D/Reel 50"});
    DirectoryView().GetHeaderRow()->SetSortColumn(Columns::kSizeColumnID);
    Settle();
    Tree()->ScrollRowToTop(RowOf("D/Reel 30").get());
    Settle();
    const StateData left = DirectoryView().GetCurrentStateData();
    EXPECT_EQ(left.mTopVisibleRowPath, PathOf("D/Reel 30.zuproj"));
    const Rows rows = ShownRows();

    StateData state = left;
    // What is gone is passed over, and what is outside too.
    for (const char* gone : {"A/Gone/Deeper", "../elsewhere", "C.zuproj", "D/Reel 1"}) {
        state.mOpenFolderPaths.push_back(PathOf(gone));
        state.mSelectedRowPaths.push_back(PathOf(gone));
    }
    state.mSelectedRowPaths.erase(state.mSelectedRowPaths.end() - 2);
    const auto leaveAndOpen = [&] {
        CloseProduction();
        desk::Production::Instance().Open(mFolder.PathUTF16(mProduction));
        DirectoryView().UpdateFromStateData(state, true);
    };
    // The sizes come later than the rows.
    mDisk.Slow(std::chrono::milliseconds(3));
    leaveAndOpen();
    EXPECT_EQ(OpenerState(), State::Waiting);
    EXPECT_EQ(DirectoryView().GetCurrentStateData().mOpenFolderPaths, state.mOpenFolderPaths)
        << "saved half-way, nothing is lost";
    Settle();
    EXPECT_EQ(ShownRows(), rows);
    EXPECT_EQ(DirectoryView().GetCurrentStateData(), left);
    mDisk.Slow({});

    // Who has selected something meanwhile keeps it.
    leaveAndOpen();
    ASSERT_TRUE(mMain.RunUntil([&] { return FindRow("B") != nullptr; }));
    Tree()->SelectRow(RowOf("B").get(), true, false, true);
    Settle();
    EXPECT_EQ(ShownRows(), rows);
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"B"});

    // A production that cannot be listed yet is put back when it can.
    {
        const ExpectLogged log("(faulty)");
        mDisk.Deny(mFolder.Path(mProduction), EIO);
        leaveAndOpen();
        Settle();
        EXPECT_EQ(OpenerState(), State::Idle);
        EXPECT_EQ(DirectoryView().GetCurrentStateData().mOpenFolderPaths, state.mOpenFolderPaths);
        mDisk.Allow(mFolder.Path(mProduction));
    }
    ASSERT_TRUE(Shows(rows));
    Settle();
    EXPECT_EQ(DirectoryView().GetCurrentStateData(), left);

    // What the volume does not show now may be there: it stays remembered, and opens when it shows.
    const ExpectLogged log("(faulty)");
    mDisk.Deny(mFolder.Path(OnDisk("A/Day 1")), EIO);
    leaveAndOpen();
    Settle();
    EXPECT_FALSE(FindRow("A/Day 1/Morning"));
    const StateData kept = DirectoryView().GetCurrentStateData();
    const auto has = [](const UTF16StringVec& paths, const UTF16String& path) {
        return std::ranges::find(paths, path) != paths.end();
    };
    EXPECT_TRUE(has(kept.mOpenFolderPaths, PathOf("A/Day 1/Morning")));
    EXPECT_TRUE(has(kept.mSelectedRowPaths, PathOf("A/Day 1/Morning/Take 1.zuproj")));
    EXPECT_FALSE(has(kept.mOpenFolderPaths, PathOf("A/Gone/Deeper")));
    mDisk.Allow(mFolder.Path(OnDisk("A/Day 1")));
    DirectoryView().RefreshDirectoryContent(RowOf("A/Day 1"));
    Settle();
    EXPECT_TRUE(FindRow("A/Day 1/Morning") && RowOf("A/Day 1/Morning")->IsOpen());
}

TEST_F(FolderOpenerTest, GoesOnWhenRowsCannotBeMade) {
    MakeProduction();
    OpenProduction();
    const ExpectLogged log("no memory");
    QObject context;
    QObject::connect(TreeWidget().model(), &QAbstractItemModel::rowsInserted, &context,
                     [] { throw std::runtime_error("no memory"); });
    GoTo("A");
    Press(Qt::Key_Asterisk);
    mMain.RunUntilIdle();
    EXPECT_EQ(OpenerState(), State::Idle);
}

}  // namespace HandlerSharedProjects
