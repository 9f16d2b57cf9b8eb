#include <gtest/gtest.h>

#include <QTest>

#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeAccess.h"
#include "desk/toolkit/WidgetContainer.h"
#include "host/core/Localizer.h"
#include "host/toolkit/UI_Slider.h"
#include "host/toolkit/UI_StaticImage.h"
#include "host/toolkit/UI_StaticText.h"
#include "tests/support/ManualMainThread.h"

namespace {

using host::RefPtr;

TEST(NodesTest, SliderTellsOfTheUsersChangesOnly) {
    ManualMainThread mainThread;
    QWidget window;
    window.resize(300, 200);
    window.show();
    const RefPtr<host::UI_Container> container = desk::CreateWidgetContainer(window);
    RefPtr<host::UI_Slider> slider(new host::UI_Slider(host::UI_Direction::Horizontal, true));
    std::vector<double> changing, changed;
    const auto note = [&slider](std::vector<double>& values) {
        return std::make_shared<std::function<void(const host::UI_ChangeMessage&)>>(
            [&](const host::UI_ChangeMessage&) { values.push_back(slider->GetValue()); });
    };
    slider->NotifyWhenChangedInteractively(note(changing));
    slider->NotifyWhenChanged(note(changed));
    slider->SetThumbSize(10, 14);
    container->AddChild(slider);
    slider->UI_SetBounds({0, 0, 110, 20});
    slider->SetValue(7);
    EXPECT_EQ(slider->GetValue(), 1);
    EXPECT_TRUE(changing.empty() && changed.empty());

    QWidget* widget = desk::GetNodeWidget(*slider);
    QTest::mousePress(widget, Qt::LeftButton, {}, {55, 10});
    EXPECT_NEAR(slider->GetValue(), 0.5, 0.011) << "jumps to the click";
    QTest::mouseMove(widget, {105, 10});
    EXPECT_EQ(changing.size(), 2u);
    EXPECT_TRUE(changed.empty()) << "the button is still down";
    QTest::mouseRelease(widget, Qt::LeftButton, {}, {105, 10});
    EXPECT_EQ(changed, std::vector<double>{1});
    QTest::keyClick(widget, Qt::Key_Left);
    EXPECT_EQ(changed.size(), 2u);
    EXPECT_LT(slider->GetValue(), 1);
}

TEST(DisplayTextTest, EscapesWhatWouldChangeTheLineAndNothingElse) {
    EXPECT_EQ(desk::ToDisplayText(u"Reel 1 \u00e4\u05d0\u200d\U0001F3AC"),
              QString::fromUtf16(u"Reel 1 \u00e4\u05d0\u200d\U0001F3AC"));
    EXPECT_EQ(desk::ToDisplayText(u"a\nb\tc\r\u001b"), "a\\nb\\tc\\r\\u001B");
    const host::UTF16String name = u"\u0645\u0634\u0647\u062F";
    const host::UTF16String told = host::ZString("$$$/Test/Name=Is “@0” (@1) here?", {name, u"Reel"});
    EXPECT_EQ(told, u"Is “\u2068" + name + u"\u2069” (Reel) here?");
    EXPECT_EQ(desk::ToDisplayText(told), desk::ToQString(told)) << "the isolate stays";
    EXPECT_EQ(desk::ToDisplayText(u"\u2068x\u2069"), "\\u2068x\\u2069");
    EXPECT_EQ(desk::ToDisplayText(u"x\u202Egpj\u2066\u2029"), "x\\u202Egpj\\u2066\\u2029");
    EXPECT_EQ(desk::ToDisplayText(std::u16string{u'a', 0xDCE9, 0xD800, u'b'}), "a\\xE9\\uD800b");
    EXPECT_EQ(desk::ToDisplayText(u" \u00a0"), "\\u0020\\u00A0") << "a project named \" .zuproj\" has a name";
}

TEST(ThemeTest, EveryPictureOfTheHostIsThere) {
    for (const char* name :
         {host::kZuProductionPanelProjectClosedNoLockDecal, host::kZuProductionPanelProjectClosedLockedDecal,
          host::kZuProductionPanelProjectOpenNoLockDecal, host::kZuProductionPanelProjectOpenLockedDecal,
          host::kZuProductionPanelProjectOpenEditableDecal, host::kHistoryActionDeleteDecal,
          host::kZuProductionPanelNewProjectButtonDecal, host::kProjectNewFolderNormalDecal,
          host::kProjectDeleteNormalDecal, "folder"}) {
        EXPECT_TRUE(host::Bitmap::GetBitmap(name, nullptr).IsValid()) << name;
        EXPECT_EQ(desk::Theme::Picture(name, 17, 1.5).size(), QSize(26, 26)) << name;
    }
    EXPECT_FALSE(host::Bitmap::GetBitmap("no such picture", nullptr).IsValid());
}

}  // namespace
