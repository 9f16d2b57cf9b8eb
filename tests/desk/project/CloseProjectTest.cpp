
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace {

class CloseProjectTest : public ProjectDocumentsFixture {
protected:
    static constexpr const char* kProjects[] = {"Day 1/a.zuproj", "Day 1/b.zuproj", "Day 2/c.zuproj"};

    /// Opens three projects and edits them.
    void OpenThree() {
        for (const char* project : kProjects) {
            mFolder.Write(project, "old");
            Edit(OpenAndFind(project), u"new");
        }
    }
    /// What stands in the three files.
    std::string Contents() {
        std::string contents;
        for (const char* project : kProjects) contents += mFolder.Read(project) + ' ';
        return contents;
    }
};

}  // namespace

TEST_F(CloseProjectTest, ASaveThatFailsKeepsTheProjectOpenAndACopyWillDo) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    Edit(document, u"new");
    mDisk.Fail(Operation::Rename, 1, ENOSPC);
    mDialogs.ExpectQuestion("Save Changes", u"Save");
    mDialogs.ExpectMessage("The Project Was Not Saved");
    EXPECT_FALSE(Manager().CloseProject(document, true));
    EXPECT_TRUE(AsksFor("There is no room left")) << mDialogs.LastText();
    EXPECT_TRUE(document->IsDirty());
    EXPECT_EQ(mFolder.Read(kProject), kBytes);

    WriteForeignLock();
    mDialogs.ExpectQuestion("Save Changes", u"Save");
    mDialogs.ExpectQuestion("Lock Lost", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("mine.zuproj"));
    EXPECT_TRUE(Manager().CloseProject(document, true));
    EXPECT_EQ(host::OpenProjectCount(), 0) << "the copy is not opened: the user wants to leave";
    EXPECT_EQ(mFolder.Read("mine.zuproj"), "new");
}

TEST_F(CloseProjectTest, OneAnswerCanStandForAllUntilTheLastScopeEndsAndCancelNever) {
    OpenThree();
    mDialogs.ExpectQuestion("Save Changes", u"Save");
    mDialogs.ExpectQuestion("Save Changes", u"Cancel", true);
    EXPECT_FALSE(Manager().CloseAllProjects());
    EXPECT_TRUE(mDialogs.LastOfferedApplyToAll());
    EXPECT_EQ(Contents(), "new old old ");
    EXPECT_EQ(host::OpenProjectCount(), 3) << "what was asked about before the cancel stays open too";
    EXPECT_FALSE(Find(kProjects[0])->IsDirty() || Find(kProjects[0])->IsReadOnly());
    EXPECT_EQ(host::GetActiveProject(), Find(kProjects[1])) << "the one that is asked about is in front";
    mDialogs.ExpectQuestion("Save Changes", u"Save", true);
    EXPECT_TRUE(Manager().CloseAllProjects());
    EXPECT_EQ(Contents(), "new new new ");

    OpenThree();
    {
        const host::ScEnableSaveApplyToAllOption outer;
        {
            const host::ScEnableSaveApplyToAllOption inner;
            mDialogs.ExpectQuestion("Save Changes", u"Discard", true);
            EXPECT_TRUE(Manager().CloseProject(Find(kProjects[0]), true));
        }
        EXPECT_TRUE(Manager().CloseProject(Find(kProjects[1]), true));
    }
    mDialogs.ExpectQuestion("Save Changes", u"Save", true);
    EXPECT_TRUE(Manager().CloseProject(Find(kProjects[2]), true));
    EXPECT_FALSE(mDialogs.LastOfferedApplyToAll());
    EXPECT_EQ(Contents(), "old old new ");
}

TEST_F(CloseProjectTest, AProductionsProjectsAreThoseInItsFolder) {
    OpenThree();
    mDialogs.ExpectQuestion("Save Changes", u"Discard");
    mDialogs.ExpectQuestion("Save Changes", u"Cancel");
    EXPECT_FALSE(Manager().CloseProjectsIn(mFolder.PathUTF16("Day 1/")));
    EXPECT_EQ(Find(kProjects[0])->GetCurrentText(), u"new");
    EXPECT_TRUE(Find(kProjects[0])->IsDirty()) << "its changes were not discarded, since it was not closed";
    mDialogs.ExpectQuestion("Save Changes", u"Discard", true);
    EXPECT_TRUE(Manager().CloseProjectsIn(mFolder.PathUTF16("Day 1")));
    EXPECT_TRUE(Manager().CloseProjectsIn(mFolder.PathUTF16("Day")));
    EXPECT_EQ(host::OpenProjectCount(), 1);
    EXPECT_TRUE(Find(kProjects[2]));
}

TEST_F(CloseProjectTest, AVolumeThatHangsHoldsTheWindowUpOnceForAllProjects) {
    OpenThree();
    mDisk.CloseGate(Operation::RemoveFile, mFolder.Path());
    std::thread volume([this] {
        EXPECT_TRUE(mDisk.WaitAtGate(3));
        mDisk.OpenGate();
    });
    mDialogs.ExpectQuestion("Save Changes", u"Discard", true);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(Manager().CloseAllProjects());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3))
        << "two each, one after another";
    volume.join();
}

TEST_F(CloseProjectTest, WhatHasChangedWhileOthersWereAskedAboutIsAskedAboutAgain) {
    OpenThree();
    mFolder.Write(kProject, "old");
    int asked = 0;
    mDialogs.mMeanwhile = [&] {
        if (++asked != 3) return;
        Edit(Find(kProjects[0]), u"newer");
        Edit(Find(kProjects[1]), u"newer");
        EXPECT_FALSE(Manager().CloseProject(Find(kProjects[0]), false)) << "it waits to be closed with all";
        Edit(OpenAndFind(), u"new");
    };
    for (const char16_t* answer : {u"Save", u"Discard", u"Save", u"Save", u"Discard", u"Save"})
        mDialogs.ExpectQuestion("Save Changes", answer);
    EXPECT_TRUE(Manager().CloseAllProjects());
    EXPECT_EQ(Contents() + mFolder.Read(kProject), "newer old new new");
    EXPECT_EQ(host::OpenProjectCount(), 0);
}

TEST_F(CloseProjectTest, WhatHappensDuringAQuestionFindsTheProjectBusy) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    Edit(document, u"new");
    mDialogs.mMeanwhile = [&] {
        EXPECT_FALSE(Manager().CloseProject(document, false));
        EXPECT_FALSE(Manager().CloseAllProjects());
        EXPECT_FALSE(Save(document));
        EXPECT_FALSE(Manager().ReloadProject(document));
        EXPECT_FALSE(Manager().SetProjectReadOnly(document, true));
        EXPECT_TRUE(Open());
    };
    EXPECT_TRUE(Close(document, u"Discard"));
    EXPECT_EQ(mFolder.Read(kProject), kBytes);

    WriteForeignLock();
    mDialogs.mMeanwhile = [&] { EXPECT_FALSE(Open()); };
    EXPECT_TRUE(Open(u"Open Read-Only"));
    EXPECT_EQ(host::OpenProjectCount(), 1);
}
