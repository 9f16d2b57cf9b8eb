#include <QTest>
#include <QtWidgets>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/ProjectCommands.h"
#include "desk/app/ProjectNotice.h"
#include "desk/app/ProjectTabBar.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/Shortcuts.h"
#include "desk/toolkit/Theme.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/TabView.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace desk {
namespace {

class ProjectAreaTest : public ProjectDocumentsFixture {
protected:
    ProjectAreaTest() {
        mArea.show();
        mArea.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&mArea));
    }
    ~ProjectAreaTest() override { Manager().CloseAllProjects(); }

    QTabWidget& Tabs() { return *mArea.findChild<QTabWidget*>(); }
    ProjectTabBar& Bar() { return static_cast<ProjectTabBar&>(*Tabs().tabBar()); }
    std::vector<std::string> Titles() {
        std::vector<std::string> titles;
        for (int i = 0; i < Tabs().count(); ++i) titles.push_back(Tabs().tabText(i).toStdString());
        return titles;
    }
    void Type(const char* text) { QTest::keyClicks(&Editor(), QString::fromLatin1(text)); }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&Editor(), key, modifiers);
    }
    std::string Text() { return Editor().toPlainText().toStdString(); }
    QPlainTextEdit& Editor() { return *Tabs().currentWidget()->findChild<QPlainTextEdit*>(); }
    void Choose(int command) {
        EXPECT_TRUE(CommandRouter::Instance().FindStatus(command).mIsEnabled) << command;
        CommandRouter::Instance().Send(command);
        mMain.RunUntilIdle();
    }
    bool IsEnabled(int command) const { return CommandRouter::Instance().FindStatus(command).mIsEnabled; }
    /// The texts of the bars above the project in front.
    std::string Notices() {
        QStringList texts;
        for (const ProjectNotice* notice : Tabs().currentWidget()->findChildren<ProjectNotice*>())
            if (notice->isVisible()) texts << notice->accessibleName();
        return texts.join(QLatin1Char('|')).toStdString();
    }
    bool IsOffered(int command) {
        const auto buttons =
            Tabs().currentWidget()->findChildren<QPushButton*>(QStringLiteral("command-%1").arg(command));
        return std::ranges::any_of(buttons, [](auto* button) { return button->isVisible(); });
    }
    /// Also in a narrow window, where the style sheet leaves buttons little.
    bool AreButtonsLegible() {
        Theme::Apply(ThemeKind::Dark);
        mArea.resize(200, 400);
        mMain.RunUntilIdle();
        const auto buttons = Tabs().currentWidget()->findChildren<QPushButton*>();
        return std::ranges::all_of(buttons, [](auto* button) {
            return !button->isVisible() || button->width() >= button->sizeHint().width();
        });
    }
    using Titled = std::vector<std::string>;

    ProjectArea mArea{nullptr};
    ProjectCommands mCommands{mArea};
};

TEST_F(ProjectAreaTest, ShowsAProjectFromOpeningToClosing) {
    EXPECT_FALSE(IsEnabled(kCommandCloseProject));
    Choose(host::CommandID::kPanelClosedWithoutProjects);
    EXPECT_TRUE(mArea.currentWidget()->hasFocus()) << "the keyboard is where work can go on";
    OpenAndFind();
    EXPECT_EQ(mArea.currentWidget(), &Tabs());
    EXPECT_EQ(Titles(), Titled{"Reel 1"});
    EXPECT_EQ(Text(), "one\ntwo\nthree");
    EXPECT_FALSE(IsEnabled(kCommandSaveProject));
    EXPECT_FALSE(IsEnabled(kCommandTrashProject)) << "there is no panel";
    CommandRouter::Instance().SetOnDuty(nullptr, nullptr);
    QApplication::focusWidget()->clearFocus();
    host::BroadcastMessage(host::kStation_WindowClosing, host::HandlerWindowClosingMessage(u"of a panel"));
    EXPECT_TRUE(Tabs().isAncestorOf(QApplication::focusWidget()));

    Type("zero ");
    EXPECT_EQ(Titles(), Titled{"Reel 1 •"});
    Choose(kCommandSaveProject);
    EXPECT_EQ(mFolder.Read(kProject), std::string("zero ") + kBytes) << "line ends stay";
    EXPECT_EQ(Titles(), Titled{"Reel 1"});
    Choose(kCommandUndo);
    EXPECT_EQ(Titles(), Titled{"Reel 1 •"}) << "a save keeps the steps of undo";
    Choose(kCommandRedo);
    EXPECT_EQ(Titles(), Titled{"Reel 1"});
    EXPECT_FALSE(IsEnabled(kCommandSaveProject));

    Type("x");
    mDialogs.ExpectQuestion("Save Changes", u"Cancel");
    Choose(kCommandCloseProject);
    EXPECT_EQ(Titles(), Titled{"Reel 1 •"});
    mDialogs.ExpectQuestion("Save Changes", u"Discard");
    Choose(kCommandCloseProject);
    EXPECT_NE(mArea.currentWidget(), &Tabs());
    EXPECT_EQ(mFolder.Read(kProject), std::string("zero ") + kBytes);
}

