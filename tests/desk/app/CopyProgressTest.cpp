#include <QtWidgets>

#include "desk/app/CopiesUnderWay.h"
#include "desk/app/ProgressPanel.h"
#include "desk/app/ProgressRow.h"
#include "desk/app/ProgressTexts.h"
#include "desk/core/work/TimeLeft.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/project/production/Production.h"
#include "host/framework/Identifiers.h"
#include "host/project/ProductionItems.h"
#include "tests/desk/files/FollowedFolder.h"

using namespace std::chrono_literals;

namespace desk {
namespace {

using Texts = std::vector<std::string>;

/// A window with a text field that has the focus, and the progress panel that comes up in it.
class CopyProgressTest : public FollowedFolder {
protected:
    CopyProgressTest() {
        mFolder.MakeFolder("Production/Day 1");
        UseFakeSource();
        Production::Instance().Open(mFolder.PathUTF16("Production"));
        RegisterProgressPanel();
        mWindow.setCentralWidget(mField);
        mWindow.resize(700, 900);
        mWorkspace.OpenPanels({});
        mWindow.show();
        mWindow.activateWindow();
        mField->setFocus();
        mMain.RunUntilIdle();
    }
    ~CopyProgressTest() override { Production::Instance().Close(); }

    void Copy(const std::string& name) {
        mFolder.Write("Out/" + name, "12 bytes now");
        host::AddProjectsToZuProduction({mFolder.PathUTF16("Out/" + name)},
                                        mFolder.PathUTF16("Production/Day 1"));
    }
    void HoldCopies() { mDisk.CloseGate(Operation::CopyFile, mFolder.Path()); }
    void FailNextCopy() { mDisk.Fail(Operation::CopyFile, 1, EACCES); }
    void LetCopiesGo() {
        mDisk.OpenGate();
        mMain.RunUntilIdle();
        mMain.Advance(2s);
    }
    bool IsPanelOpen() { return mWorkspace.FindFirstTabViewOfType(host::kProgressHandlerID) != nullptr; }
    void OpenPanel() { mWorkspace.OpenTab(host::UTF16to8(host::kProgressHandlerID)); }
    void ClosePanel() { mWorkspace.ClosePanel(host::kProgressHandlerID); }
    bool IsPanelRemembered() const {
        return !mWorkspace.SaveLayout().value(QLatin1String("openPanels")).toArray().isEmpty();
    }
    QDockWidget& Panel() { return *mWorkspace.FindFrame(host::kProgressHandlerID); }

    /// What stands in the rows, from the top.
    Texts Rows() {
        std::map<int, std::string> rows;
        for (const QWidget* widget : Panel().findChildren<QWidget*>()) {
            const auto* row = dynamic_cast<const ProgressRow*>(widget);
            if (!row || row->isHidden()) continue;
            QStringList texts;
            for (const QLabel* label : row->findChildren<QLabel*>()) texts << label->text();
            rows[row->y()] = texts.join(QStringLiteral(" | ")).toStdString();
        }
        Texts texts;
        for (const auto& [place, text] : rows) texts.push_back(text);
        return texts;
    }
    QPushButton& Button(const char* name) {
        for (QPushButton* button : Panel().findChildren<QPushButton*>())
            if (button->text() == QLatin1String(name) || button->accessibleName() == QLatin1String(name))
                return *button;
        throw std::logic_error(name);
    }
    bool HasNote(const char* text) {
        for (const QLabel* label : Panel().findChildren<QLabel*>())
            if (label->text() == QLatin1String(text)) return !label->isHidden();
        return false;
    }

