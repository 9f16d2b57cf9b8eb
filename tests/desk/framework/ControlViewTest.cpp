#include <QLineEdit>
#include <QSignalSpy>
#include <QStatusTipEvent>
#include <QTest>
#include <QToolButton>

#include "host/framework/Bitmap.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

class SearchBoxTest : public FrameworkFixture, public host::Listener {
protected:
    SearchBoxTest() {
        mPanel->mWhenCreated = [this] {
            mField.Create(*mPanel, {0, 0, 200, 20}, true);
            mField.SetToolTipText(u"Find");
        };
        host::AddListener(mField.GetStationID(), this);
        OpenPanel();
        mFrame->Activate();
        mField.TakeFocus();
    }
    ~SearchBoxTest() override { host::RemoveListener(mField.GetStationID(), this); }

    void ListenToMessage(const host::Message& message) override {
        ASSERT_TRUE(host::MessageCast<host::ValueChangedMessage>(message));
        mTexts.push_back(host::UTF16to8(mField.GetText()));
    }
    QLineEdit& Line() { return *PanelWidget().findChild<QLineEdit*>(); }

    host::SearchBoxControl mField;
    Events mTexts;
};

TEST_F(SearchBoxTest, AnnouncesEachChangeOfTheTextOnce) {
    QTest::keyClicks(&Line(), QStringLiteral("re"));
    mField.SetText(u"re");
    mField.SetText(u"reel");
    EXPECT_EQ(mTexts, (Events{"r", "re", "reel"}));
    host::SearchBoxControl other;
    EXPECT_NE(other.GetStationID(), mField.GetStationID());
}

TEST_F(SearchBoxTest, EscapeEmptiesTheFieldAndIsLeftToOthersWhenItIsEmpty) {
    mField.SetText(u"reel");
    QTest::keyClick(&Line(), Qt::Key_Escape);
    EXPECT_EQ(mTexts, (Events{"reel", ""}));
    QKeyEvent again(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&Line(), &again);
    EXPECT_FALSE(again.isAccepted());
    EXPECT_EQ(mTexts.size(), 2u);
}

TEST_F(SearchBoxTest, TheClearButtonShowsWhileThereIsText) {
    const QList<QToolButton*> buttons = Line().findChildren<QToolButton*>();
    ASSERT_EQ(buttons.size(), 2);
    EXPECT_FALSE(buttons[1]->isVisible());
    mField.SetText(u"reel");
    EXPECT_TRUE(buttons[1]->isVisible());
    buttons[1]->click();
    EXPECT_EQ(mField.GetText(), u"");
    EXPECT_EQ(mTexts.back(), "");
}

TEST_F(SearchBoxTest, DoesNothingBeforeCreationAndAfterDestruction) {
    mField.SetText(u"reel");
    mField.Destroy();
    mField.Destroy();
    mTexts.clear();
    mField.SetText(u"x");
    mField.Enable(true);
    EXPECT_EQ(mField.GetText(), u"");
    EXPECT_FALSE(mField.IsEnabled());
    EXPECT_FALSE(mField.TakeFocus());
    EXPECT_TRUE(mTexts.empty());
}

class PictureButtonTest : public FrameworkFixture {
protected:
    PictureButtonTest() {
        mPanel->mWhenCreated = [this] {
            const host::Bitmap bitmap =
                host::Bitmap::GetBitmap(host::kProjectDeleteNormalDecal, host::GetDefaultDrawSupplier());
            mButton.Create(*mPanel, 30325, {5, 5, 30, 30}, bitmap);
            mButton.SetToolTipText(u"Move <to> Trash");
            mButton.SetStatusBarText(u"Delete the currently selected items");
        };
        OpenPanel();
        mEvents.clear();
    }
    QToolButton& Button() { return *PanelWidget().findChild<QToolButton*>(); }

    host::PictureButton mButton;
};

TEST_F(PictureButtonTest, SendsItsCommandToItsPanelUnlessDisabled) {
    mPanel->mAnswers.mCommands[30325] = true;
    QTest::mouseClick(&Button(), Qt::LeftButton);
    EXPECT_EQ(mEvents, (Events{"panel on duty", "panel 30325"}));
    mButton.Enable(false);
    QTest::mouseClick(&Button(), Qt::LeftButton);
    EXPECT_EQ(mEvents.size(), 2u);
}

TEST_F(PictureButtonTest, MayDestroyItsPanelByItsClick) {
    desk::MainCommander::Instance().Register(30325, {}, [this] {
        mPanel->Destroy();
        return true;
    });
    QTest::mouseClick(&Button(), Qt::LeftButton);
    EXPECT_FALSE(mButton.IsCreated());
    desk::MainCommander::Instance().Register(30325, {}, {});
    mMain.RunUntilIdle();
}

struct StatusTips : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::StatusTip) mTips.append(static_cast<QStatusTipEvent*>(event)->tip());
        return false;
    }
    QStringList mTips;
};

TEST_F(PictureButtonTest, TellsItsStatusTextToTheMainWindowAlsoFromAFloatingPanel) {
    QWidget mainWindow;
    StatusTips tips;
    mainWindow.installEventFilter(&tips);
    mFrame->Window().installEventFilter(&tips);
    const auto enter = [this] {
        QEnterEvent event({1, 1}, {1, 1}, {1, 1});
        QCoreApplication::sendEvent(&Button(), &event);
    };
    enter();
    EXPECT_EQ(tips.mTips, QStringList{QStringLiteral("Delete the currently selected items")});
    mFrame->Window().removeEventFilter(&tips);
    mFrame->Window().setParent(&mainWindow, Qt::Tool);
    enter();
    EXPECT_EQ(tips.mTips.size(), 2);
    mFrame->Window().setParent(nullptr);
}

TEST_F(PictureButtonTest, ShowsMarkupInItsToolTipAsItStandsAndIsNamedByIt) {
    EXPECT_EQ(Button().accessibleName(), QStringLiteral("Move <to> Trash"));
    EXPECT_TRUE(Button().toolTip() == Button().accessibleName()
                    ? !Qt::mightBeRichText(Button().toolTip())
                    : Button().toolTip().contains(QStringLiteral("&lt;to")));
}

}  // namespace