TEST_F(ProjectAreaTest, SaysWhyAProjectCannotBeEdited) {
    WriteForeignLock();
    ASSERT_TRUE(Open(u"Open Read-Only"));
    EXPECT_EQ(Titles(), Titled{"Reel 1 (read-only)"});
    EXPECT_TRUE(Notices().starts_with("Read-only. Locked by tomas on edit-bay-2, since ")) << Notices();
    Type("x");
    EXPECT_EQ(Titles(), Titled{"Reel 1 (read-only)"});

    EXPECT_FALSE(Bar().IsItalic(0));
    mFolder.Write(kProject, "changed by tomas");
    Find()->SetOutOfDate(true);
    EXPECT_EQ(Titles(), Titled{"Reel 1 (read-only, out of date)"});
    EXPECT_TRUE(Bar().IsItalic(0));
    EXPECT_TRUE(Notices().ends_with("|The file has changed on disk.")) << Notices();
    Choose(kCommandReloadProject);
    EXPECT_EQ(Text(), "changed by tomas");

    mFolder.Remove(kLock);
    mDialogs.ExpectMessage("Break Lock");
    Choose(kCommandBreakLock);
    EXPECT_TRUE(Find()->IsReadOnly());
    mMain.Advance(std::chrono::seconds(5));
    EXPECT_EQ(Notices(), "Read-only.");
    EXPECT_TRUE(AreButtonsLegible() && !IsEnabled(kCommandBreakLock));
    EXPECT_EQ(CommandRouter::Instance().FindStatus(kCommandToggleReadOnly).mText, u"Read-Write Mode");
    Editor().clearFocus();
    Choose(kCommandToggleReadOnly);
    EXPECT_EQ(mArea.focusWidget(), &Editor()) << "what comes next is text";
    EXPECT_EQ(Titles(), Titled{"Reel 1"});
    EXPECT_EQ(Notices(), "");
    Type("x");
    EXPECT_EQ(Titles(), Titled{"Reel 1 •"});
    Choose(kCommandUndo);
}

TEST_F(ProjectAreaTest, AVolumeThatHangsHoldsUpOneLookAtTheHolder) {
    WriteForeignLock();
    ASSERT_TRUE(Open(u"Open Read-Only"));
    mDisk.ResetCounts();
    mDisk.CloseGate(Operation::Status, mFolder.Path(kLock));
    for (int i = 0; i < 10; ++i) mArea.UpdateHolders();
    ASSERT_TRUE(mDisk.WaitAtGate());
    mFolder.Remove(kLock);
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_LT(mDisk.Count(Operation::Status), 6) << "one look, and one more for those that came meanwhile";
    EXPECT_EQ(Notices(), "Read-only.");
}

