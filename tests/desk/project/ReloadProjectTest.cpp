#include "host/files/DirectoryChangeMonitor.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

using namespace std::chrono_literals;

namespace {

class ReloadProjectTest : public ProjectDocumentsFixture {
protected:
    void TellChange(std::string_view folder) {
        host::BroadcastMessage(host::kStation_DirectoryChanges,
                               host::DirectoryChangedMessage(mFolder.PathUTF16(folder)));
        mMain.RunUntilIdle();
    }
};

}  // namespace

TEST_F(ReloadProjectTest, TakesWhatStandsInTheFile) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    mFolder.Write(kProject, "theirs");
    EXPECT_TRUE(Manager().ReloadProject(document));
    EXPECT_EQ(document->GetEditorText(), u"theirs");

    Edit(document, u"mine");
    mFolder.Write(kProject, std::string("\0", 1));
    mDialogs.ExpectQuestion("Reload Project", u"Cancel");
    EXPECT_FALSE(Manager().ReloadProject(document));
    EXPECT_TRUE(document->IsDirty());
    mDisk.Fail(Operation::Status, 1, EIO);
    mDialogs.ExpectQuestion("Reload Project", u"Discard and Reload");
    mDialogs.ExpectMessage("The Project Was Not Reloaded");
    EXPECT_FALSE(Manager().ReloadProject(document));
    EXPECT_TRUE(document->IsDirty()) << "a reload that failed loses nothing";
    mDialogs.ExpectQuestion("Reload Project", u"Discard and Reload");
    EXPECT_TRUE(Manager().ReloadProject(document));
    EXPECT_FALSE(document->IsDirty() || document->IsEditable());
    EXPECT_TRUE(mFolder.Exists(kLock)) << "it stays ours";
}

TEST_F(ReloadProjectTest, SwitchingToReadOnlyGivesTheLockUpAfterTheQuestion) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, false)) << "it is";
    Edit(document, u"mine");
    EXPECT_FALSE(SetReadOnly(document, u"Cancel"));
    EXPECT_TRUE(mFolder.Exists(kLock));
    EXPECT_TRUE(SetReadOnly(document, u"Discard"));
    EXPECT_FALSE(mFolder.Exists(kLock) || document->IsDirty());
    EXPECT_TRUE(document->IsReadOnly());
    EXPECT_EQ(mFolder.Read(kProject), kBytes);

    EXPECT_TRUE(Manager().SetProjectReadOnly(document, false));
    EXPECT_TRUE(mFolder.Exists(kLock));
    Edit(document, u"mine");
    EXPECT_TRUE(SetReadOnly(document, u"Save"));
    EXPECT_EQ(mFolder.Read(kProject), "mine");
}

TEST_F(ReloadProjectTest, SwitchingToReadWriteNeedsTheLockAndTheFileAsItWasRead) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, true));
    const struct {
        const char* mReason;
        std::function<void()> mCause;
        std::function<void()> mEnd;
    } cases[] = {{"tomas on edit-bay-2, since", [&] { WriteForeignLock(); }, [&] { mFolder.Remove(kLock); }},
                 {"No space left", [&] { mDisk.Fail(Operation::CreateNewFile, 1, ENOSPC); }, [] {}},
                 {"Stale file handle", [&] { mDisk.Fail(Operation::Status, 1, ESTALE); }, [] {}},
                 {"no longer there", [&] { mFolder.Rename(kProject, "away"); },
                  [&] { mFolder.Rename("away", kProject); }},
                 {"Reload it first", [&] { mFolder.Write(kProject, "theirs"); }, [] {}}};
    for (const auto& c : cases) {
        c.mCause();
        mDialogs.ExpectMessage("The Project Stays Read-Only");
        EXPECT_FALSE(Manager().SetProjectReadOnly(document, false)) << c.mReason;
        EXPECT_TRUE(AsksFor(c.mReason)) << mDialogs.LastText();
        EXPECT_TRUE(document->IsReadOnly());
        EXPECT_EQ(CountHidden(), 0) << c.mReason;
        c.mEnd();
    }
    EXPECT_TRUE(document->IsOutOfDate());
    EXPECT_TRUE(Manager().ReloadProject(document));
    EXPECT_FALSE(document->IsOutOfDate());
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, false));
    EXPECT_TRUE(mFolder.Exists(kLock));
}

TEST_F(ReloadProjectTest, AFileThatChangesIsNoticedWithinSecondsAndNeverOnTheUIThread) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    const auto time = std::filesystem::last_write_time(mFolder.Path(kProject));
    mDisk.ResetCounts();
    mFolder.Write(kProject, "theirs");
    mMain.Advance(4s);
    EXPECT_TRUE(document->IsOutOfDate() && host::Utilities::IsProjectOutOfDate(document));
    mFolder.Write(kProject, kBytes);
    std::filesystem::last_write_time(mFolder.Path(kProject), time + 1h);
    mMain.Advance(4s);
    EXPECT_FALSE(document->IsOutOfDate()) << "the same bytes again";
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, true)) << "so that only the file is looked at";
    const int readings = mDisk.Count(Operation::ReadSmallFile);
    mMain.Advance(10s);
    EXPECT_EQ(mDisk.Count(Operation::ReadSmallFile), readings) << "whose new time has been noted";
    mDisk.SetGone(true);
    mMain.Advance(4s);
    mDisk.SetGone(false);
    mFolder.Rename(kProject, "away");
    mMain.Advance(4s);
    EXPECT_FALSE(document->IsOutOfDate()) << "a volume that hiccups has changed nothing";
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);

    mFolder.Rename("away", kProject);
    mFolder.Write(kProject, "theirs");
    TellChange("Day 2");
    EXPECT_FALSE(document->IsOutOfDate());
    TellChange("Day 1");
    EXPECT_TRUE(document->IsOutOfDate()) << "at once when the folder's change is told";
    EXPECT_TRUE(Manager().ReloadProject(document));
    EXPECT_FALSE(document->IsOutOfDate());
}

TEST_F(ReloadProjectTest, ALookThatASaveHasOvertakenCountsForNothing) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    Edit(document, u"mine");
    mDisk.CloseGate(Operation::Status, mFolder.Path(kProject));
    mMain.AdvanceAlone(4s);
    ASSERT_TRUE(mDisk.WaitAtGate());
    // What stands at the gate sees the new file, and compares it with what was read before.
    document->NoteSaved({}, "mine", {desk::ItemKind::File, 4, 1, {}});
    mFolder.Write(kProject, "mine");
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_FALSE(document->IsOutOfDate());
}
