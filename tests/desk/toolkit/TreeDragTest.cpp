#include "desk/toolkit/ReceivedData.h"
#include "tests/desk/toolkit/TreeFixture.h"

namespace {

using std::chrono::milliseconds;

constexpr char kRowType[] = "Test/RowType";

class TreeDragTest : public TreeFixture {
protected:
    TreeDragTest() {
        host::RegisterCustomDataType(kRowType, host::kUTTypeData);
        mTree->SetSupportDragOverRow(true);
        mTree->SetSelectedRowsDraggedCallback(Shared([this](const host::UI_MouseEvent&) {
            mHeard.push_back("dragged");
            for (const host::RowRef& row : mTree->GetSelectedRows()) mHeard.back() += ' ' + DataOf(*row).mName;
            return true;
        }));
        mTree->SetDropSupportCallback(
            Shared([this](int action, host::UI_DropData* data) { return Answer(action, *data); }));
    }

    /// Welcome on folders.
    bool Answer(int action, const host::UI_DropData& data) {
        const std::string name = data.mRow ? DataOf(*data.mRow).mName : "none";
        mHeard.push_back(std::to_string(action) + ' ' + name +
                         (data.mReceived->HasType(kRowType) ? " rows" : "") +
                         (data.mReceived->HasType(host::kFilesType) ? " files" : ""));
        if (action < 2) mTree->ShowDragFeedback(data.mRow.get(), name.ends_with('/'));
        return action != host::kDropAction_Left;
    }

