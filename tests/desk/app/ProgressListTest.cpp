#include <gtest/gtest.h>

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>

#include "desk/app/ProgressList.h"
#include "desk/app/ProgressPanel.h"
#include "desk/app/ProgressRow.h"
#include "desk/app/ProgressTexts.h"
#include "desk/core/TimeLeft.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/project/Production.h"
#include "host/framework/Identifiers.h"
#include "host/project/ProductionItems.h"
#include "tests/desk/files/FollowedFolder.h"

using namespace std::chrono_literals;

namespace desk {
namespace {

class ProgressListTest : public FollowedFolder {
protected:
    ProgressListTest() {
        mFolder.MakeFolder("Production/Day 1");
        UseFakeSource();
        Production::Instance().Open(mFolder.PathUTF16("Production"));
    }
    ~ProgressListTest() override { Production::Instance().Close(); }

    void Add(const std::string& name) {
        mFolder.Write("Out/" + name, "12 bytes now");
        host::AddProjectsToZuProduction({mFolder.PathUTF16("Out/" + name)},
                                        mFolder.PathUTF16("Production/Day 1"));
    }
    void Settle() {
        mMain.RunUntilIdle();
        mMain.Advance(1s);
    }
    /// What stands in the rows, from the top.
    std::vector<std::string> Rows() const {
        std::map<int, std::string> rows;
        for (const QWidget* widget : mList.findChildren<QWidget*>()) {
            const auto* row = dynamic_cast<const ProgressRow*>(widget);
            if (!row || row->isHidden()) continue;
            QStringList texts;
            for (const QLabel* label : row->findChildren<QLabel*>()) texts << label->text();
            rows[row->y()] = texts.join(QStringLiteral(" | ")).toStdString();
        }
        std::vector<std::string> texts;
        for (const auto& [place, text] : rows) texts.push_back(text);
        return texts;
    }
    QPushButton* Button(const QString& name) const {
        for (QPushButton* button : mList.findChildren<QPushButton*>())
            if (button->text() == name || button->accessibleName() == name) return button;
        return nullptr;
    }
    bool HasNote(const QString& text) const {
        for (const QLabel* label : mList.findChildren<QLabel*>())
            if (label->text() == text) return !label->isHidden();
        return false;
    }

    CopyQueue mQueue;
    ProgressList mList{nullptr};
};

}  // namespace

TEST_F(ProgressListTest, ShowsEachJobUntilItIsCleared) {
    mList.resize(500, 400);
    mList.show();
    EXPECT_TRUE(HasNote(QStringLiteral("Nothing is being copied.")));
    EXPECT_FALSE(Button(QStringLiteral("Cancel All"))->isEnabled());
    mDisk.CloseGate(Operation::CopyFile, mFolder.Path());
    for (const char* name : {"A.zuproj", "B.zuproj", "<b>C\n.zuproj"}) Add(name);
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(1s);
    EXPECT_FALSE(HasNote(QStringLiteral("Nothing is being copied.")));
    EXPECT_EQ(Rows(), (std::vector<std::string>{"A.zuproj | Production/Day 1 | 0 bytes of 12 bytes",
                                                "B.zuproj | Production/Day 1 | Waiting",
                                                "<b>C\\n.zuproj | Production/Day 1 | Waiting"}));
    Button(QStringLiteral("Cancel copying B.zuproj"))->click();
    {
        const ExpectLogged log("Permission denied");
        mDisk.Fail(Operation::CopyFile, 1, EACCES);
        mDisk.OpenGate();
        Settle();
    }
    const auto rows = Rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].starts_with("<b>C\\n.zuproj | Production/Day 1 | Not copied: Permission denied"))
        << rows[0];
    EXPECT_EQ(rows[1], "B.zuproj | Production/Day 1 | Cancelled") << "the newest of what is finished";
    EXPECT_EQ(rows[2], "A.zuproj | Production/Day 1 | Copied, 12 bytes");
    EXPECT_FALSE(Button(QStringLiteral("Cancel All"))->isEnabled());
    Button(QStringLiteral("Clear Finished"))->click();
    Settle();
    EXPECT_TRUE(Rows().empty());
    EXPECT_TRUE(HasNote(QStringLiteral("Nothing is being copied.")));
}

TEST_F(ProgressListTest, OfVeryManyItShowsTheFirst) {
    mList.resize(500, 10'000);
    mList.show();
    mDisk.CloseGate(Operation::CopyFile, mFolder.Path());
    for (int i = 0; i < 251; ++i) Add("R" + std::to_string(i) + ".zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(1s);
    EXPECT_EQ(Rows().size(), 101u);
    EXPECT_TRUE(HasNote(QStringLiteral("and 150 more")));
    Button(QStringLiteral("Cancel All"))->click();
    mDisk.OpenGate();
    Settle();
    EXPECT_FALSE(mQueue.IsBusy());
}

TEST_F(ProgressListTest, ThePanelIsClosedUntilItIsWantedAndOpensBelow) {
    RegisterProgressPanel();
    QMainWindow window;
    window.setCentralWidget(new QLabel);
    DockWorkspace workspace(window);
    workspace.OpenPanels({});
    window.show();
    mMain.RunUntilIdle();
    EXPECT_EQ(workspace.FindFirstTabViewOfType(host::kProgressHandlerID), nullptr);
    const auto isRemembered = [&workspace] {
        return !workspace.SaveLayout().value(QLatin1String("openPanels")).toArray().isEmpty();
    };
    EXPECT_NE(workspace.CreateOrReanimateTabView(host::kProgressHandlerID, {}), nullptr);
    EXPECT_FALSE(isRemembered()) << "the user did not open it";
    workspace.ClosePanel(host::kProgressHandlerID);
    workspace.TogglePanel(host::kProgressHandlerID);
    mMain.RunUntilIdle();
    EXPECT_TRUE(isRemembered());
    const DockWorkspaceFrame* frame = workspace.FindFrame(host::kProgressHandlerID);
    ASSERT_TRUE(frame && frame->IsInFront());
    EXPECT_EQ(window.dockWidgetArea(workspace.FindFrame(host::kProgressHandlerID)), Qt::BottomDockWidgetArea);
}

TEST(ProgressTexts, TimeIsToldInStepsAndOnlyWhileThePaceIsSteady) {
    EXPECT_EQ(DescribeTimeLeft(0s), QStringLiteral("about 1 s left"));
    EXPECT_EQ(DescribeTimeLeft(12s), QStringLiteral("about 15 s left"));
    EXPECT_EQ(DescribeTimeLeft(61s), QStringLiteral("about 2 min left"));
    EXPECT_EQ(DescribeTimeLeft(80min), QStringLiteral("about 1 h 20 min left"));

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

}  // namespace desk
