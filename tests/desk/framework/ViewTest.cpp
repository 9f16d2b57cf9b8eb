#include <QImage>
#include <QLineEdit>
#include <stdexcept>

#include "desk/core/DebugDatabaseFile.h"
#include "desk/framework/CommandRouter.h"
#include "host/framework/DC.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

class ViewTest : public FrameworkFixture {};

TEST_F(ViewTest, IsCreatedLaidOutAndDestroyedOnceWithTheViewsInIt) {
    NotingSubView sub("sub", mPanel.get(), mEvents);
    mPanel->mWhenCreated = [&] { sub.Create(*mPanel, {10, 20, 100, 50}); };
    OpenPanel();
    EXPECT_EQ(mFrame->GetTitle(), u"Panel");
    EXPECT_TRUE(sub.GetImpl().mWidget->isVisible());
    mFrame->Resize({500, 200});
    sub.SetBounds({10, 20, 200, 60});
    EXPECT_EQ(sub.GetImpl().mWidget->geometry(), QRect(10, 20, 200, 60));
    mPanel->Destroy();
    mPanel->Destroy();
    EXPECT_EQ(mEvents,
              (Events{"panel created 0,0 400x300", "sub created 10,20 100x50", "panel laid out 0,0 500x200",
                      "sub laid out 10,20 200x60", "panel destroyed", "sub destroyed"}));
    EXPECT_FALSE(mPanel->IsCreated());
    EXPECT_FALSE(sub.IsCreated());
    EXPECT_EQ(mFrame->GetView(), nullptr);
}

TEST_F(ViewTest, SurvivesEveryOrderOfDestruction) {
    // The window goes before the view: the view still gets its DestroySelf.
    auto sub = std::make_unique<NotingSubView>("sub", mPanel.get(), mEvents);
    host::SearchBoxControl field;
    mPanel->mWhenCreated = [&] {
        sub->Create(*mPanel, {0, 0, 10, 10});
        field.Create(*sub, {0, 0, 10, 10}, true);
        EXPECT_NE(mPanel->GetToolkitContainer(), nullptr);
    };
    OpenPanel();
    mFrame.reset();
    EXPECT_EQ(mEvents, (Events{"panel created 0,0 400x300", "sub created 0,0 10x10", "panel destroyed",
                               "sub destroyed"}));
    EXPECT_FALSE(field.IsCreated());

    // A view that is deleted without having been destroyed leaves nothing behind.
    mFrame = std::make_unique<TestPanelFrame>(QSize(400, 300));
    OpenPanel();
    sub.reset();
    mPanel.reset();
    EXPECT_EQ(mFrame->GetView(), nullptr);
    EXPECT_TRUE(mFrame->Window().findChildren<QWidget*>().isEmpty());
    mMain.RunUntilIdle();
}

TEST_F(ViewTest, AFailedCreationLeavesNothingInTheFrame) {
    mPanel->mWhenCreated = [] { throw std::runtime_error("no luck"); };
    EXPECT_THROW(OpenPanel(), std::runtime_error);
    EXPECT_FALSE(mPanel->IsCreated());
    EXPECT_EQ(mFrame->GetView(), nullptr);
}

TEST_F(ViewTest, AChangedTunableLaysEveryPanelOutAgainAtOnce) {
    OpenPanel();
    mEvents.clear();
    desk::SetDebugDatabaseEntries({{"SharedProjects.Controls.SideMargins", 40.0}});
    EXPECT_EQ(mEvents, (Events{"panel laid out 0,0 400x300"}));
    mPanel->Destroy();
    mEvents.clear();
    desk::SetDebugDatabaseEntries({});
    EXPECT_TRUE(mEvents.empty());
}

TEST_F(ViewTest, GoesOnDutyWhenTheFocusComesInAndNotWhenItMovesInside) {
    OpenPanel();
    QLineEdit first(&PanelWidget()), second(&PanelWidget()), outside(&mFrame->Window());
    for (QLineEdit* field : {&first, &second, &outside}) field->show();
    outside.setFocus();
    mFrame->Activate();
    mEvents.clear();
    first.setFocus();
    second.setFocus();
    EXPECT_EQ(mEvents, (Events{"panel on duty"}));
    EXPECT_EQ(desk::CommandRouter::Instance().GetViewOnDuty(), mPanel.get());
    // It stays on duty as the last one that had the focus, until it is destroyed.
    outside.setFocus();
    EXPECT_EQ(desk::CommandRouter::Instance().GetViewOnDuty(), mPanel.get());
    mPanel->BringToFront(true, false);
    EXPECT_TRUE(second.hasFocus());
    mPanel->Destroy();
    EXPECT_EQ(desk::CommandRouter::Instance().GetViewOnDuty(), nullptr);
}

class PaintedView : public host::TabView {
public:
    using TabView::TabView;

protected:
    void PaintSelf(host::DC& dc) override {
        dc.FillRect({0, 0, 100, 100}, {200, 0, 0}, 255);
        dc.FillRect({50, 0, 50, 100}, {0, 0, 200}, 128);
        throw std::runtime_error("painting failed");
    }
};

TEST_F(ViewTest, PaintsRectanglesWithTheirAlphaAndLogsWhatPaintingThrows) {
    const ExpectLogged log("painting failed");
    PaintedView view(nullptr);
    host::TabView::Create(&view, u"test.painted", u"", mFrame.get(), true);
    const QImage image = view.GetImpl().mWidget->grab().toImage();
    EXPECT_EQ(image.pixelColor(20, 20), QColor(200, 0, 0));
    EXPECT_NEAR(image.pixelColor(70, 20).red(), 100, 2);
    EXPECT_NEAR(image.pixelColor(70, 20).blue(), 100, 2);
    view.Destroy();
}

}  // namespace