    template <class Event>
    bool Send(QPoint point) {
        Event event(point, Qt::CopyAction, &mMime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(View().viewport(), &event);
        return event.isAccepted();
    }
    bool Enter(QPoint point) { return Send<QDragEnterEvent>(point) && Move(point); }
    bool Move(QPoint point) { return Send<QDragMoveEvent>(point); }
    bool Drop(QPoint point) { return Send<QDropEvent>(point); }
    QPoint Middle(const host::RowRef& row) { return RectOf(row).center(); }

    QMimeData mMime;
};

TEST_F(TreeDragTest, ADragBeginsFarEnoughAndLateEnough) {
    const host::RowVec rows = Add(nullptr, {"a", "b", "c"});
    Click(rows[0]);
    Click(rows[2], Qt::ControlModifier);
    const auto press = [&](const host::RowRef& row) {
        QTest::mousePress(View().viewport(), Qt::LeftButton, {}, Middle(row));
    };
    const auto moveBy = [&](const host::RowRef& row, int distance) {
        QTest::mouseMove(View().viewport(), Middle(row) + QPoint(distance, 0));
        QMouseEvent event(QEvent::MouseMove, Middle(row) + QPoint(distance, 0), QCursor::pos(), Qt::NoButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(View().viewport(), &event);
    };
    const int far = QApplication::startDragDistance() + 5;
    press(rows[2]);
    moveBy(rows[2], far);
    mMainThread.Advance(milliseconds(160));
    moveBy(rows[2], 2);
    EXPECT_EQ(TakeHeard(), Rows{}) << "too early, too near";
    moveBy(rows[2], far);
    moveBy(rows[2], far + 9);
    EXPECT_EQ(TakeHeard(), Rows{"dragged a c"}) << "once";
    QTest::mouseRelease(View().viewport(), Qt::LeftButton, {}, Middle(rows[2]));
    press(rows[1]);
    mMainThread.Advance(milliseconds(160));
    moveBy(rows[1], far);
    EXPECT_EQ(TakeHeard(), Rows{"dragged b"}) << "the press selects";
    QTest::mouseRelease(View().viewport(), Qt::LeftButton, {}, Middle(rows[1]));
}

TEST_F(TreeDragTest, ADropCountsWhereTheDragHasRested) {
    const host::RowVec rows = Add(nullptr, {"f/", "g/", "p"});
    mMime.setData(QStringLiteral("text/uri-list"), "file:///x/a.zuproj\r\n");
    EXPECT_TRUE(Enter(Middle(rows[0])));
    EXPECT_FALSE(Move(Middle(rows[2])));
    EXPECT_TRUE(Move(Middle(rows[1])));
    EXPECT_TRUE(Move(Middle(rows[1]) + QPoint(3, 3)));
    EXPECT_EQ(TakeHeard(), (Rows{"0 f/ files", "1 p files", "1 g/ files"})) << "each row once";
    EXPECT_FALSE(Drop(Middle(rows[1])));
    EXPECT_EQ(TakeHeard(), (Rows{"2 g/ files", "notice"}));
    Enter(Middle(rows[1]));
    mMainThread.Advance(milliseconds(200));
    EXPECT_TRUE(Drop(Middle(rows[1])));
    EXPECT_EQ(mHeard, Rows{"0 g/ files"}) << "not from within the drop";
    EXPECT_EQ(TakeHeard(), (Rows{"0 g/ files", "3 g/ files"}));
    mMime.setData(QStringLiteral("application/x-zuhost-test-rowtype"), "rows");
    Enter(Middle(rows[1]));
    mMainThread.Advance(milliseconds(200));
    EXPECT_TRUE(Drop(Middle(rows[1])));
    mTree->RemoveRows({rows[1]});
    EXPECT_EQ(TakeHeard(), (Rows{"0 g/ rows", "notice"})) << "the folder has gone";
    Enter(Middle(rows[0]));
    mMainThread.Advance(milliseconds(200));
    EXPECT_FALSE(Drop(Middle(rows[2])));
    EXPECT_EQ(TakeHeard(), (Rows{"0 f/ rows", "1 p rows", "2 p rows"})) << "not welcome";
}

TEST_F(TreeDragTest, HoveringOpensFoldersAndScrollsNearTheEdges) {
    const host::RowRef folder = Add(nullptr, {"a/"})[0];
    const host::RowRef inner = Add(folder.get(), {"b/", "forbidden"})[0];
    const host::RowRef forbidden = folder->GetChildRows()[1];
    for (const host::RowRef& row : {inner, forbidden}) Add(row.get(), {"innermost"});
    Add(nullptr, Names("m", 0, 60));
    Settle();
    Enter(Middle(folder));
    mMainThread.Advance(milliseconds(900));
    EXPECT_FALSE(folder->IsOpen());
    mMainThread.Advance(milliseconds(200));
    EXPECT_TRUE(folder->IsOpen());
    Move(Middle(forbidden));
    mMainThread.Advance(milliseconds(1200));
    EXPECT_FALSE(forbidden->IsOpen());
    Move({100, View().viewport()->height() - 3});
    mMainThread.Advance(milliseconds(6000));
    EXPECT_EQ(ScrollBar().value(), ScrollBar().maximum());
    EXPECT_EQ(TakeHeard().back(), "1 m00059");
    Move({100, 3});
    mMainThread.Advance(milliseconds(6000));
    EXPECT_EQ(ScrollBar().value(), 0);
    QDragLeaveEvent leave;
    QApplication::sendEvent(View().viewport(), &leave);
    EXPECT_EQ(TakeHeard().back(), "2 a/");
    EXPECT_EQ(mMainThread.CountDelayed(), 0u);
    EXPECT_FALSE(folder->IsOpen()) << "what the drag has opened is closed again";
    const auto dragToInner = [&] {
        for (const host::RowRef& row : {folder, inner}) {
            row == folder ? Enter(Middle(row)) : Move(Middle(row));
            mMainThread.Advance(milliseconds(1200));
            EXPECT_TRUE(row->IsOpen());
        }
    };
    dragToInner();
    const QPoint point = Middle(inner);
    Add(nullptr, {"A"});
    Settle();
    mMainThread.Advance(milliseconds(300));
    TakeHeard();
    EXPECT_FALSE(Drop(point)) << "another row has come under the pointer";
    EXPECT_EQ(TakeHeard(), (Rows{"2 a/", "notice"}));
    EXPECT_FALSE(folder->IsOpen() || inner->IsOpen());
    dragToInner();
    EXPECT_TRUE(Drop(Middle(inner)));
    Settle();
    EXPECT_TRUE(folder->IsOpen() && inner->IsOpen());
}

TEST_F(TreeDragTest, AListOfFilesIsReadWhateverStandsInIt) {
    host::OS_ReceiveData::Impl received;
    desk::ReadURIList(
        "# a comment\r\n\r\nfile:///a%20b/c.zuproj\r\nfile:///a%20b//c.zuproj\nfile://localhost/d/\r\n"
        "https://somewhere/e.zuproj\r\nfile://elsewhere/f\r\nnonsense\r\nfile:///x%00y",
        received);
    EXPECT_EQ(received.mPaths, (host::UTF16StringVec{u"/a b/c.zuproj", u"/d"}));
    EXPECT_EQ(received.mForeign, 4u);
    std::string many;
    for (int i = 0; i < 100'000; ++i) many += "file:///x/" + std::to_string(i % 50'000) + ".zuproj\r\n";
    received = {};
    desk::ReadURIList(many, received);
    EXPECT_EQ(received.mPaths.size(), 50'000u);
}

}  // namespace
