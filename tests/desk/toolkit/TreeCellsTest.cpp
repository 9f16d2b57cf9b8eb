#include <QAccessible>
#include <QImage>

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
        const QRgb background = image.pixel(rect.topLeft());
        int ink = 0;
        for (int y = rect.top(); y <= rect.bottom(); ++y)
            for (int x = rect.left(); x <= rect.right(); ++x) ink += image.pixel(x, y) != background;
        return ink;
    }
};

TEST_F(TreeCellsTest, LightNodesArePaintedInTheirCellsAndNowhereElse) {
    struct NameView : host::UI_SubView {
        host::RefPtr<host::UI_StaticText> mText{new host::UI_StaticText(u"Reel")};
        NameView() { AddChild(mText); }
        void UI_SizeChanged(const host::RectT<float>& bounds) override {
            mText->UI_SetBounds({bounds.height, 0, bounds.width - bounds.height, bounds.height});
        }
    };
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    EXPECT_EQ(InkAt(rows[0], 0), 0);
    host::RefPtr<NameView> view(new NameView);
    mHeader->SetColumnWidth(kNameColumn, 300);
    rows[0]->GetCellView(0)->AddChild(view);
    EXPECT_EQ(view->UI_GetBounds().height, 25);
    EXPECT_LT(view->UI_GetBounds().width, 300 - 12) << "indented";
    EXPECT_EQ(desk::GetNodeWidget(*view->mText), nullptr);
    const int ink = InkAt(rows[0], 0);
    EXPECT_GT(ink, 20);
    EXPECT_EQ(InkAt(rows[1], 0), 0);
    view->mText->SetValue(u"Reel Reel");
    EXPECT_GT(InkAt(rows[0], 0), ink) << "a changed node is painted anew";
    mHeader->SetColumnWidth(kNameColumn, 200);
    EXPECT_LT(view->UI_GetBounds().width, 200);
    rows[0]->GetCellView(0)->RemoveAllChildren();
    EXPECT_EQ(InkAt(rows[0], 0), 0);
}

TEST_F(TreeCellsTest, OtherCellsAreDrawnByTheCallbackWithEscapedText) {
    std::vector<std::string> drawn;
    host::UTF16String text = u"4.18 MB";
    mTree->SetDrawCellOfRowCallback(
        Shared<void(host::Drawbot&, const host::RowRef&, unsigned, const host::RectT<float>&)>(
            [&](host::Drawbot& drawbot, const host::RowRef& row, unsigned column,
                const host::RectT<float>& cell) {
                drawn.push_back(DataOf(*row).mName + std::to_string(column));
                EXPECT_EQ(cell.height, 25);
                if (column == 1)
                    host::MediaBrowserMultiColumnTree::DrawCellText(drawbot, text, cell, {}, 12,
                                                                    host::UI_Alignment::Right);
            }));
    const host::RowRef row = Add(nullptr, {"a"})[0];
    const int ink = InkAt(row, 1);
    EXPECT_GT(ink, 20);
    EXPECT_EQ(InkAt(row, 2), 0);
    EXPECT_NE(std::find(drawn.begin(), drawn.end(), "a2"), drawn.end());
    text = u"a\nb\u202E<b>c";
    EXPECT_GT(InkAt(row, 1), 20);
    mHeader->MoveColumn(kSizeColumn, 0, true);
    drawn.clear();
    mWindow.grab();
    EXPECT_GT(InkAt(row, 0) + InkAt(row, 2), 0) << "columns are named by position";
}

TEST_F(TreeCellsTest, EveryCellSpeaksByItsPosition) {
    mTree->SetCellAccessibleTextFunction(
        Shared<host::UTF16String(const host::RowRef&, unsigned)>([](const host::RowRef& row, unsigned column) {
            return host::AsciiToUTF16(DataOf(*row).mName + " in " + std::to_string(column));
        }));
    Add(nullptr, {"a"});
    const QAbstractItemModel& model = *View().model();
    EXPECT_EQ(model.index(0, 2).data(Qt::AccessibleTextRole).toString(), "a in 2");
    EXPECT_FALSE(model.index(0, 2).data(Qt::DisplayRole).isValid()) << "or it would be painted twice";
    mHeader->MoveColumn(kDateColumn, 0, true);
    EXPECT_EQ(model.index(0, 2).data(Qt::AccessibleTextRole).toString(), "a in 0");
    mTree->SetAccessibleName(u"Production");
    EXPECT_EQ(View().accessibleName(), "Production");
}

