
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace {

class SaveProjectTest : public ProjectDocumentsFixture {
protected:
    /// Opened and edited.
    desk::ProjectDocumentRef OpenAndEdit() {
        desk::ProjectDocumentRef document = OpenAndFind();
        Edit(document, u"one\ntwo\nfour");
        return document;
    }
    static constexpr char kEdited[] = "one\r\ntwo\nfour";
    static constexpr char kCopy[] = "Day 1/Reel 1 copy.zuproj";
};

}  // namespace

TEST_F(SaveProjectTest, WritesWhatWasReadButForTheEdits) {
    chmod(mFolder.Path(kProject).c_str(), 0640);
    const desk::ProjectDocumentRef document = OpenAndFind();
    EXPECT_TRUE(Save(document)) << "nothing to save";
    EXPECT_EQ(mDisk.Count(Operation::Rename), 0);
    Edit(document, u"one\ntwo\nfour");
    EXPECT_TRUE(Save(document));
    EXPECT_FALSE(document->IsDirty());
    EXPECT_EQ(mFolder.Read(kProject), kEdited);
    EXPECT_EQ(std::filesystem::status(mFolder.Path(kProject)).permissions(), std::filesystem::perms(0640));
    mMain.Advance(std::chrono::seconds(10));
    EXPECT_FALSE(document->IsOutOfDate()) << "the file is the one that was saved";
    Edit(document, u"one\n\nfour");
    EXPECT_TRUE(Manager().SaveAllProjects());
    EXPECT_EQ(mFolder.Read(kProject), "one\r\n\nfour");
}

TEST_F(SaveProjectTest, WhatIsTypedDuringTheSaveStaysUnsaved) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    std::size_t asked = 0;
    document->SetTextSource([&asked] { return host::UTF16String(++asked, u'x'); });
    document->SetDirty(true);
    EXPECT_TRUE(Save(document));
    EXPECT_EQ(mFolder.Read(kProject), "x");
    EXPECT_TRUE(document->IsDirty());
    document->SetDirty(false);
    EXPECT_TRUE(document->IsDirty()) << "what was undone is in the file";
    EXPECT_FALSE(Close(document, u"Save"));
    EXPECT_FALSE(SetReadOnly(document, u"Save"));
    EXPECT_TRUE(document->IsDirty());
}

TEST_F(SaveProjectTest, AfterASaveInDoubtEveryTextIsUnsavedUntilOneIsSaved) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    struct {
        Operation mFails;
        const char* mTold;
        bool mIsInDoubt;
        std::string mOnDisk;
    } const cases[] = {{Operation::CreateNewFile, "The Project Was Not Saved", false, kBytes},
                       {Operation::FlushFolder, "The Project May Not Have Been Saved", true, kEdited}};
    for (const auto& c : cases) {
        Edit(document, u"one\ntwo\nfour");
        mDisk.Fail(c.mFails, 1, EIO);
        mDialogs.ExpectMessage(c.mTold);
        EXPECT_FALSE(Save(document));
        EXPECT_TRUE(AsksFor("Input/output error"));
        EXPECT_EQ(AsksFor("may have been saved"), c.mIsInDoubt);
        EXPECT_EQ(mFolder.Read(kProject), c.mOnDisk);
        // The user undoes it.
        Edit(document, u"one\ntwo\nthree");
        document->SetDirty(false);
        EXPECT_EQ(document->IsDirty(), c.mIsInDoubt);
    }
    mMain.Advance(std::chrono::seconds(10));
    EXPECT_FALSE(document->IsOutOfDate()) << "nobody else has changed it";
    EXPECT_FALSE(Close(document, u"Cancel"));
    EXPECT_TRUE(Save(document)) << "without a question";
    EXPECT_FALSE(document->IsDirty());
    EXPECT_EQ(mFolder.Read(kProject), kBytes);

    Edit(document, u"one\ntwo\nfour");
    mDisk.Fail(Operation::FlushFolder, 1, EIO);
    EXPECT_FALSE(Save(document, "The Project May Not Have Been Saved"));
    EXPECT_TRUE(SetReadOnly(document, u"Discard"));
    mMain.Advance(std::chrono::seconds(10));
    EXPECT_FALSE(document->IsDirty());
    EXPECT_TRUE(document->IsOutOfDate()) << "what was discarded has been saved";
}

TEST_F(SaveProjectTest, NothingKeepsTheUIThreadWaitingForTheVolume) {
    mDisk.ResetCounts();
    const desk::ProjectDocumentRef document = OpenAndEdit();
    EXPECT_TRUE(Save(document));
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, true));
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, false));
    EXPECT_TRUE(Manager().ReloadProject(document));
    Edit(document, u"five");
    mFolder.Remove(kLock);
    mDialogs.ExpectQuestion("Lock Lost", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16(kCopy));
    EXPECT_FALSE(Save(document));
    EXPECT_TRUE(Manager().CloseAllProjects());
    EXPECT_EQ(mFolder.Read(kCopy), "five");
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
}

TEST_F(SaveProjectTest, WhoDoesNotWantToWaitForAVolumeThatHangsLosesNothing) {
    const desk::ProjectDocumentRef document = OpenAndEdit();
    CancelWaiting();
    mDisk.CloseGate(Operation::ReadSmallFile, mFolder.Path(kLock));
    EXPECT_FALSE(Save(document));
    EXPECT_TRUE(document->IsDirty() && !document->IsReadOnly());
    EXPECT_FALSE(Close(document, u"Save"));
    mDialogs.mWhileWaiting = {};
    mDisk.OpenGate();
    EXPECT_TRUE(Save(document));
    EXPECT_EQ(mFolder.Read(kProject), kEdited);
}

