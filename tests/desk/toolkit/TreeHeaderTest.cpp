#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeHeaderTest : public TreeFixture {
protected:
    TreeHeaderTest() {
        mTree->SetColumnMovedCallback(Shared([this](unsigned from, unsigned to) {
            mHeard.push_back("move " + std::to_string(from) + " " + std::to_string(to));
        }));
        mTree->SetColumnResizedCallback(Shared([this](unsigned column, float width) {
            mHeard.push_back("resize " + std::to_string(column) + " " + std::to_string(int(width)));
        }));
        for (const host::ColumnID column : {kNameColumn, kSizeColumn, kDateColumn}) {
            mHeader->SetColumnAllowedMinimumWidth(column, 50);
            mHeader->SetColumnWidth(column, 100);
        }
    }

    std::vector<host::ColumnID> Order() {
        std::vector<host::ColumnID> order;
        for (unsigned i = 0; i < mHeader->GetCountOfColumns(); ++i) order.push_back(mHeader->GetColumnAt(i));
        return order;
    }

    void Drag(QPoint from, QPoint to) {
        QWidget* header = View().header()->viewport();
        QTest::mousePress(header, Qt::LeftButton, {}, from);
        QTest::mouseMove(header, from + (to - from) / 2);
        QTest::mouseMove(header, to);
        QTest::mouseRelease(header, Qt::LeftButton, {}, to);
        Settle();
    }

    Rows mHeard;
};

TEST_F(TreeHeaderTest, ColumnsAreSetWithoutTellingOfItAndTakeTheirCellsAlong) {
    const host::RowRef row = Add(nullptr, {"a"})[0];
    host::UI_Container* cell = row->GetCellView(0);
    mHeader->AppendColumn(u"Name again", kNameColumn);
    mHeader->SetColumnWidth(kSizeColumn, 123.4f);
    EXPECT_EQ(mHeader->GetColumnWidth(kSizeColumn), 123.4f) << "the width that was set, not a rounded one";
    EXPECT_EQ(View().header()->sectionSize(1), 123);
    for (const float width : {3e30f, 3.0f, std::nanf("")}) mHeader->SetColumnWidth(kSizeColumn, width);
    EXPECT_EQ(mHeader->GetColumnWidth(kSizeColumn), 50);
    mHeader->SetColumnWidth(kDateColumn, 3e30f);
    EXPECT_EQ(float(View().header()->sectionSize(2)), mHeader->GetColumnWidth(kDateColumn)) << "has an end";
    mHeader->SetColumnWidth(0x3F3F3F3F, 3);
    mHeader->MoveColumn(kDateColumn, 0, true);
    EXPECT_EQ(Order(), (std::vector{kDateColumn, kNameColumn, kSizeColumn}));
    EXPECT_EQ(View().header()->visualIndex(2), 0);
    EXPECT_EQ(row->GetCellView(1), cell);
    EXPECT_EQ(row->GetCellView(3), nullptr);
    EXPECT_EQ(mHeard, Rows{});
}

TEST_F(TreeHeaderTest, TheUserMovesAndResizesWithinLimits) {
    Drag({50, 10}, {280, 10});
    EXPECT_TRUE(mHeard.empty()) << "not allowed yet";
    mHeader->SetAllowColumnMovingByUser(true, false);
    Drag({50, 10}, {280, 10});
    EXPECT_EQ(mHeard, Rows{"move 0 2"});
    EXPECT_EQ(Order(), (std::vector{kSizeColumn, kDateColumn, kNameColumn}));
    Drag({100, 10}, {150, 10});
    EXPECT_EQ(mHeard.back(), "resize 0 150");
    Drag({150, 10}, {5, 10});
    EXPECT_EQ(mHeard.back(), "resize 0 50");
    EXPECT_EQ(View().header()->sectionSize(1), 50);
}

TEST_F(TreeHeaderTest, TheVerticalScrollBarBringsNoHorizontalOne) {
    const auto hasHorizontalBar = [&] { return View().horizontalScrollBar()->isVisibleTo(&View()); };
    const int width = View().viewport()->width();
    mHeader->SetColumnWidth(kDateColumn, float(width - 200));
    const host::RowVec rows = Add(nullptr, Names("a", 0, 100));
    Settle();
    ASSERT_LT(View().viewport()->width(), width);
    EXPECT_FALSE(hasHorizontalBar());
    mHeader->SetColumnWidth(kDateColumn, float(width - 199));
    Settle();
    EXPECT_TRUE(hasHorizontalBar()) << "wider than the view by more than the scroll bar";
    mHeader->SetColumnWidth(kDateColumn, float(width - 200));
    mTree->RemoveRows(rows);
    Settle();
    EXPECT_EQ(View().header()->length(), width);
    EXPECT_EQ(mHeard, Rows{});
}

}  // namespace
