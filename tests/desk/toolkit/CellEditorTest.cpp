#include "host/toolkit/UI_NodeManager.h"
#include "host/toolkit/UI_TextEdit.h"
#include "tests/desk/toolkit/TreeFixture.h"
#include "tests/support/LogExpectation.h"

namespace {

class CellEditorTest : public TreeFixture {
protected:
    CellEditorTest() {
        mWindow.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&mWindow));
    }

    QLineEdit& Edit(const host::RowRef& row, const char16_t* name = u"Reel 1") {
        host::RefPtr<host::UI_TextEdit> edit = new host::UI_TextEdit;
        edit->SetValue(name);
        edit->SelectPart(0, 4);
        edit->NotifyWhenEditEnds(Shared([this](host::UI_TextEdit& ended, int sessionEnd) {
            const bool isCommitted = sessionEnd == host::kEditEnd_Committed;
            mHeard.push_back((isCommitted ? "committed: " : "cancelled: ") + host::UTF16to8(ended.GetValue()));
        }));
        EXPECT_TRUE(mTree->GetCellEditor().Begin(row.get(), 0, edit, {20, 0, 80, 25}));
        Settle();
        return *View().viewport()->findChild<QLineEdit*>();
    }
    static void Type(QWidget& field, const char* text) { QTest::keyClicks(&field, QString::fromUtf8(text)); }
    static void Press(QWidget& field, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&field, key, modifiers);
    }
    bool IsOpen() const { return mTree->GetCellEditor().GetRow().get() != nullptr; }
};