TEST_F(TreeCellsTest, AssistiveTechnologyReadsTheTreeWhileItChanges) {
    QAccessible::setActive(true);
    mTree->SetCellAccessibleTextFunction(Shared<host::UTF16String(const host::RowRef&, unsigned)>(
        [](const host::RowRef& row, unsigned) { return host::AsciiToUTF16(DataOf(*row).mName + ", locked"); }));
    mTree->SetRowVisibilityChangedCallback(
        Shared<void(const host::RowRef&)>([this](const host::RowRef& row) { mTree->RedrawRow(row.get()); }));
    const host::RowRef folder = Add(nullptr, {"a/", "b"})[0];
    Settle();
    QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&View());
    ASSERT_TRUE(tree && tree->tableInterface());
    EXPECT_EQ(tree->role(), QAccessible::Tree);
    EXPECT_EQ(tree->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), "a/, locked");
    Add(folder.get(), Names("p", 0, 50));
    mTree->OpenRow(folder.get());
    mTree->SelectRows(mTree->GetOpenedRows());
    mWindow.grab();
    Settle();
    EXPECT_EQ(tree->tableInterface()->rowCount(), 52);
    EXPECT_EQ(tree->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), "p00000, locked");
    mTree->RemoveRows({folder});
    Settle();
    EXPECT_EQ(tree->tableInterface()->rowCount(), 1);
    QAccessible::setActive(false);
}

TEST_F(TreeCellsTest, AColumnFitsItsContentAndSpeaksWholeWhereItIsCut) {
    mTree->SetDrawCellOfRowCallback(
        Shared<void(host::Drawbot&, const host::RowRef&, unsigned, const host::RectT<float>&)>(
            [](host::Drawbot& drawbot, const host::RowRef&, unsigned, const host::RectT<float>& cell) {
                host::MediaBrowserMultiColumnTree::DrawCellText(
                    drawbot, u"A text that needs some room of its own", cell, {}, 12, host::UI_Alignment::Left);
            }));
    mTree->SetCellAccessibleTextFunction(Shared<host::UTF16String(const host::RowRef&, unsigned)>(
        [](const host::RowRef&, unsigned) { return u"<b>whole</b>"; }));
    Add(nullptr, {"a"});
    Settle();
    const QModelIndex cell = View().model()->index(0, 1);
    EXPECT_EQ(cell.data(Qt::ToolTipRole).toString(), "<qt>&lt;b&gt;whole&lt;/b&gt;</qt>");
    View().resizeColumnToContents(1);
    EXPECT_GT(mHeader->GetColumnWidth(kSizeColumn), 150);
    EXPECT_LT(mHeader->GetColumnWidth(kSizeColumn), 500);
    EXPECT_FALSE(cell.data(Qt::ToolTipRole).isValid());
}

TEST_F(TreeCellsTest, SelectionSpansTheRowAndEmptyTextShowsOnlyWithoutRows) {
    desk::Theme::Apply(desk::ThemeKind::Dark);
    mTree->SetEmptyText(u"No production is open");
    Settle();
    const auto pixel = [this](int x, int y) { return View().viewport()->grab().toImage().pixelColor(x, y); };
    const auto hasInk = [this] {
        const QImage image = View().viewport()->grab().toImage();
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, image.height() / 2) != image.pixel(2, 2)) return true;
        return false;
    };
    EXPECT_TRUE(hasInk());
    mTree->BeginBusy();
    EXPECT_FALSE(hasInk()) << "not while a listing is under way";
    mTree->EndBusy();
    const host::RowRef row = Add(nullptr, {"a"})[0];
    Settle();
    EXPECT_FALSE(hasInk());
    mTree->SelectRow(row.get(), true, false, false);
    Settle();
    EXPECT_EQ(pixel(2, 3), desk::Theme::Color(desk::ThemeColor::Selection));
    EXPECT_EQ(pixel(View().viewport()->width() - 2, 3), desk::Theme::Color(desk::ThemeColor::Selection));
    EXPECT_NE(pixel(2, 30), desk::Theme::Color(desk::ThemeColor::Selection));
}

}  // namespace