    CopyQueue mQueue;
    QMainWindow mWindow;
    QLineEdit* mField = new QLineEdit;
    DockWorkspace mWorkspace{mWindow};
    CopiesUnderWay mCopies;
};

TEST_F(CopyProgressTest, ThePanelComesUpForALongCopyAndAFailureButLeavesTheFocus) {
    Copy("Short.zuproj");
    LetCopiesGo();
    EXPECT_FALSE(IsPanelOpen()) << "what is done at once needs no panel";
    HoldCopies();
    Copy("Long.zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(CopiesUnderWay::kLong / 2);
    EXPECT_FALSE(IsPanelOpen());
    mMain.AdvanceAlone(CopiesUnderWay::kLong);
    EXPECT_TRUE(IsPanelOpen() && mField->hasFocus());
    EXPECT_EQ(mWindow.dockWidgetArea(&Panel()), Qt::BottomDockWidgetArea);
    ClosePanel();
    LetCopiesGo();
    EXPECT_FALSE(IsPanelOpen()) << "the user has closed it";
    HoldCopies();
    Copy("Another.zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(CopiesUnderWay::kLong);
    EXPECT_TRUE(IsPanelOpen());
    LetCopiesGo();
    EXPECT_FALSE(IsPanelOpen()) << "the program opened it, and nothing is left to see";
    const ExpectLogged refused("Permission denied"), told("was not copied");
    FailNextCopy();
    Copy("Refused.zuproj");
    LetCopiesGo();
    EXPECT_TRUE(IsPanelOpen() && mField->hasFocus());
    EXPECT_FALSE(IsPanelRemembered()) << "the user did not open it";
    ClosePanel();
    OpenPanel();
    EXPECT_TRUE(IsPanelRemembered());
}

TEST_F(CopyProgressTest, ShowsEachJobUntilItIsCleared) {
    OpenPanel();
    EXPECT_TRUE(HasNote("Nothing is being copied.") && !Button("Cancel All").isEnabled());
    HoldCopies();
    for (const char* name : {"A.zuproj", "B.zuproj", "<b>C\n.zuproj"}) Copy(name);
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(1s);
    EXPECT_FALSE(HasNote("Nothing is being copied."));
    EXPECT_EQ(Rows(),
              (Texts{"A.zuproj | Production/Day 1 | 0 bytes of 12 bytes",
                     "B.zuproj | Production/Day 1 | Waiting", "<b>C\\n.zuproj | Production/Day 1 | Waiting"}));
    Button("Cancel copying B.zuproj").click();
    {
        const ExpectLogged log("Permission denied");
        FailNextCopy();
        LetCopiesGo();
    }
    Texts rows = Rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].starts_with("<b>C\\n.zuproj | Production/Day 1 | Not copied: Permission denied"))
        << rows[0];
    EXPECT_EQ(rows[1], "B.zuproj | Production/Day 1 | Cancelled") << "the newest of what is finished";
    EXPECT_EQ(rows[2], "A.zuproj | Production/Day 1 | Copied, 12 bytes");
    Button("Clear Finished").click();
    LetCopiesGo();
    EXPECT_TRUE(Rows().empty() && HasNote("Nothing is being copied."));
}

TEST_F(CopyProgressTest, OfVeryManyItShowsTheFirstAndCancelsAllIfTheUserAgrees) {
    EXPECT_TRUE(CopiesUnderWay::MayBeCancelled()) << "nothing to ask";
    OpenPanel();
    HoldCopies();
    for (int i = 0; i < 251; ++i) Copy("R" + std::to_string(i) + ".zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(1s);
    EXPECT_EQ(Rows().size(), 101u);
    EXPECT_TRUE(HasNote("and 150 more"));
    mDialogs.ExpectQuestion("Projects Are Being Copied", u"Keep Copying");
    EXPECT_FALSE(CopiesUnderWay::MayBeCancelled());
    mDialogs.ExpectQuestion("Projects Are Being Copied", u"Cancel Copies");
    EXPECT_TRUE(CopiesUnderWay::MayBeCancelled());
    Button("Cancel All").click();
    LetCopiesGo();
    EXPECT_FALSE(mQueue.IsBusy());
}

TEST(ProgressTexts, TimeIsToldInStepsAndOnlyWhileThePaceIsSteady) {
    const std::pair<std::chrono::seconds, const char*> texts[] = {{0s, "about 1 s left"},
                                                                  {12s, "about 15 s left"},
                                                                  {61s, "about 2 min left"},
                                                                  {80min, "about 1 h 20 min left"}};
    for (const auto& [left, text] : texts) EXPECT_EQ(DescribeTimeLeft(left).toStdString(), text);

    TimeLeft timeLeft;
    const auto note = [&](std::chrono::milliseconds at, unsigned bytes) {
        timeLeft.Note(TimeLeft::Time{1h} + at, bytes);
    };
    for (unsigned i = 0; i <= 10; ++i) {
        note(i * 500ms, i * 50);
        EXPECT_EQ(timeLeft.Estimate(1000).has_value(), i > 5) << "not too early";
    }
    EXPECT_EQ(timeLeft.Estimate(1000), 5s);
    note(7s, 500);
    EXPECT_EQ(timeLeft.Estimate(1000), 3s) << "counts down between steps";
    note(9s, 500);
    EXPECT_FALSE(timeLeft.Estimate(1000)) << "it stands still";
    note(30s, 550);
    EXPECT_FALSE(timeLeft.Estimate(1000)) << "its pace has changed";
}

}  // namespace
}  // namespace desk