TEST_F(SaveProjectTest, ATextThatHasGrownBeyondWhatWouldBeOpenedIsSavedAgain) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    for (const char16_t letter : {u'a', u'b'}) {
        Edit(document, host::UTF16String(desk::kEditableLimit + 1, letter));
        EXPECT_TRUE(Save(document));
    }
    EXPECT_EQ(mFolder.Read(kProject).front(), 'b');
}

TEST_F(SaveProjectTest, ALostLockOverwritesNothingAndOffersACopy) {
    const desk::ProjectDocumentRef document = OpenAndEdit();
    WriteForeignLock();
    mFolder.Write(kProject, "of tomas");
    EXPECT_FALSE(Save(document, "Lock Lost", u"Cancel"));
    for (const char* part : {"Reel 1", "tomas", "edit-bay-2", "read-only"}) EXPECT_TRUE(AsksFor(part)) << part;
    EXPECT_TRUE(document->IsReadOnly() && document->IsDirty());
    EXPECT_EQ(document->GetCurrentText(), u"one\ntwo\nfour");

    mFolder.Write(kCopy, "taken meanwhile");
    mDialogs.ExpectQuestion("Project Is Read-Only", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16(kCopy));
    mDialogs.ExpectMessage("The Copy Was Not Made");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("mine"));
    EXPECT_FALSE(Save(document)) << "not to its own file";
    EXPECT_EQ(mFolder.Read("mine.zuproj"), kEdited);
    EXPECT_EQ(mFolder.Read(kCopy), "taken meanwhile");
    EXPECT_EQ(mFolder.Read(kProject), "of tomas");
    EXPECT_FALSE(Find()) << "the copy is open in its place";
    EXPECT_FALSE(Find("mine.zuproj")->IsReadOnly() || Find("mine.zuproj")->IsDirty());
    EXPECT_EQ(desk::ParseLockRecord(mFolder.Read(kLock)).mUser, u"tomas");
}

TEST_F(SaveProjectTest, AFileThatSomebodyChangedInSpiteOfTheLockIsAskedAbout) {
    chmod(mFolder.Path(kProject).c_str(), 0664);
    const desk::ProjectDocumentRef document = OpenAndEdit();
    mFolder.Write(kProject, "theirs");
    EXPECT_FALSE(Save(document, "Project File Has Changed", u"Cancel"));
    EXPECT_TRUE(document->IsDirty() && document->IsOutOfDate());
    EXPECT_EQ(mFolder.Read(kProject), "theirs");

    EXPECT_TRUE(Save(document, "Project File Has Changed", u"Overwrite"));
    EXPECT_EQ(mFolder.Read(kProject), kEdited);
    EXPECT_FALSE(document->IsDirty() || document->IsOutOfDate());

    Edit(document, u"five");
    mFolder.Remove(kProject);
    mDialogs.ExpectQuestion("Project File Is Gone", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16(kProject));
    mDialogs.ExpectMessage("The Copy Was Not Made");
    mDialogs.ExpectNewFile("Save as Copy", {});
    EXPECT_FALSE(Save(document)) << "a project is no copy of itself";
    EXPECT_TRUE(Find() && !mFolder.Exists(kProject));
    EXPECT_TRUE(Save(document, "Project File Is Gone", u"Save It Again"));
    EXPECT_EQ(mFolder.Read(kProject), "five");
    EXPECT_EQ(std::filesystem::status(mFolder.Path(kProject)).permissions(), std::filesystem::perms(0664));
}

TEST_F(SaveProjectTest, TheSameTimeAndSizeHideNoChangeAndANewTimeIsNone) {
    const desk::ProjectDocumentRef document = OpenAndEdit();
    const auto time = std::filesystem::last_write_time(mFolder.Path(kProject));
    std::string theirs = kBytes;
    theirs.back() = 'E';
    mFolder.Write(kProject, theirs);
    std::filesystem::last_write_time(mFolder.Path(kProject), time);
    mDialogs.ExpectQuestion("Project File Has Changed", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", {});
    EXPECT_FALSE(Save(document));
    EXPECT_EQ(mFolder.Read(kProject), theirs);
    mFolder.Write(kProject, kBytes);
    std::filesystem::last_write_time(mFolder.Path(kProject), time + std::chrono::hours(1));
    EXPECT_TRUE(Save(document));
}

TEST_F(SaveProjectTest, ACopyOfAnythingCanBeSaved) {
    mFolder.Write(kProject, std::string("\0\1", 2));
    desk::ProjectDocumentRef document = OpenAndFind();
    mDialogs.ExpectNewFile("Save as Copy", {});
    EXPECT_FALSE(Manager().SaveProjectAsCopy(document));
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("nowhere/a.zuproj"));
    mDialogs.ExpectMessage("The Copy Was Not Made");
    mDialogs.ExpectNewFile("Save as Copy", {});
    EXPECT_FALSE(Manager().SaveProjectAsCopy(document));
    EXPECT_TRUE(AsksFor("No such file or directory (" + mFolder.Path("nowhere") + ")")) << mDialogs.LastText();
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("a.zuproj"));
    EXPECT_TRUE(Manager().SaveProjectAsCopy(document));
    EXPECT_EQ(mFolder.Read("a.zuproj"), std::string("\0\1", 2));
    EXPECT_TRUE(Find("a.zuproj") && !Find());
}
