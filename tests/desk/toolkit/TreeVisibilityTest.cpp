#include <QThread>

#include "desk/toolkit/Theme.h"
#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeVisibilityTest : public TreeFixture {
protected:
    int Height() { return View().viewport()->height(); }
};

TEST_F(TreeVisibilityTest, IsKnownBeforePaintingAndCallbacksMayFillCellsAndSortAndRemoveRows) {
    mTree->SetRowVisibilityChangedCallback(Shared([this](const host::RowRef& row) {
        if (!mTree->IsRowVisible(row.get())) return;
        row->GetCellView(0)->AddChild(host::RefPtr<host::UI_Node>(new host::UI_StaticText(u"x")));
        mTree->SortTree();
        mTree->RedrawRow(row.get());
        if (DataOf(*row).mName.ends_with('3')) mTree->RemoveRows({row});
    }));
    const host::RowVec rows = Add(nullptr, Names("p", 0, 100));
    mWindow.grab();
    EXPECT_EQ(rows[0]->GetCellView(0)->GetChildren().size(), 1u);
    ScrollBar().setValue(2000);
    mWindow.grab();
    EXPECT_EQ(rows[0]->GetCellView(0)->GetChildren().size(), 0u) << "the cells of rows that left are empty";
    EXPECT_EQ(rows[85]->GetCellView(0)->GetChildren().size(), 1u);
    Settle();
    for (int i = mTree->GetFirstVisibleOpenedRowIndex(); i <= mTree->GetLastVisibleOpenedRowIndex(); ++i)
        EXPECT_FALSE(DataOf(*mTree->GetOpenedRow(i)).mName.ends_with('3'));
    EXPECT_EQ(ShownByView(), NamesOf(mTree->GetOpenedRows()));
}

TEST_F(TreeVisibilityTest, ScrollsRowsIntoViewAndOpensWhatIsAbove) {
    mWindow.hide();
    const host::RowVec rows = Add(nullptr, Names("p", 0, 200));
    const host::RowRef folder = Add(nullptr, {"q/"})[0];
    const host::RowRef inner = Add(folder.get(), {"inner/"})[0];
    const host::RowRef leaf = Add(inner.get(), {"leaf"})[0];
    Add(nullptr, Names("r", 0, 200));
    mTree->SelectRow(rows[100].get(), true, true, false);
    Settle();
    mWindow.show();
    Settle();
    EXPECT_EQ(ScrollBar().value(), 101 * 25 - Height()) << "as little as needed, once it shows";
    mTree->ScrollRowIntoView(rows[90].get(), false, 0, false);
    EXPECT_EQ(ScrollBar().value(), 101 * 25 - Height()) << "what shows wholly stays";
    mTree->ScrollRowIntoView(rows[50].get(), false, 10, false);
    mTree->ScrollRowIntoView(leaf.get(), false, 0, false);
    EXPECT_EQ(ScrollBar().value(), 50 * 25 - 10) << "hidden, and asked not to open";
    mTree->ScrollRowIntoView(leaf.get(), false, 0, true);
    EXPECT_EQ(ScrollBar().value(), 203 * 25 - Height());

    mTree->ScrollRowToTop(rows[20].get());
    EXPECT_EQ(ScrollBar().value(), 20 * 25);
    EXPECT_EQ(mTree->GetTopRow(), rows[20]);
    mTree->ScrollRowToTop(mTree->GetOpenedRow(402).get());
    EXPECT_EQ(ScrollBar().value(), 403 * 25 - Height()) << "there are no more rows";
    mWindow.hide();
    EXPECT_EQ(mTree->GetTopRow(), mTree->GetOpenedRow(403 - Height() / 25)) << "shown or not";
    mTree->ScrollRowToTop(rows[30].get());
    mWindow.show();
    Settle();
    EXPECT_EQ(mTree->GetTopRow(), rows[30]);
}

