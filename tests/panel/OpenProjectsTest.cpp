#include <QMainWindow>

#include "desk/framework/DockWorkspace.h"
#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

class OpenProjectsTest : public CommandsFixture {
protected:
    OpenProjectsTest() {
        for (const char* name : {"A", "B", "Reels/C", "Reels/Day 1/D"}) MakeProject(name, "text");
    }
    void OpenAll() {
        OpenProduction();
        for (const char* name : {"A", "B", "Reels/C", "Reels/Day 1/D"}) OpenDocument(name);
    }
    using Names = std::vector<std::string>;
};

TEST_F(OpenProjectsTest, WithoutPromptChangesAreSavedFirstOrNothingIsClosed) {
    OpenAll();
    Edit("A", u"changed");
    Edit("B", u"changed too");
    mDisk.Deny(mFolder.Path(OnDisk("B.zuproj")), EROFS);
    ExpectLogged refused("Read-only file system");
    mDialogs.ExpectMessage("The Project Was Not Saved");
    EXPECT_FALSE(Utils::CloseOpenProjectsInList(PathsOf({"A.zuproj", "B.zuproj"}), true, true));
    EXPECT_TRUE(IsOpen("A") && IsOpen("B"));
    EXPECT_EQ(Bytes("A"), "changed");
    mDisk.Allow(mFolder.Path(OnDisk("B.zuproj")));
    EXPECT_TRUE(Utils::CloseOpenProjectsInList(PathsOf({"A.zuproj", "B.zuproj"}), true, true));
    EXPECT_EQ(Bytes("B"), "changed too");
}

TEST_F(OpenProjectsTest, AddedProjectsAreCopiesOnceTheUserAgrees) {
    OpenProduction();
    mFolder.Write("Outside/X.zuproj", "x");
    const UTF16String outside = mFolder.PathUTF16("Outside/X.zuproj");
    Utils::AddProjectsToZuProductionWithPrompt({}, PathOf("Reels"));
    mDialogs.ExpectMessage("Already in Production Folder");
    Utils::AddProjectsToZuProductionWithPrompt({ProjectPath("A")}, PathOf("Reels"));
    EXPECT_EQ(mDialogs.LastText(), "The selected project is already part of this production.");
    mDialogs.ExpectMessage("Already in Production Folder");
    Utils::AddProjectsToZuProductionWithPrompt({ProjectPath("A"), outside}, PathOf("Reels"));
    EXPECT_EQ(mDialogs.LastText(), "The selected projects are already part of this production.");
    QMainWindow window;
    const desk::DockWorkspace workspace(window);
    const ExpectLogged noProgress("There is no panel");
    MakeProject("Reels/X");
    mFolder.Write("Outside/Y.zuproj", "y");
    for (const char16_t* answer : {u"Cancel", u"Copy"}) {
        EXPECT_TRUE(Shows({"A", "B", "Reels"}));
        Select({"Reels"});
        mDialogs.ExpectFiles("Add Project", {outside, mFolder.PathUTF16("Outside/Y.zuproj")});
        mDialogs.ExpectQuestion("Add Projects to Production", answer);
        Send(kAddProject);
    }
    EXPECT_TRUE(Shows([&] { return SelectedNames() == Names{"X_1", "Y"}; })) << "the copies are selected";
}

TEST_F(OpenProjectsTest, RowsAndButtonsFollowOpenProjects) {
    OpenProduction();
    std::filesystem::create_directory_symlink(mFolder.Path(mProduction), mFolder.Path("link"));
    EXPECT_EQ(Says("A"), "A");
    EXPECT_TRUE(mDocuments.OpenProject(mFolder.PathUTF16("link/A.zuproj")));
    Settle();
    EXPECT_EQ(Says("A"), "A, open, locked by ines");
    Edit("A", u"changed");
    EXPECT_EQ(Says("A"), "A, open, unsaved changes, locked by ines");
    Send(kSaveAll);
    Select({"A"});
    EXPECT_EQ(StatusOf(kToggleLock).mText, u"Read-Only Mode");
    Send(kToggleLock);
    EXPECT_EQ(Says("A"), "A, open, read-only");
    EXPECT_EQ(StatusOf(kToggleLock).mText, u"Read-Write Mode");
    EXPECT_FALSE(IsEnabled(kRefresh));
    // Somebody else writes it.
    OtherUserLocks("A");
    MakeProject("A", "newer text");
    EXPECT_TRUE(Shows([&] { return IsEnabled(kRefresh); }));
    EXPECT_TRUE(Shows([&] { return Says("A") == "A, open, read-only, out of date, locked by edit-bay-2"; }));
    EXPECT_FALSE(IsEnabled(kToggleLock)) << "somebody else is at it";
    EXPECT_TRUE(IsEnabled(kRefreshAll));
    Send(kRefresh);
    EXPECT_FALSE(IsEnabled(kRefresh) || IsEnabled(kRefreshAll));
    Send(kClose);
    EXPECT_EQ(Says("A"), "A, locked by edit-bay-2");
}

}  // namespace HandlerSharedProjects