TEST_F(CellEditorTest, CommitsAndCancelsAsTheUserEnds) {
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    QLineEdit other(&mWindow);
    other.setGeometry(0, 520, 100, 20);
    other.show();
    QLineEdit* field = &Edit(rows[0]);
    EXPECT_EQ(QApplication::focusWidget(), field);
    EXPECT_EQ(field->accessibleName(), QStringLiteral("New name of a"));
    Type(*field, "Rolle");
    Press(*field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field->text(), QStringLiteral("Reel 1"));
    Type(*field, "Rolle");
    Press(*field, Qt::Key_Down);
    Press(*field, Qt::Key_Return);
    EXPECT_TRUE(mHeard.empty()) << "nobody is told from within the key";
    EXPECT_EQ(TakeHeard(), Rows{"committed: Rolle 1"});
    EXPECT_EQ(QApplication::focusWidget(), &View());
    field = &Edit(rows[0]);
    Type(*field, "x");
    Press(*field, Qt::Key_Escape);
    EXPECT_EQ(TakeHeard(), Rows{"cancelled: x 1"});
    field = &Edit(rows[0]);
    for (const auto modifier : {Qt::ControlModifier, Qt::AltModifier}) {
        QKeyEvent key(QEvent::ShortcutOverride, Qt::Key_F, modifier, QStringLiteral("f"));
        key.ignore();
        QApplication::sendEvent(field, &key);
        EXPECT_EQ(key.isAccepted(), modifier == Qt::ControlModifier) << "Alt+F opens a menu";
    }
    Press(*field, Qt::Key_Escape);
    TakeHeard();
    for (const Qt::Key key : {Qt::Key_F6, Qt::Key_Tab}) {
        Press(Edit(rows[1]), key, key == Qt::Key_Tab ? Qt::ControlModifier : Qt::NoModifier);
        EXPECT_EQ(TakeHeard(), Rows{"committed: Reel 1"});
        EXPECT_EQ(QApplication::focusWidget(), &other);
    }
    field = &Edit(rows[0]);
    QContextMenuEvent menu(QContextMenuEvent::Mouse, {3, 3}, field->mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(field, &menu);
    ASSERT_TRUE(QApplication::activePopupWidget());
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    EXPECT_TRUE(IsOpen());
    other.setFocus();
    EXPECT_EQ(TakeHeard(), Rows{"committed: Reel 1"});
    EXPECT_EQ(mWindow.focusWidget(), &other);
}

TEST_F(CellEditorTest, StaysWithItsItemWhateverMoves) {
    const host::RowRef folder = Add(nullptr, {"g/"})[0];
    Add(folder.get(), {"inner"});
    const host::RowRef row = Add(nullptr, Names("m", 0, 60))[5];
    QLineEdit& field = Edit(row);
    const auto expectAtCell = [&] {
        Settle();
        const host::RectT<float> cell = mTree->GetCellRect(row.get(), 0);
        const QPoint corner = field.mapTo(&View(), QPoint(0, 0));
        EXPECT_EQ(corner, QPoint(int(cell.x) + 20 - 3, int(cell.y)));
        EXPECT_EQ(field.height(), 25);
    };
    expectAtCell();
    Add(nullptr, Names("a", 0, 7));
    expectAtCell();
    mTree->OpenRow(folder.get());
    expectAtCell();
    mHeader->SetSortDirection(false);
    expectAtCell();
    mHeader->MoveColumn(kNameColumn, 2, true);
    mHeader->SetColumnWidth(kSizeColumn, 60);
    Settle();
    EXPECT_EQ(float(field.x() + 3 - 20), mTree->GetCellRect(row.get(), 2).x - float(View().viewport()->x()));
    mHeader->MoveColumn(kNameColumn, 0, true);
    mHeader->SetColumnWidth(kNameColumn, 400);
    Settle();
    EXPECT_EQ(field.geometry().right() + 1, 400);
    ScrollBar().setValue(0);
    EXPECT_FALSE(View().viewport()->rect().intersects(field.geometry()));
    Type(field, "new");
    EXPECT_TRUE(View().viewport()->rect().contains(field.geometry())) << "typing shows the row";
    expectAtCell();
    EXPECT_EQ(mTree->GetCellEditor().GetRow(), row);
}

TEST_F(CellEditorTest, EndsByItselfWhenItsRowGoesAndLetsNoKeyThrough) {
    const host::RowRef folder = Add(nullptr, {"f/"})[0];
    const auto end = [&](const std::function<void()>& takeAway) {
        const host::RowRef row = Add(folder.get(), {"p"})[0];
        mTree->OpenRow(folder.get());
        Settle();
        Edit(row);
        const ExpectLogged told("“p” went away while its name was edited. The name was not changed.");
        takeAway();
        EXPECT_EQ(TakeHeard(), (Rows{"notice", "cancelled: Reel 1"}));
        EXPECT_FALSE(IsOpen());
        mTree->RemoveRows(folder->GetChildRows());
    };
    end([&] { mTree->RemoveRows(folder->GetChildRows()); });
    end([&] { mTree->CloseRow(folder.get()); });
    QShortcut del(QKeySequence(Qt::Key_Delete), &mWindow);
    int deleted = 0;
    QObject::connect(&del, &QShortcut::activated, &del, [&deleted] { ++deleted; });
    mMainThread.Advance(std::chrono::milliseconds(900));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
    EXPECT_EQ(deleted, 0);
    mMainThread.Advance(std::chrono::milliseconds(200));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
    EXPECT_EQ(deleted, 1);
    EXPECT_FALSE(mTree->GetCellEditor().Begin(folder.get(), 7, new host::UI_TextEdit, {})) << "no such column";
}

TEST_F(CellEditorTest, SingleClicksAreToldBeforeTheyChangeTheSelection) {
    const host::RowVec rows = Add(nullptr, {"folder/", "p"});
    const auto hear = [this](const char* what) {
        return Shared([this, what](const host::RowRef& row, host::Point) {
            const host::RowVec selected = mTree->GetSelectedRows();
            mHeard.push_back(what + (row ? DataOf(*row).mName : "none") + " of " +
                             (selected.empty() ? "none" : DataOf(*selected[0]).mName));
        });
    };
    mTree->SetRowSingleClickDownCallback(hear("down "));
    mTree->SetRowSingleClickUpCallback(hear("up "));
    QLineEdit other(&mWindow);
    other.setGeometry(0, 520, 100, 20);
    other.show();
    other.setFocus();
    Click(rows[0]);
    EXPECT_EQ(TakeHeard(), Rows{}) << "this click gives the tree the keyboard";
    Click(rows[1]);
    EXPECT_EQ(TakeHeard(), (Rows{"down p of folder/", "up p of p"}));
    Click(rows[1], Qt::ControlModifier);
    Click(rows[0], {}, 9);
    EXPECT_EQ(TakeHeard(), Rows{}) << "with a modifier, on a triangle";
    Click(rows[0]);
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, RectOf(rows[0]).center());
    QTest::mouseRelease(View().viewport(), Qt::LeftButton, {}, RectOf(rows[0]).center());
    EXPECT_EQ(TakeHeard(), (Rows{"down folder/ of none", "up folder/ of folder/"})) << "once";
    mTree->EnableKeyboardEvents(false);
    QTest::keyClick(&View(), Qt::Key_Down);
    EXPECT_EQ(NamesOf(mTree->GetSelectedRows()), Rows{"folder/"});
}

class TimedNode : public host::UI_SubView {
public:
    bool UI_DoTimerNotify(host::UI_TimerID id) override {
        ++mCount;
        if (mCount == 2) UI_RemoveTimer(id, false);
        return true;
    }
    int mCount = 0;
};

TEST_F(CellEditorTest, TimersOfANodeRunUntilTheyAreRemovedAndEndWithIt) {
    using std::chrono::milliseconds;
    const host::UI_TimerID id = host::UI_NodeManager::Get()->GetUniqueTimerID();
    EXPECT_NE(id, host::UI_NodeManager::Get()->GetUniqueTimerID());
    host::RefPtr<TimedNode> node = new TimedNode;
    node->UI_InstallTimer(0.5, id);
    mMainThread.Advance(milliseconds(400));
    node->UI_InstallTimer(0.5, id);
    mMainThread.Advance(milliseconds(400));
    EXPECT_EQ(node->mCount, 0) << "installing it again begins anew";
    mMainThread.Advance(milliseconds(5000));
    EXPECT_EQ(node->mCount, 2);
    node->UI_RemoveTimer(id, true);
    node->UI_InstallTimer(0.5, id);
    node.reset();
    mMainThread.Advance(milliseconds(1000));
    EXPECT_EQ(mMainThread.CountDelayed(), 0u);
}

}  // namespace
