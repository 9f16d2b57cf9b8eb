#include <QTest>
#include <QtWidgets>

#include "desk/toolkit/Theme.h"
#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeCellsTest : public TreeFixture {
protected:
    /// How many pixels of a column's cell differ from the row's background.
    int InkAt(const host::RowRef& row, int column) {
        Settle();
        const QImage image = View().viewport()->grab().toImage();
        const QRect rect(View().columnViewportPosition(column) + (column == 0 ? 20 : 2), RectOf(row).y() + 2,
                         View().columnWidth(column) - 22, 20);
        int ink = 0;
        for (int y = rect.top(); y <= rect.bottom(); ++y)
            for (int x = rect.left(); x <= rect.right(); ++x)
                ink += image.pixel(x, y) != image.pixel(rect.topLeft());
        return ink;
    }
    void DrawCells(int column, const host::UTF16String& text) {
        mTree->SetDrawCellOfRowCallback(Shared(
            [=](host::Drawbot& drawbot, const host::RowRef&, unsigned drawn, const host::RectT<float>& cell) {
                if (int(drawn) == column)
                    host::MediaBrowserMultiColumnTree::DrawCellText(drawbot, text, cell, {}, 12,
                                                                    host::UI_Alignment::Right);
            }));
    }
    void SayOfCells(const std::string& text) {
        mTree->SetCellAccessibleTextFunction(Shared([text](const host::RowRef& row, unsigned column) {
            return host::AsciiToUTF16(DataOf(*row).mName + text + std::to_string(column));
        }));
    }
};

TEST_F(TreeCellsTest, LightNodesArePaintedInTheirCellsAndNowhereElse) {
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    host::RefPtr<host::UI_StaticText> text(new host::UI_StaticText(u"Reel"));
    mHeader->SetColumnWidth(kNameColumn, 300);
    rows[0]->GetCellView(0)->AddChild(text);
    text->UI_SetBounds({25, 0, 200, 25});
    EXPECT_EQ(desk::GetNodeWidget(*text), nullptr);
    const int ink = InkAt(rows[0], 0);
    EXPECT_GT(ink, 20);
    EXPECT_EQ(InkAt(rows[1], 0), 0);
    text->SetValue(u"Reel Reel");
    EXPECT_GT(InkAt(rows[0], 0), ink) << "a changed node is painted anew";
    const float width = rows[0]->GetCellView(0)->UI_GetBounds().width;
    EXPECT_LT(width, 300 - 12) << "indented";
    mHeader->SetColumnWidth(kNameColumn, 200);
    EXPECT_EQ(rows[0]->GetCellView(0)->UI_GetBounds().width, width - 100);
    rows[0]->GetCellView(0)->RemoveAllChildren();
    EXPECT_EQ(InkAt(rows[0], 0), 0);
}

TEST_F(TreeCellsTest, OtherCellsAreDrawnAndSpeakByTheirPosition) {
    const host::RowRef row = Add(nullptr, {"a"})[0];
    DrawCells(1, u"4.18 MB");
    SayOfCells(" in ");
    EXPECT_GT(InkAt(row, 1), 20);
    EXPECT_EQ(InkAt(row, 2), 0);
    mHeader->MoveColumn(kDateColumn, 0, true);
    EXPECT_GT(InkAt(row, 0), 20);
    EXPECT_EQ(InkAt(row, 1), 0);
    EXPECT_EQ(View().model()->index(0, 2).data(Qt::AccessibleTextRole).toString(), "a in 0");
}

