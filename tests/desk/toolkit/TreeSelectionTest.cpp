#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeSelectionTest : public TreeFixture {
protected:
    TreeSelectionTest() {
        mTree->SetRowsSelectionChangedCallback(Shared<void(const host::RowVec&)>(
            [this](const host::RowVec& rows) { mHeard.push_back(NamesOf(rows)); }));
    }
    std::vector<Rows> mHeard;
};

TEST_F(TreeSelectionTest, TellsOnceATurnAndKeepsTheOrderOfSelecting) {
    const host::RowVec rows = Add(nullptr, {"a", "b", "c", "d"});
    mTree->SelectRow(rows[2].get(), true, false, true);
    mTree->SelectRow(rows[0].get(), false, false, true);
    EXPECT_TRUE(mHeard.empty()) << "not from within the operation";
    Settle();
    EXPECT_EQ(mHeard, (std::vector<Rows>{{"c", "a"}}));
    mTree->SelectRow(rows[3].get(), false, false, false);
    mTree->SelectRow(rows[2].get(), true, false, false);
    mTree->DeselectAllRows(false);
    Settle();
    EXPECT_EQ(mHeard.size(), 1u) << "without notify nothing is told";
    mTree->SelectRows({rows[3], rows[1], rows[3]});
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), (Rows{"d", "b"}));
    EXPECT_EQ(View().selectionModel()->selectedRows().size(), 2);
    mTree->SelectRows({rows[3], rows[1]});
    Settle();
    EXPECT_EQ(mHeard.size(), 2u);
}

TEST_F(TreeSelectionTest, ManyRowsBecomeOneRange) {
    const host::RowVec rows = Add(nullptr, Names("p", 0, 10000));
    const host::RowRef folder = Add(nullptr, {"q/"})[0];
    const host::RowVec inside = Add(folder.get(), Names("x", 0, 10));
    mTree->OpenRow(folder.get());
    host::RowVec all = rows;
    all.insert(all.end(), inside.begin(), inside.end());
    mTree->SelectRows(all);
    EXPECT_EQ(mTree->CountSelectedRows(), 10010u);
    EXPECT_EQ(View().selectionModel()->selection().size(), 2);
    mTree->SelectRows({});
    Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(mTree->CountSelectedRows(), 10011u);
}

TEST_F(TreeSelectionTest, MouseSelectsAsUsersExpect) {
    mTree->SetSupportDeselectAllOnEmptyTreeClick(true);
    const host::RowVec rows = Add(nullptr, {"a", "b", "c", "d"});
    Click(rows[1]);
    Click(rows[3], Qt::ControlModifier);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), (Rows{"b", "d"}));
    Click(rows[0]);
    Click(rows[2], Qt::ShiftModifier);
    EXPECT_EQ(mTree->CountSelectedRows(), 3u);
    const QPoint empty(100, 15 * 25);
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, empty);
    Settle();
    EXPECT_EQ(mTree->CountSelectedRows(), 0u);
    EXPECT_EQ(mHeard.back(), Rows{});

    Click(rows[1]);
    mTree->SetSupportDeselectAllOnEmptyTreeClick(false);
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, empty);
    EXPECT_EQ(mTree->CountSelectedRows(), 1u);
    mTree->SetSupportNoneSelected(false);
    Click(rows[1], Qt::ControlModifier);
    EXPECT_EQ(mTree->CountSelectedRows(), 1u);
    mTree->SetSupportMultipleSelections(false);
    Click(rows[0]);
    Click(rows[2], Qt::ShiftModifier);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), Rows{"c"});
}

TEST_F(TreeSelectionTest, ClosingAFolderDeselectsWhatItHides) {
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    const host::RowVec inside = Add(rows[0].get(), {"x", "y"});
    mTree->OpenRow(rows[0].get());
    Click(inside[0]);
    Click(rows[1], Qt::ControlModifier);
    mTree->CloseRow(rows[0].get());
    Settle();
    EXPECT_EQ(mHeard.back(), Rows{"p"});
    EXPECT_EQ(View().selectionModel()->selectedRows().size(), 1);
}

