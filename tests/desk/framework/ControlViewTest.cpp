#include <QTest>
#include <QtWidgets>

#include "host/toolkit/Bitmap.h"
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

TEST_F(SearchBoxTest, AnnouncesEachChangeOfTheTextOnceUntilItIsDestroyed) {
    QTest::keyClicks(&Line(), QStringLiteral("re"));
    mField.SetText(u"re");
    mField.SetText(u"reel");
    EXPECT_EQ(mTexts, (Events{"r", "re", "reel"}));
    QTest::keyClick(&Line(), Qt::Key_Escape);
    EXPECT_EQ(mTexts.back(), "");
    QKeyEvent again(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&Line(), &again);
    EXPECT_FALSE(again.isAccepted()) << "left to others when the field is empty";
    QToolButton& clear = *Line().findChildren<QToolButton*>().at(1);
    EXPECT_FALSE(clear.isVisible());
    mField.SetText(u"x");
    EXPECT_TRUE(clear.isVisible());
    clear.click();
    mField.Destroy();
    mField.SetText(u"none");
    EXPECT_EQ(mTexts, (Events{"r", "re", "reel", "", "x", ""}));
    EXPECT_FALSE(mField.TakeFocus());
}

class PictureButtonTest : public FrameworkFixture {
protected:
    PictureButtonTest() {
        mPanel->mWhenCreated = [this] {
            mButton.Create(*mPanel, 30325, {5, 5, 30, 30},
                           host::Bitmap::GetBitmap(host::kProjectDeleteNormalDecal, nullptr));
            mButton.SetToolTipText(u"Move <to> Trash");
            mButton.SetStatusBarText(u"Delete the currently selected items");
        };
        OpenPanel();
        mEvents.clear();
    }
    QToolButton& Button() { return *PanelWidget().findChild<QToolButton*>(); }

    host::PictureButton mButton;
};

TEST_F(PictureButtonTest, SendsItsCommandToItsPanelUnlessDisabledAndMayDestroyIt) {
    mPanel->mCommands[30325] = true;
    QTest::mouseClick(&Button(), Qt::LeftButton);
    mButton.Enable(false);
    QTest::mouseClick(&Button(), Qt::LeftButton);
    EXPECT_EQ(mEvents, (Events{"panel on duty", "panel 30325"}));
    mButton.Enable(true);
    mPanel->mCommands.clear();
    desk::MainCommander::Instance().Register(30325, {}, [this] { return mPanel->Destroy(), true; });
    QTest::mouseClick(&Button(), Qt::LeftButton);
    EXPECT_FALSE(mButton.IsCreated());
    desk::MainCommander::Instance().Register(30325, {}, {});
    mMain.RunUntilIdle();
}

using TabOrderTest = FrameworkFixture;

TEST_F(TabOrderTest, IsThatOfReading) {
    host::PictureButton right, below, left;
    host::SearchBoxControl field;
    mPanel->mWhenCreated = [&] {
        below.Create(*mPanel, 1, {10, 100, 20, 20}, {});
        right.Create(*mPanel, 3, {200, 12, 20, 20}, {});
        left.Create(*mPanel, 2, {150, 9, 20, 20}, {});
        field.Create(*mPanel, {10, 10, 100, 22}, true);
    };
    OpenPanel();
    QStringList names;
    QWidget* widget = PanelWidget().findChild<QLineEdit*>();
    while (names.size() < 3) {
        widget = widget->nextInFocusChain();
        if (widget->objectName().startsWith(QStringLiteral("command-"))) names << widget->objectName();
    }
    EXPECT_EQ(names.join(QLatin1Char(' ')), QStringLiteral("command-2 command-3 command-1"));
}

TEST_F(PictureButtonTest, TellsWhatItDoesToTheMainWindowAlsoFromAFloatingPanel) {
    EXPECT_EQ(Button().accessibleName(), QStringLiteral("Move <to> Trash"));
    EXPECT_TRUE(!Qt::mightBeRichText(Button().toolTip()) ||
                Button().toolTip().contains(QStringLiteral("&lt;to")));
    QWidget mainWindow;
    const StatusTips tips(&mainWindow);
    mFrame->Window().setParent(&mainWindow, Qt::Tool);
    QEnterEvent event({1, 1}, {1, 1}, {1, 1});
    QCoreApplication::sendEvent(&Button(), &event);
    EXPECT_EQ(tips.mTips, QStringList{QStringLiteral("Delete the currently selected items")});
    mFrame->Window().setParent(nullptr);
}

}  // namespace
