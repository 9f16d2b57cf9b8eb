#include <stdexcept>

#include "desk/framework/CommandRouter.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

constexpr int kSomeCommand = 900001;
constexpr int kProgramCommand = 900002;

class CommandRouterTest : public FrameworkFixture {
protected:
    CommandRouterTest() {
        desk::MainCommander::Instance().Register(kProgramCommand, {}, [this] {
            mEvents.push_back("program");
            return true;
        });
        mPanel->mWhenCreated = [this] { mEvents.clear(); };
    }
    ~CommandRouterTest() override { desk::MainCommander::Instance().Register(kProgramCommand, {}, {}); }

    desk::CommandRouter& mRouter = desk::CommandRouter::Instance();
};

TEST_F(CommandRouterTest, AsksTheViewThenTheHandlerAndTheProgramAtTheEndOfTheirChains) {
    NotingHandler handler(kHandlerID, mEvents);
    OpenPanel();
    EXPECT_FALSE(mRouter.Send(kSomeCommand));
    EXPECT_EQ(mEvents, (Events{"panel 900001", "handler 900001"}));
    EXPECT_FALSE(mRouter.FindStatus(kSomeCommand).mIsKnown);

    mEvents.clear();
    handler.mAnswers.mCommands[kSomeCommand] = true;
    mPanel->mAnswers.mCommands[kSomeCommand] = false;
    EXPECT_TRUE(mRouter.Send(kSomeCommand));
    EXPECT_TRUE(mRouter.Send(kProgramCommand));
    EXPECT_EQ(mEvents, (Events{"panel 900001", "panel 900002", "program"}));
    EXPECT_TRUE(mRouter.FindStatus(kSomeCommand).mIsKnown);
    EXPECT_FALSE(mRouter.FindStatus(kSomeCommand).mIsEnabled);
    EXPECT_TRUE(mRouter.FindStatus(kProgramCommand).mIsEnabled);
}

TEST_F(CommandRouterTest, WithoutAPanelOnlyTheProgramAnswers) {
    EXPECT_TRUE(mRouter.Send(kProgramCommand));
    EXPECT_FALSE(mRouter.Send(kSomeCommand));
    EXPECT_FALSE(mRouter.FindStatus(11311).mIsKnown);
    EXPECT_EQ(mEvents, (Events{"program"}));
}

TEST_F(CommandRouterTest, FindGoesToTheFirstSearchFieldThatIsEnabled) {
    NotingHandler handler(kHandlerID, mEvents);
    host::SearchBoxControl disabled, field;
    NotingSubView sub("sub", mPanel.get(), mEvents);
    mPanel->mWhenCreated = [&] {
        disabled.Create(*mPanel, {0, 0, 80, 20}, true);
        disabled.Enable(false);
        sub.Create(*mPanel, {0, 30, 100, 100});
        field.Create(sub, {0, 0, 80, 20}, true);
        field.Enable(false);
    };
    OpenPanel();
    mFrame->Activate();
    EXPECT_TRUE(mRouter.FindStatus(11311).mIsKnown);
    EXPECT_FALSE(mRouter.FindStatus(11311).mIsEnabled);
    EXPECT_FALSE(mRouter.Send(11311));
    field.Enable(true);
    EXPECT_TRUE(mRouter.FindStatus(11311).mIsEnabled);
    EXPECT_TRUE(mRouter.Send(11311));
    EXPECT_EQ(QApplication::focusWidget(), sub.GetImpl().mWidget->findChild<QWidget*>("search"));
}

TEST_F(CommandRouterTest, PanelStepsReachTheWorkspaceWithAndWithoutAHandler) {
    std::vector<bool> steps;
    EXPECT_FALSE(mRouter.FindStatus(11916).mIsEnabled);
    EXPECT_FALSE(mRouter.Send(11916));
    desk::PanelNavigation::Instance() = {[&](bool forward) {
                                             steps.push_back(forward);
                                             return true;
                                         },
                                         [] { return true; }};
    EXPECT_TRUE(mRouter.FindStatus(11917).mIsEnabled);
    EXPECT_TRUE(mRouter.Send(11917));
    NotingHandler handler(kHandlerID, mEvents);
    OpenPanel();
    EXPECT_TRUE(mRouter.Send(11916));
    EXPECT_EQ(steps, (std::vector{false, true}));
}

TEST_F(CommandRouterTest, PostedCommandsRunLaterAndOnlyEnabledOnesIfAskedSo) {
    bool isEnabled = false;
    desk::MainCommander::Instance().Register(
        kProgramCommand,
        [&] {
            return desk::CommandStatus{true, isEnabled, false, host::MenuMark::None, u""};
        },
        [this] {
            mEvents.push_back("program");
            return true;
        });
    host::PostCommand(kProgramCommand, true);
    host::PostCommand(kProgramCommand, false);
    EXPECT_TRUE(mEvents.empty());
    mMain.RunUntilIdle();
    EXPECT_EQ(mEvents, (Events{"program"}));
    isEnabled = true;
    host::PostCommand(kProgramCommand, true);
    mMain.RunUntilIdle();
    EXPECT_EQ(mEvents.size(), 2u);
}

TEST_F(CommandRouterTest, ACommandThatThrowsIsLoggedAndCountsAsTaken) {
    const ExpectLogged log("out of luck");
    desk::MainCommander::Instance().Register(kProgramCommand, {},
                                             []() -> bool { throw std::runtime_error("out of luck"); });
    EXPECT_TRUE(mRouter.Send(kProgramCommand));
}

}  // namespace