TEST_F(TreeSelectionTest, KeysWalkTheTreeAndDisclose) {
    Rows heard;
    mTree->SetRowDisclosureChangedCallback(
        Shared<void(const host::RowRef&, bool)>([&heard](const host::RowRef& row, bool open) {
            heard.push_back(DataOf(*row).mName + (open ? "+" : "-"));
        }));
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    const host::RowRef inner = Add(rows[0].get(), {"inner/", "x"})[0];
    Add(inner.get(), {"leaf"});
    Click(rows[0]);
    Press(Qt::Key_Right);
    EXPECT_TRUE(rows[0]->IsOpen());
    Press(Qt::Key_Right);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), Rows{"inner/"});
    Press(Qt::Key_Down);
    Press(Qt::Key_Left);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), Rows{"folder/"});
    Press(Qt::Key_Left);
    EXPECT_FALSE(rows[0]->IsOpen());
    Press(Qt::Key_Asterisk);
    EXPECT_EQ(Shown(), (Rows{"folder/", "  inner/", "    leaf", "  x", "p"}));
    Press(Qt::Key_Minus);
    EXPECT_EQ(heard, (Rows{"folder/+", "folder/-", "folder/+", "inner/+", "folder/-"}));
    Press(Qt::Key_P);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), Rows{"p"}) << "typing a name finds it";
    mTree->OpenRow(rows[0].get());
    ClickTriangle(inner);
    EXPECT_FALSE(inner->IsOpen());
    EXPECT_EQ(heard.back(), "inner/-");
}

TEST_F(TreeSelectionTest, DoubleClickAndReturnActAndDoNotToggle) {
    Rows heard;
    mTree->SetRowDoubleClickedCallback(Shared<void(const host::RowRef&, host::Point)>(
        [&heard](const host::RowRef& row, host::Point) { heard.push_back(DataOf(*row).mName); }));
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    Click(rows[0]);
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, RectOf(rows[0]).center());
    Press(Qt::Key_Down);
    Press(Qt::Key_Return);
    Press(Qt::Key_Enter);
    EXPECT_EQ(heard, (Rows{"folder/", "p", "p"}));
    EXPECT_FALSE(rows[0]->IsOpen());
}

TEST_F(TreeSelectionTest, ADoubleClickMayEmptyTheTree) {
    mTree->SetRowDoubleClickedCallback(Shared<void(const host::RowRef&, host::Point)>(
        [this](const host::RowRef&, host::Point) { mTree->RemoveAllRows(); }));
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    Click(rows[1]);
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, RectOf(rows[1]).center());
    Settle();
    EXPECT_EQ(mTree->CountOpenedRows(), 0u);
}

TEST_F(TreeSelectionTest, ContextMenuNamesTheRowOrNone) {
    Rows heard;
    mTree->SetRowContextMenuCallback(
        Shared<bool(const host::RowRef&, host::Point)>([&heard](const host::RowRef& row, host::Point) {
            return heard.push_back(row ? DataOf(*row).mName : "none"), true;
        }));
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    Settle();
    const auto ask = [this](QContextMenuEvent::Reason reason, QPoint point) {
        QContextMenuEvent event(reason, point, View().viewport()->mapToGlobal(point));
        QApplication::sendEvent(View().viewport(), &event);
        return event.isAccepted();
    };
    EXPECT_TRUE(ask(QContextMenuEvent::Mouse, RectOf(rows[1]).center()));
    ask(QContextMenuEvent::Mouse, {50, 300});
    ask(QContextMenuEvent::Keyboard, {0, 0});
    Click(rows[0]);
    ask(QContextMenuEvent::Keyboard, {0, 0});
    EXPECT_EQ(heard, (Rows{"b", "none", "none", "a"}));
}

}  // namespace
