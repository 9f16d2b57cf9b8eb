#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMainWindow>

#include "desk/app/CopiesUnderWay.h"
#include "desk/app/ProgressPanel.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/project/CopyQueue.h"
#include "desk/project/Production.h"
#include "host/framework/Identifiers.h"
#include "host/project/ProductionItems.h"
#include "tests/desk/files/FollowedFolder.h"

using namespace std::chrono_literals;

namespace desk {
namespace {

using Operation = FaultyFileSystem::Operation;

class CopiesUnderWayTest : public FollowedFolder {
protected:
    CopiesUnderWayTest() {
        mFolder.MakeFolder("Production");
        UseFakeSource();
        Production::Instance().Open(mFolder.PathUTF16("Production"));
        RegisterProgressPanel();
        mWindow.setCentralWidget(mField);
        mWindow.show();
        mWindow.activateWindow();
        mField->setFocus();
        mMain.RunUntilIdle();
    }
    ~CopiesUnderWayTest() override { Production::Instance().Close(); }

    void Copy(const std::string& name) {
        mFolder.Write("Out/" + name, "12 bytes now");
        host::AddProjectsToZuProduction({mFolder.PathUTF16("Out/" + name)}, mFolder.PathUTF16("Production"));
    }
    void HoldCopies() { mDisk.CloseGate(Operation::CopyFile, mFolder.Path()); }
    void LetCopiesGo() {
        mDisk.OpenGate();
        mMain.RunUntilIdle();
        mMain.Advance(2s);
    }
    bool IsPanelOpen() { return mWorkspace.FindFirstTabViewOfType(host::kProgressHandlerID) != nullptr; }
    void ClosePanel() { mWorkspace.ClosePanel(host::kProgressHandlerID); }

    CopyQueue mQueue;
    QMainWindow mWindow;
    QLineEdit* mField = new QLineEdit;
    DockWorkspace mWorkspace{mWindow};
    CopiesUnderWay mCopies;
};

TEST_F(CopiesUnderWayTest, BringsUpTheProgressOfALongCopyAndAFailureButKeepsTheFocus) {
    Copy("Short.zuproj");
    LetCopiesGo();
    EXPECT_FALSE(IsPanelOpen()) << "what is done at once needs no panel";
    HoldCopies();
    Copy("Long.zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(CopiesUnderWay::kLong / 2);
    EXPECT_FALSE(IsPanelOpen());
    mMain.AdvanceAlone(CopiesUnderWay::kLong);
    EXPECT_TRUE(IsPanelOpen());
    EXPECT_TRUE(mField->hasFocus());
    ClosePanel();
    LetCopiesGo();
    EXPECT_FALSE(IsPanelOpen()) << "the user has closed it";
    const ExpectLogged refused("Permission denied"), told("was not copied");
    mDisk.Fail(Operation::CopyFile, 1, EACCES);
    Copy("Refused.zuproj");
    LetCopiesGo();
    EXPECT_TRUE(IsPanelOpen());
    EXPECT_TRUE(mField->hasFocus());
}

TEST_F(CopiesUnderWayTest, AreCancelledOnlyIfTheUserAgrees) {
    EXPECT_TRUE(CopiesUnderWay::MayBeCancelled()) << "nothing to ask";
    HoldCopies();
    Copy("Long.zuproj");
    ASSERT_TRUE(mDisk.WaitAtGate());
    mDialogs.ExpectQuestion("Projects Are Being Copied", u"Keep Copying");
    EXPECT_FALSE(CopiesUnderWay::MayBeCancelled());
    mDialogs.ExpectQuestion("Projects Are Being Copied", u"Cancel Copies");
    EXPECT_TRUE(CopiesUnderWay::MayBeCancelled());
    LetCopiesGo();
}

}  // namespace
}  // namespace desk