TEST_F(TreeVisibilityTest, RowsThatKeepComingArePaintedOnceAFrame) {
    const auto isPainting = [this] { return View().viewport()->updatesEnabled(); };
    mTree->BeginBusy();
    Add(nullptr, {"a"});
    mWindow.repaint();
    EXPECT_FALSE(isPainting());
    ASSERT_TRUE(QTest::qWaitFor(isPainting));
    mWindow.repaint();
    EXPECT_TRUE(isPainting()) << "what comes after a pause would be painted for ever";
    Add(nullptr, {"b"});
    mWindow.repaint();
    mTree->EndBusy();
    EXPECT_TRUE(isPainting()) << "all have come";
}

TEST_F(TreeVisibilityTest, PaintingThatPausesForALongLayoutGoesOnWithInput) {
    desk::Theme::Apply(desk::ThemeKind::Dark);
    const auto isPainting = [this] { return View().viewport()->updatesEnabled(); };
    const auto seen = [this] {
        return mWindow.screen()->grabWindow(mWindow.winId(), 0, 0, 100, mWindow.height()).toImage();
    };
    int layouts = 0;
    QObject::connect(&ScrollBar(), &QScrollBar::rangeChanged, [&layouts] {
        ++layouts;
        QThread::msleep(50);
    });
    Add(nullptr, Names("o", 0, 300));
    ASSERT_TRUE(QTest::qWaitFor([&] { return ScrollBar().isVisible() && isPainting(); }));
    const QImage rows = seen();
    Add(nullptr, Names("p", 0, 300));
    mWindow.repaint();
    QCoreApplication::processEvents();
    EXPECT_FALSE(isPainting());
    mWindow.repaint();
    EXPECT_EQ(seen(), rows) << "painted over with what is below it";
    layouts = 0;
    Add(nullptr, Names("q", 0, 300));
    QCoreApplication::processEvents();
    EXPECT_TRUE(layouts == 0 || isPainting()) << "laid out though nobody sees it";
    QTest::keyClick(&View(), Qt::Key_Down);
    EXPECT_TRUE(isPainting());
    layouts = 0;
    Add(nullptr, Names("r", 0, 300));
    EXPECT_TRUE(QTest::qWaitFor([&layouts] { return layouts > 0; })) << "without input";
}

TEST_F(TreeVisibilityTest, ZoomAndChangesAboveDoNotMoveWhatIsSeen) {
    const host::RowRef folder = Add(nullptr, {"a/"})[0];
    Add(folder.get(), Names("x", 0, 30));
    Add(nullptr, Names("p", 0, 300, 2));
    Settle();
    ScrollBar().setValue(100 * 25 + 5);
    Settle();
    const host::RowRef top = mTree->GetOpenedRow(100);
    const auto expectTop = [&](const char* change, int height = 25, int hidden = 5) {
        Settle();
        EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), IndexOf(top)) << change;
        EXPECT_EQ(ScrollBar().value(), IndexOf(top) * height + hidden) << change;
    };
    mTree->OpenRow(folder.get());
    expectTop("opened");
    mTree->RemoveRows({folder->GetChildRows()[3], folder->GetChildRows()[7]});
    expectTop("removed");
    Add(nullptr, Names("p", 1, 300, 2));
    expectTop("merged");
    mTree->CloseRow(folder.get());
    expectTop("closed");
    mTree->SetRowHeight(36.25f);
    expectTop("zoomed", 36, 7);
}

TEST_F(TreeVisibilityTest, BusySpinnerShowsOnlyForLongWork) {
    auto* spinner = View().findChild<QWidget*>(QStringLiteral("BusySpinner"));
    ASSERT_TRUE(spinner);
    using std::chrono::milliseconds;
    mTree->BeginBusy();
    mMainThread.Advance(milliseconds(100));
    mTree->EndBusy();
    mTree->BeginBusy();
    mTree->BeginBusy();
    mMainThread.Advance(milliseconds(149));
    EXPECT_FALSE(spinner->isVisible()) << "a new busy time counts anew";
    mMainThread.Advance(milliseconds(1));
    mTree->EndBusy();
    EXPECT_TRUE(spinner->isVisible());
    mTree->EndBusy();
    EXPECT_FALSE(spinner->isVisible());
    EXPECT_EQ(mMainThread.CountDelayed(), 0u) << "no timer runs on";
}

}  // namespace