TEST_F(ProjectAreaTest, SaysWhoHasALostLockAndOffersToGoOnWhereThatCanSucceed) {
    const ProjectDocumentRef document = OpenAndFind();
    Type("mine ");
    WriteForeignLock();
    mDialogs.ExpectQuestion("Lock Lost", u"Cancel");
    Choose(kCommandSaveProject);
    EXPECT_EQ(Titles(), Titled{"Reel 1 • (lock lost)"});
    EXPECT_TRUE(Editor().isReadOnly());
    mDialogs.ExpectQuestion("Save Changes", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", {});
    EXPECT_FALSE(Manager().CloseProject(document, true));
    const auto expect = [this](const char* part, bool isOffered) {
        EXPECT_NE(Notices().find(part), std::string::npos) << Notices();
        EXPECT_EQ(IsOffered(kCommandToggleReadOnly), isOffered) << part;
    };
    expect("taken over: the project is locked by tomas on edit-bay-2, since ", false);
    mFolder.Remove(kLock);
    mDisk.Deny(mFolder.Path(kLock), EIO);
    mMain.Advance(std::chrono::seconds(5));
    expect("taken over or removed", false);
    mDisk.Allow(mFolder.Path(kLock));
    mMain.Advance(std::chrono::seconds(5));
    expect("nobody holds the project now", true);
    document->SetOutOfDate(true);
    expect("has been changed since", false);
    document->SetOutOfDate(false);
    Choose(kCommandToggleReadOnly);
    EXPECT_EQ(Titles(), Titled{"Reel 1 •"});
    EXPECT_EQ(Notices(), "");

    mDisk.SetGone(true);
    mMain.Advance(std::chrono::seconds(7));
    EXPECT_EQ(Titles(), Titled{"Reel 1 • (cannot be saved now)"});
    EXPECT_TRUE(Notices().starts_with("This project cannot be saved now.")) << Notices();
    mDisk.SetGone(false);
    mMain.Advance(std::chrono::seconds(3));
    EXPECT_EQ(Notices(), "");
    Choose(kCommandSaveProject);
    EXPECT_EQ(mFolder.Read(kProject), std::string("mine ") + kBytes);
}

TEST_F(ProjectAreaTest, TabsCloseAndFollowTheActiveProject) {
    mFolder.Write("Day 1/Reel 2.zuproj", std::string("\0\1", 2));
    mFolder.Write("Day 1/A & B.zuproj", "ab");
    OpenAndFind();
    OpenAndFind("Day 1/Reel 2.zuproj");
    EXPECT_FALSE(Editor().isVisible()) << "no text";
    OpenAndFind("Day 1/A & B.zuproj");
    EXPECT_EQ(Titles(), (Titled{"Reel 1", "Reel 2", "A && B"}));
    mArea.resize(200, 400);
    EXPECT_GT(Bar().tabRect(0).width(), Bar().fontMetrics().horizontalAdvance(Bar().tabText(0)) + 32)
        << "legible";
    Manager().SetActiveProject(Find());
    EXPECT_EQ(Tabs().currentIndex(), 0);
    Press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(Tabs().currentIndex(), 1);
    EXPECT_EQ(Manager().GetActiveProject(), Find("Day 1/Reel 2.zuproj"));

    QTest::mouseClick(&Bar(), Qt::MiddleButton, {}, Bar().tabRect(0).center());
    EXPECT_EQ(Titles(), (Titled{"Reel 2", "A && B"}));
    QTest::mouseClick(Bar().tabButton(1, QTabBar::RightSide), Qt::LeftButton);
    EXPECT_EQ(Titles(), Titled{"Reel 2"});
    mDialogs.ExpectFiles("Open Project", {mFolder.PathUTF16(kProject)});
    Choose(kCommandOpenProject);
    EXPECT_EQ(Titles(), (Titled{"Reel 2", "Reel 1"}));
    Choose(kCommandCloseOtherProjects);
    EXPECT_EQ(Titles(), Titled{"Reel 1"});
    Choose(kCommandRevealProject);
    EXPECT_EQ(mDesktop.mShown, (std::vector<std::string>{"items", mFolder.Path(kProject)}));
}

TEST_F(ProjectAreaTest, KeysInTheEditorAreTheEditors) {
    const TemporaryFolder profile;
    constexpr int kPanelCommand = 910020;
    int panelCommands = 0;
    DeclareProgramCommands();
    host::ShortcutManager::Instance()
        ->AddContext("test.typing", u"Panel")
        ->DeclareCommand("any", kPanelCommand, host::CommandKind::MenuCommand, "", nullptr, false);
    MainCommander::Instance().Register(kPanelCommand, {}, [&] { return ++panelCommands, true; });
    profile.Write("shortcuts.json",
                  R"({"test.typing": {"any": ["Del", "Ctrl+A", "Home", "End", "F5", "Ctrl+N"]}})");
    Shortcuts::Instance().Load(profile.Path());
    Shortcuts::Instance().InstallOn(mArea);
    host::ShortcutManager::Instance()->ApplyContext("test.typing", false);
    OpenAndFind();
    Editor().setFocus();
    EXPECT_EQ(CommandRouter::Instance().GetEditorOnDuty(), &mArea);
    Press(Qt::Key_End);
    EXPECT_EQ(Editor().textCursor().position(), 3);
    Press(Qt::Key_Home);
    Press(Qt::Key_Delete);
    EXPECT_EQ(Text(), "ne\ntwo\nthree");
    Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Editor().textCursor().selectedText().size(), 12);
    Press(Qt::Key_N, Qt::ControlModifier);
    Press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(mFolder.Read(kProject), "ne\r\ntwo\nthree");
    mFolder.Write(kProject, "new");
    Press(Qt::Key_F5);
    EXPECT_EQ(Text(), "new");
    EXPECT_EQ(panelCommands, 0);
    for (const auto& [key, modifiers] :
         {std::pair(Qt::Key_F6, Qt::NoModifier), {Qt::Key_Tab, Qt::ControlModifier}}) {
        Editor().setFocus();
        Press(key, modifiers);
        EXPECT_FALSE(Editor().hasFocus());
    }

    EXPECT_TRUE(IsEnabled(host::CommandID::kSelectAll));
    CommandRouter::Instance().SetOnDuty(nullptr, nullptr);
    EXPECT_FALSE(IsEnabled(kCommandUndo)) << "a panel is on duty";
    Editor().clearFocus();
    Editor().setFocus();
    Press(Qt::Key_W, Qt::ControlModifier);
    mMain.RunUntilIdle();
    EXPECT_EQ(Tabs().count(), 0);
    MainCommander::Instance().Register(kPanelCommand, {}, {});
    Shortcuts::Instance().Load({});
}

}  // namespace
}  // namespace desk
