#include "host/framework/DC.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

using ViewTest = FrameworkFixture;

TEST_F(ViewTest, SurvivesEveryOrderOfDestruction) {
    // The window goes before the view: the view still gets its DestroySelf.
    auto sub = std::make_unique<NotingSubView>("sub", mEvents, mPanel.get());
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

TEST_F(ViewTest, AFailedCreationLeavesNothingInTheFrameAndWhatPaintingThrowsIsLogged) {
    mPanel->mWhenCreated = [] { throw std::runtime_error("no luck"); };
    EXPECT_THROW(OpenPanel(), std::runtime_error);
    EXPECT_EQ(mFrame->GetView(), nullptr);

    struct PaintedView : host::TabView {
        PaintedView() : TabView(nullptr) {}
        void PaintSelf(host::DC& dc) override {
            dc.FillRect({0, 0, 100, 100}, {200, 0, 0}, 255);
            throw std::runtime_error("painting failed");
        }
    } view;
    const ExpectLogged log("painting failed");
    host::TabView::Create(&view, u"test.painted", u"", mFrame.get(), true);
    EXPECT_EQ(view.GetImpl().mWidget->grab().toImage().pixelColor(20, 20), QColor(200, 0, 0));
    view.Destroy();
}

}  // namespace