TEST_F(TreeCellsTest, AssistiveTechnologyReadsTheTreeWhileItChanges) {
    QAccessible::setActive(true);
    SayOfCells(", locked ");
    mTree->SetRowVisibilityChangedCallback(
        Shared([this](const host::RowRef& row) { mTree->RedrawRow(row.get()); }));
    const host::RowRef folder = Add(nullptr, {"a/", "b"})[0];
    Settle();
    QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&View());
    ASSERT_TRUE(tree && tree->tableInterface());
    EXPECT_EQ(tree->role(), QAccessible::Tree);
    EXPECT_EQ(tree->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), "a/, locked 0");
    Add(folder.get(), Names("p", 0, 50));
    QAccessibleInterface* cell = tree->child(3);
    ASSERT_TRUE(cell && cell->actionInterface() && tree->indexOfChild(cell) == 3) << "below the headings";
    EXPECT_TRUE(cell->state().collapsed && !cell->state().selected);
    for (const QString& action : cell->actionInterface()->actionNames())
        cell->actionInterface()->doAction(action);
    Settle();
    EXPECT_TRUE(cell->state().expanded && cell->state().selected);
    EXPECT_EQ(tree->tableInterface()->cellAt(51, 0)->actionInterface()->actionNames().size(), 1) << "a project";
    mTree->SelectRows(mTree->GetOpenedRows());
    mWindow.grab();
    Settle();
    EXPECT_EQ(tree->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), "p00000, locked 1");
    mTree->RemoveRows({folder});
    Settle();
    EXPECT_EQ(tree->tableInterface()->rowCount(), 1);
    EXPECT_EQ(tree->child(3)->text(QAccessible::Name), "b, locked 0");
    QAccessible::setActive(false);
}

TEST_F(TreeCellsTest, AColumnFitsItsContentAndSpeaksWholeWhereItIsCut) {
    DrawCells(1, u"A text that needs some room of its own");
    SayOfCells("<b>whole");
    Add(nullptr, {"a"});
    Settle();
    const QModelIndex cell = View().model()->index(0, 1);
    EXPECT_EQ(cell.data(Qt::ToolTipRole).toString(), "<qt>a&lt;b&gt;whole1</qt>");
    View().resizeColumnToContents(1);
    EXPECT_GT(mHeader->GetColumnWidth(kSizeColumn), 150);
    EXPECT_LT(mHeader->GetColumnWidth(kSizeColumn), 500);
    EXPECT_FALSE(cell.data(Qt::ToolTipRole).isValid());
    mTree->SetCellToolTipFunction(Shared([](const host::RowRef&, unsigned column) {
        return column == 1 ? host::UTF16String(u"Locked by tomas") : host::UTF16String();
    }));
    EXPECT_EQ(cell.data(Qt::ToolTipRole).toString(), "Locked by tomas");
    EXPECT_FALSE(cell.siblingAtColumn(2).data(Qt::ToolTipRole).isValid());
}

TEST_F(TreeCellsTest, SelectionSpansTheRowAndEmptyTextShowsOnlyWithoutRows) {
    mTree->SetEmptyText(u"No production is open");
    Settle();
    const auto image = [this] { return View().viewport()->grab().toImage(); };
    const auto hasInk = [&] {
        const QImage shown = image();
        for (int x = 0; x < shown.width(); ++x)
            if (shown.pixel(x, shown.height() / 2) != shown.pixel(2, 2)) return true;
        return false;
    };
    EXPECT_TRUE(hasInk());
    mTree->BeginBusy();
    EXPECT_FALSE(hasInk()) << "not while a listing is under way";
    mTree->EndBusy();
    int pressed = 0;
    mTree->SetEmptyButtons({{u"Make one", Shared([&pressed] { ++pressed; })}});
    image();
    Settle();
    const auto button = [this] { return View().findChild<QPushButton*>(); };
    ASSERT_TRUE(button() && button()->isVisible());
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) QTest::keyClick(button(), key);
    Settle();
    EXPECT_EQ(pressed, 2);
    const host::RowRef row = Add(nullptr, {"a"})[0];
    Settle();
    EXPECT_FALSE(hasInk());
    Settle();
    EXPECT_FALSE(button()->isVisible());
    mTree->SetRowsOfEmptyTree(1);
    image();
    Settle();
    EXPECT_TRUE(button()->isVisible()) << "one row is as good as none";
    mTree->SetRowsOfEmptyTree(0);
    mTree->SelectRow(row.get(), true, false, false);
    Settle();
    const QColor selection = desk::Theme::Color(desk::ThemeColor::Selection);
    EXPECT_EQ(image().pixelColor(2, 3), selection);
    EXPECT_EQ(image().pixelColor(View().viewport()->width() - 2, 3), selection);
    EXPECT_NE(image().pixelColor(2, 30), selection);
}

}  // namespace
