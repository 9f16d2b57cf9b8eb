#include <QTest>

#include "desk/framework/HeldKey.h"
#include "desk/framework/Shortcuts.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

constexpr int kZoomIn = 910001, kMoveHome = 910002, kOpen = 910003;

constexpr char kKeys[] = R"({"global": {"cmd.edit.selectall": ["Ctrl+A", "Ctrl+O"]},
    "test.panel": {"zoomin": ["Ctrl++", "Ctrl+="], "home": "Home", "open": "Ctrl+O"}})";

void Populate(host::ShortcutManager* manager) {
    host::CommandContext* context = manager->AddContext("test.panel", u"Test Panel");
    for (const auto& [name, id] : {std::pair("zoomin", kZoomIn), {"home", kMoveHome}, {"open", kOpen}})
        context->DeclareCommand(name, id, host::CommandKind::LabelledCommand, name, nullptr, false);
}

class ShortcutsTest : public FrameworkFixture {
protected:
    ShortcutsTest() {
        host::ShortcutManager::Instance()->RegisterCommandContext(&Populate);
        mPanel->mCommands = {{kZoomIn, true}, {kMoveHome, true}, {kOpen, true}, {57642, true}};
        mPanel->mWhenOnDuty = [] { host::ShortcutManager::Instance()->ApplyContext("test.panel", false); };
        OpenPanel();
        mWidget.setFocusPolicy(Qt::StrongFocus);
        mWidget.setParent(&PanelWidget());
        mWidget.show();
        mFrame->Activate();
    }
    ~ShortcutsTest() override {
        mWidget.setParent(nullptr);
        desk::Shortcuts::Instance().Load({});
    }

    void Load(const char* overrides) {
        mFolder.Write("shortcuts.json", overrides);
        desk::Shortcuts::Instance().Load(mFolder.Path());
        desk::Shortcuts::Instance().InstallOn(mFrame->Window());
    }
    /// What the key press leads to, in the widget that has the focus.
    Events Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        TakeEvents();
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        return TakeEvents();
    }

    QWidget mWidget;
};

TEST_F(ShortcutsTest, SendThePanelsCommandsWhileItIsOnDutyAlsoWhenItFloats) {
    Load(kKeys);
    QWidget mainWindow;
    mainWindow.show();
    desk::Shortcuts::Instance().InstallOn(mainWindow);
    mFrame->Window().setParent(&mainWindow, Qt::Tool);
    mFrame->Activate();
    mWidget.setFocus();
    EXPECT_EQ(Press(Qt::Key_Plus, Qt::ControlModifier), Events{"panel 910001"}) << "it floats";
    mFrame->Window().setParent(nullptr);

    desk::Shortcuts::Instance().InstallOn(mFrame->Window());
    mFrame->Activate();
    mWidget.setFocus();
    EXPECT_EQ(Press(Qt::Key_Equal, Qt::ControlModifier), Events{"panel 910001"});
    EXPECT_EQ(Press(Qt::Key_Home), Events{"panel 910002"});
    EXPECT_EQ(desk::Shortcuts::Instance().GetKey(kZoomIn), QKeySequence(Qt::CTRL | Qt::Key_Plus));
    mPanel->mCommands[kMoveHome] = false;
    {
        const ExpectLogged told("not now");
        EXPECT_EQ(Press(Qt::Key_Home), Events{});
    }
    desk::CommandRouter::Instance().ForgetView(mPanel.get());
    EXPECT_EQ(Press(Qt::Key_Plus, Qt::ControlModifier), Events{});
    EXPECT_EQ(Press(Qt::Key_A, Qt::ControlModifier), Events{"panel 57642"}) << "global ones act always";
}

TEST_F(ShortcutsTest, AKeyOfTwoContextsGoesToThePanelsWhileItCanBeUsed) {
    Load(kKeys);
    mWidget.setFocus();
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), Events{"panel 910003"});
    mPanel->mCommands[kOpen] = false;
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), Events{"panel 57642"});
    desk::Shortcuts::Instance().ApplyContext("test.panel", true);
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), Events{}) << "exclusive";
    desk::Shortcuts::Instance().ApplyContext("nobody's", false);
    EXPECT_EQ(Press(Qt::Key_O, Qt::ControlModifier), Events{}) << "an unknown context changes nothing";
}

TEST_F(ShortcutsTest, AKeyThatIsHeldDownSendsItsCommandOnceUnlessOneGoesOnWithIt) {
    constexpr int kPageDown = 910004;
    host::ShortcutManager::Instance()
        ->GetContext("test.panel")
        ->DeclareCommand("cmd.zuproductionfolder.move.pagedown", kPageDown, host::CommandKind::MenuCommand, "",
                         nullptr, false);
    mPanel->mCommands[kPageDown] = true;
    Load(R"({"test.panel": {"open": "Del", "cmd.zuproductionfolder.move.pagedown": "PgDown"}})");
    mWidget.setFocus();
    const auto hold = [this](Qt::Key key) {
        TakeEvents();
        for (const bool isRepeated : {false, true, true})
            QTest::simulateEvent(&mWidget, true, key, Qt::NoModifier, {}, isRepeated);
        return TakeEvents().size();
    };
    EXPECT_EQ(hold(Qt::Key_Delete), 1u);
    EXPECT_EQ(hold(Qt::Key_PageDown), 3u);

    desk::HeldKey held(nullptr);
    const auto send = [this](QEvent::Type type, quint64 time) {
        QKeyEvent event(type, Qt::Key_Delete, Qt::NoModifier);
        event.setTimestamp(time);
        QApplication::sendEvent(&mWidget, &event);
    };
    send(QEvent::ShortcutOverride, 1000);
    EXPECT_FALSE(held.IsHeld());
    send(QEvent::KeyRelease, 1500);
    send(QEvent::ShortcutOverride, 1500);
    EXPECT_TRUE(held.IsHeld()) << "as X11 repeats";
    send(QEvent::KeyRelease, 1530);
    send(QEvent::ShortcutOverride, 1550);
    EXPECT_FALSE(held.IsHeld()) << "pressed again";
}

TEST_F(ShortcutsTest, WhatTheProfilesFileDoesNotGetRightIsNamedAndTheRestGoesOn) {
    const ExpectLogged keys("\"zoomin\" in \"test.panel\""), shape("\"global\" must be an object"),
        command("\"test.panel\" has no command \"zoomout\""), context("no context \"panel\"");
    Load(R"({"global": 7, "panel": {"zoomin": "F7"},
             "test.panel": {"zoomin": ["Ctrl+Boo"], "zoomout": "F9", "home": "F8"}})");
    mWidget.setFocus();
    EXPECT_EQ(Press(Qt::Key_F8), Events{"panel 910002"});
    const ExpectLogged broken("shortcuts.json is left out");
    Load("{\"global\":");
    EXPECT_EQ(Press(Qt::Key_A, Qt::ControlModifier), Events{"panel 57642"});
}

}  // namespace
