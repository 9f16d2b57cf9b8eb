#include <QLineEdit>
#include <QTest>

#include "desk/framework/Shortcuts.h"
#include "tests/desk/framework/FrameworkFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr int kZoomIn = 910001;
constexpr int kMoveHome = 910002;
constexpr int kOpen = 910003;

void Populate(host::ShortcutManager* manager) {
    host::CommandContext* context = manager->AddContext("test.panel", u"Test Panel");
    using enum host::CommandKind;
    context->DeclareCommand("zoomin", kZoomIn, LabelledCommand, "Zoom In", nullptr, false);
    context->DeclareCommand("home", kMoveHome, LabelledCommand, "Home", nullptr, false);
    context->DeclareCommand("open", kOpen, LabelledCommand, "Open", nullptr, false);
}

class ShortcutsTest : public FrameworkFixture {
protected:
    ShortcutsTest() {
        host::ShortcutManager::Instance()->RegisterCommandContext(&Populate);
        mPanel->mAnswers.mCommands = {{kZoomIn, true}, {kMoveHome, true}, {kOpen, true}, {57642, true}};
        mPanel->mWhenOnDuty = [] { host::ShortcutManager::Instance()->ApplyContext("test.panel", false); };
        OpenPanel();
        mField.setParent(&PanelWidget());
        mField.show();
        mOther.setParent(&PanelWidget());
        mOther.setFocusPolicy(Qt::StrongFocus);
        mOther.show();
        mFrame->Activate();
    }
    ~ShortcutsTest() override {
        mField.setParent(nullptr);
        mOther.setParent(nullptr);
        mProfile.Remove("shortcuts.json");
        desk::Shortcuts::Instance().Load(mProfile.Path());
    }

    void Load(const char* overrides) {
        mProfile.Write("shortcuts.json", overrides);
        desk::Shortcuts::Instance().Load(mProfile.Path());
        desk::Shortcuts::Instance().InstallOn(mFrame->Window());
    }
    /// What the key press leads to, in the widget that has the focus.
    Events Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        mEvents.clear();
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        return mEvents;
    }

    TemporaryFolder mProfile;
    QLineEdit mField;
    QWidget mOther;
};

TEST_F(ShortcutsTest, SendThePanelsCommandsWhileItIsOnDuty) {
    Load(R"({"test.panel": {"zoomin": ["Ctrl++", "Ctrl+="], "home": "Home"}})");
    mOther.setFocus();
    EXPECT_EQ(Press(Qt::Key_Plus, Qt::ControlModifier), (Events{"panel 910001"}));
    EXPECT_EQ(Press(Qt::Key_Equal, Qt::ControlModifier), (Events{"panel 910001"}));
    EXPECT_EQ(Press(Qt::Key_Home), (Events{"panel 910002"}));
    EXPECT_EQ(desk::Shortcuts::Instance().GetKey(kZoomIn), QKeySequence(Qt::CTRL | Qt::Key_Plus));
    mPanel->mAnswers.mCommands[kMoveHome] = false;
    EXPECT_TRUE(Press(Qt::Key_Home).empty());

    desk::CommandRouter::Instance().ForgetView(mPanel.get());
    EXPECT_TRUE(Press(Qt::Key_Plus, Qt::ControlModifier).empty());
    EXPECT_EQ(Press(Qt::Key_A, Qt::ControlModifier), (Events{"panel 57642"})) << "global ones act always";
}

TEST_F(ShortcutsTest, ActInAPanelThatFloatsOverTheMainWindow) {
    QWidget mainWindow;
    mainWindow.show();
    Load(R"({"test.panel": {"zoomin": "Ctrl++"}})");
    desk::Shortcuts::Instance().InstallOn(mainWindow);
    mFrame->Window().setParent(&mainWindow, Qt::Tool);
    mFrame->Activate();
    mOther.setFocus();
    EXPECT_EQ(Press(Qt::Key_Plus, Qt::ControlModifier), (Events{"panel 910001"}));
    mFrame->Window().setParent(nullptr);
}

TEST_F(ShortcutsTest, ATextFieldKeepsItsEditingKeys) {
    Load(R"({"test.panel": {"home": "Home", "zoomin": "Ctrl++"}})");
    mField.setText(QStringLiteral("abc"));
    mField.setFocus();
    EXPECT_TRUE(Press(Qt::Key_Home).empty());
    EXPECT_EQ(mField.cursorPosition(), 0);
    EXPECT_TRUE(Press(Qt::Key_A, Qt::ControlModifier).empty());
    EXPECT_EQ(mField.selectedText(), QStringLiteral("abc"));
    EXPECT_TRUE(Press(Qt::Key_Delete).empty());
    EXPECT_EQ(mField.text(), QString());
    EXPECT_EQ(Press(Qt::Key_Plus, Qt::ControlModifier), (Events{"panel 910001"}));
}

TEST_F(ShortcutsTest, AKeyOfTwoContextsGoesToThePanelsWhileItCanBeUsed) {
    Load(R"({"global": {"cmd.edit.selectall": "Ctrl+O"}, "test.panel": {"open": "Ctrl+O"}})");
    mOther.setFocus();
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), (Events{"panel 910003"}));
    mPanel->mAnswers.mCommands[kOpen] = false;
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), (Events{"panel 57642"}));
    desk::Shortcuts::Instance().ApplyContext("test.panel", true);
    EXPECT_TRUE(Press(Qt::Key_O, Qt::ControlModifier).empty()) << "exclusive";
    desk::Shortcuts::Instance().ApplyContext("nobody's", false);
    EXPECT_TRUE(Press(Qt::Key_O, Qt::ControlModifier).empty()) << "an unknown context changes nothing";
}

TEST_F(ShortcutsTest, WhatTheProfilesFileDoesNotGetRightIsNamedAndTheRestGoesOn) {
    const ExpectLogged keys("\"zoomin\" in \"test.panel\"");
    const ExpectLogged command("\"test.panel\" has no command \"zoomout\"");
    const ExpectLogged context("no context \"panel\"");
    const ExpectLogged shape("\"global\" must be an object");
    Load(
        R"({"global": 7, "panel": {"zoomin": "F7"}, "test.panel": {"zoomin": ["Ctrl+Boo"], "zoomout": "F9", "home": "F8"}})");
    mOther.setFocus();
    EXPECT_EQ(Press(Qt::Key_F8), (Events{"panel 910002"}));
    EXPECT_EQ(Press(Qt::Key_A, Qt::ControlModifier), (Events{"panel 57642"}));
}

TEST_F(ShortcutsTest, AFileThatIsNoJsonLeavesTheProgramsKeys) {
    const ExpectLogged log("shortcuts.json is left out");
    Load("{\"global\":");
    mOther.setFocus();
    EXPECT_EQ(Press(Qt::Key_A, Qt::ControlModifier), (Events{"panel 57642"}));
}

}  // namespace
