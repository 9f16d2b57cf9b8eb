#include "desk/toolkit/KeyTable.h"
#include "host/toolkit/UI_KeyboardEvent.h"
#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeSelectionTest : public TreeFixture {
protected:
    TreeSelectionTest() {
        mTree->SetRowsSelectionChangedCallback(
            Shared([this](const host::RowVec& rows) { mSelections.push_back(NamesOf(rows)); }));
    }
    Rows Selected() { return NamesOf(mTree->GetSelectedRows()); }
    void ClickBelowRows() {
        QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, {100, 15 * 25});
        Settle();
    }

    std::vector<Rows> mSelections;
};

TEST_F(TreeSelectionTest, TellsOnceATurnAndKeepsTheOrderOfSelecting) {
    const host::RowVec rows = Add(nullptr, {"a/", "b", "c", "d"});
    const host::RowRef inside = Add(rows[0].get(), {"inside"})[0];
    mTree->OpenRow(rows[0].get());
    mTree->SelectRow(rows[2].get(), true, false, true);
    mTree->SelectRow(inside.get(), false, false, true);
    EXPECT_TRUE(mSelections.empty()) << "not from within the operation";
    Settle();
    mTree->SelectRow(rows[3].get(), false, false, false);
    Settle();
    EXPECT_EQ(mSelections, (std::vector<Rows>{{"c", "inside"}})) << "without notify nothing is told";
    mTree->CloseRow(rows[0].get());
    Settle();
    EXPECT_EQ(mSelections.back(), (Rows{"c", "d"})) << "a folder that closes deselects what it hides";
    mTree->SelectRows({rows[3], rows[1], rows[3]});
    EXPECT_EQ(Selected(), (Rows{"d", "b"}));
    Settle();
    mTree->SelectRows({rows[0], rows[1]});
    Press(Qt::Key_Down);
    EXPECT_EQ(Selected(), Rows{"c"}) << "keys go on from what was selected last";
    mTree->SelectRows({rows[3], rows[1]});
    Settle();
    mSelections.resize(3);
    mTree->SelectRows({rows[3], rows[1]});
    mTree->SelectRow(rows[1].get(), false, false, true);
    Settle();
    EXPECT_EQ(mSelections.size(), 3u) << "what changes nothing is not told";
    mTree->RemoveAllRows();
    Settle();
    EXPECT_EQ(mSelections.back(), Rows{});
}

TEST_F(TreeSelectionTest, MouseAndKeysSelectAsUsersExpect) {
    mTree->SetSupportDeselectAllOnEmptyTreeClick(true);
    const host::RowVec rows = Add(nullptr, {"a", "b", "c", "d"});
    Click(rows[1]);
    Click(rows[3], Qt::ControlModifier);
    EXPECT_EQ(Selected(), (Rows{"b", "d"}));
    Click(rows[0]);
    Click(rows[2], Qt::ShiftModifier);
    EXPECT_EQ(mTree->CountSelectedRows(), 3u);
    ClickBelowRows();
    EXPECT_EQ(mSelections.back(), Rows{});
    Add(nullptr, Names("p", 0, 10000));
    Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(mTree->CountSelectedRows(), 10004u);
    EXPECT_EQ(View().selectionModel()->selection().size(), 1) << "many rows are one range";
}

TEST_F(TreeSelectionTest, KeysWalkTheTreeAndDisclose) {
    Rows heard;
    const auto listen = [&heard](const host::RowRef& row, bool open) {
        heard.push_back(DataOf(*row).mName + (open ? "+" : "-"));
    };
    mTree->SetRowDisclosureChangedCallback(Shared(listen));
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    const host::RowRef inner = Add(rows[0].get(), {"inner/", "x"})[0];
    Add(inner.get(), {"leaf"});
    Click(rows[0]);
    Press(Qt::Key_Right);
    Press(Qt::Key_Right);
    EXPECT_EQ(Selected(), Rows{"inner/"});
    Press(Qt::Key_Down);
    Press(Qt::Key_Left);
    EXPECT_EQ(Selected(), Rows{"folder/"});
    Press(Qt::Key_Left);
    Click(rows[0], {}, 9);  // its triangle
    Press(Qt::Key_Minus);
    EXPECT_EQ(heard, (Rows{"folder/+", "folder/-", "folder/+", "folder/-"}));
    mTree->SetRowDisclosureChangedCallback({});
    Press(Qt::Key_Asterisk);
    EXPECT_EQ(Shown(), (Rows{"folder/", "  inner/", "    leaf", "  x", "p"}));
    Press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(Shown(), (Rows{"folder/", "p"}));
    EXPECT_FALSE(inner->IsOpen());
    Press(Qt::Key_P);
    EXPECT_EQ(Selected(), Rows{"p"}) << "typing a name finds it";
}

