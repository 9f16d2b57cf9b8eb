
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

constexpr int kSomeCommand = 900001, kProgramCommand = 900002;

class CommandRouterTest : public FrameworkFixture {
protected:
    CommandRouterTest() {
        desk::MainCommander::Instance().Register(kProgramCommand, {},
                                                 [this] { return mEvents.push_back("program"), true; });
    }
    ~CommandRouterTest() override { desk::MainCommander::Instance().Register(kProgramCommand, {}, {}); }

    desk::CommandRouter& mRouter = desk::CommandRouter::Instance();
};

TEST_F(CommandRouterTest, AsksTheViewThenTheHandlerAndTheProgramAtTheEndOfTheirChains) {
    EXPECT_TRUE(mRouter.Send(kProgramCommand)) << "without a panel";
    EXPECT_FALSE(mRouter.Send(kSomeCommand));
    EXPECT_FALSE(mRouter.FindStatus(11311).mIsKnown);
    EXPECT_EQ(TakeEvents(), Events{"program"});

    NotingHandler handler(kHandlerID, mEvents);
    host::SearchBoxControl field;
    mPanel->mWhenCreated = [&] { field.Create(*mPanel, {0, 0, 80, 20}, true); };
    OpenPanel();
    for (const bool isEnabled : {false, true}) {
        field.Enable(isEnabled);
        EXPECT_EQ(mRouter.FindStatus(11311).mIsEnabled, isEnabled);
    }
    TakeEvents();
    EXPECT_FALSE(mRouter.Send(kSomeCommand));
    EXPECT_EQ(TakeEvents(), (Events{"panel 900001", "handler 900001"}));
    EXPECT_FALSE(mRouter.FindStatus(kSomeCommand).mIsKnown);
    handler.mCommands[kSomeCommand] = true;
    mPanel->mCommands[kSomeCommand] = false;
    EXPECT_TRUE(mRouter.Send(kSomeCommand));
    EXPECT_TRUE(mRouter.Send(kProgramCommand));
    EXPECT_EQ(TakeEvents(), (Events{"panel 900001", "panel 900002", "program"}));
    EXPECT_TRUE(mRouter.FindStatus(kSomeCommand).mIsKnown && !mRouter.FindStatus(kSomeCommand).mIsEnabled);
    EXPECT_TRUE(mRouter.FindStatus(kProgramCommand).mIsEnabled);

    NotingTabView second("second", mEvents, nullptr);
    TestPanelFrame frame;
    host::TabView::Create(&second, u"test.second", u"Second", &frame, true);
    mRouter.SetOnDuty(nullptr, &second);
    TakeEvents();
    EXPECT_FALSE(mRouter.Send(kSomeCommand) || mRouter.FindStatus(kSomeCommand).mIsKnown);
    EXPECT_EQ(TakeEvents(), Events{"second 900001"}) << "a panel that is not on duty is not asked";
    second.Destroy();
}

TEST_F(CommandRouterTest, PostedCommandsRunLaterAndWhatOneThrowsIsLogged) {
    const ExpectLogged log("out of luck");
    bool isEnabled = false;
    desk::MainCommander::Instance().Register(
        kProgramCommand,
        [&] {
            return desk::CommandStatus{true, isEnabled, false, host::MenuMark::None, u""};
        },
        [this]() -> bool {
            mEvents.push_back("program");
            throw std::runtime_error("out of luck");
        });
    host::PostCommand(kProgramCommand, true);
    host::PostCommand(kProgramCommand, false);
    EXPECT_TRUE(mEvents.empty());
    mMain.RunUntilIdle();
    EXPECT_EQ(TakeEvents(), Events{"program"}) << "only if it is enabled, when asked so";
    isEnabled = true;
    host::PostCommand(kProgramCommand, true);
    mMain.RunUntilIdle();
    EXPECT_EQ(TakeEvents(), Events{"program"});
    EXPECT_TRUE(mRouter.Send(kProgramCommand)) << "counts as taken";
}

}  // namespace
