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

    void Drag(QPoint from, QPoint to) {
        QWidget* header = View().header()->viewport();
        QTest::mousePress(header, Qt::LeftButton, {}, from);
        QTest::mouseMove(header, from + (to - from) / 2);
        QTest::mouseMove(header, to);
        QTest::mouseRelease(header, Qt::LeftButton, {}, to);
        Settle();
    }
};

TEST_F(TreeHeaderTest, TheUserMovesAndResizesWithinLimits) {
    Drag({50, 10}, {280, 10});
    EXPECT_TRUE(mHeard.empty()) << "not allowed yet";
    mHeader->SetAllowColumnMovingByUser(true, false);
    Drag({50, 10}, {280, 10});
    EXPECT_EQ(mHeard, Rows{"move 0 2"});
    EXPECT_EQ(mHeader->GetColumnAt(2), kNameColumn);
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

TEST_F(TreeHeaderTest, ClickingAHeaderTellsFirstThenSorts) {
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    DataOf(*rows[0]).mSize = "2";
    DataOf(*rows[1]).mSize = "1";
    Rows heard;
    mHeader->SetUserChangedSortCallback(Shared([&](host::ColumnID column, bool ascending) {
        heard.push_back((column == kSizeColumn ? "size" : "name") + std::string(ascending ? "+ " : "- ") +
                        Shown()[0]);
    }));
    for (const int section : {1, 1, 0})
        QTest::mouseClick(View().header()->viewport(), Qt::LeftButton, {},
                          {View().header()->sectionViewportPosition(section) + 30, 10});
    mHeader->SetSortDirection(false);
    Settle();
    EXPECT_EQ(heard, (Rows{"size+ a", "size- b", "name+ a"})) << "what the program sets is not told";
}

}  // namespace