class KeyHearingView : public host::UI_SubView {
public:
    bool UI_DoKeyboardEvent(host::UI_Node*, const host::UI_KeyboardEvent& event) override {
        mCodes.push_back(event.GetCode());
        return true;
    }
    std::vector<int> mCodes;
};

TEST_F(TreeSelectionTest, KeysOfTheTableGoToTheOwnerAndControlOpensInEachTable) {
    const host::RefPtr<KeyHearingView> view = new KeyHearingView;
    mContainer->RemoveChild(mTree.get());
    mContainer->AddChild(view);
    view->UI_SetBounds({0, 0, 600, 528});
    view->AddChild(mTree);
    int opened = 0;
    mTree->SetRowDoubleClickedCallback(Shared([&](const host::RowRef&, host::Point) { ++opened; }));
    Click(Add(nullptr, {"p"})[0]);
    for (const char* table : {desk::KeyTable::kReturnOpens, desk::KeyTable::kReturnRenames}) {
        desk::KeyTable::Instance().Choose(table);
        Press(Qt::Key_Return);
        Press(Qt::Key_Enter, Qt::KeypadModifier);
        Press(Qt::Key_Escape);
        Press(Qt::Key_Return, Qt::ControlModifier);
        Press(Qt::Key_Down, Qt::ControlModifier);
    }
    EXPECT_EQ(view->mCodes, (std::vector{27, host::kKey_Return, host::kKey_Enter, 27}));
    EXPECT_EQ(opened, 2 + 2 + 2);
}

TEST_F(TreeSelectionTest, DoubleClicksReturnAndContextMenusMeanASelectedRowAndMayEmptyTheTree) {
    mTree->SetSupportDeselectAllOnEmptyTreeClick(true);
    Rows heard;
    mTree->SetRowDoubleClickedCallback(Shared([&](const host::RowRef& row, host::Point) {
        heard.push_back(DataOf(*row).mName + (row->IsOpen() ? " open" : ""));
    }));
    mTree->SetRowContextMenuCallback(Shared([&](const host::RowRef& row, host::Point) {
        heard.push_back("menu of " + (row ? DataOf(*row).mName : "none"));
        if (row) mTree->RemoveAllRows();
        return true;
    }));
    const auto ask = [this](QContextMenuEvent::Reason reason, QPoint point) {
        QContextMenuEvent event(reason, point, View().viewport()->mapToGlobal(point));
        QApplication::sendEvent(View().viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
    };
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    Click(rows[0]);
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, RectOf(rows[0]).center());
    Press(Qt::Key_Return);
    Press(Qt::Key_Down);
    Press(Qt::Key_Enter);
    Click(rows[0], Qt::ControlModifier);
    Click(rows[0], Qt::ControlModifier);
    Press(Qt::Key_Return);
    ClickBelowRows();
    Press(Qt::Key_Return);
    ask(QContextMenuEvent::Keyboard, {0, 0});
    Press(Qt::Key_F10, Qt::ShiftModifier);
    ask(QContextMenuEvent::Mouse, {50, 300});
    ask(QContextMenuEvent::Mouse, RectOf(rows[1]).center());
    EXPECT_EQ(heard, (Rows{"folder/", "folder/", "p", "p", "menu of none", "menu of none", "menu of none",
                           "menu of p"}));
    EXPECT_EQ(mTree->CountOpenedRows(), 0u);
}

}  // namespace
