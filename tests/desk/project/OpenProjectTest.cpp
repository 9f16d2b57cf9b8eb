#include "host/files/File.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace {

using Kind = desk::ProjectContent::Kind;
using OpenProjectTest = ProjectDocumentsFixture;

}  // namespace

TEST_F(OpenProjectTest, TakesTheLockComesToTheFrontAndGivesAllUpWhenItIsClosed) {
    EXPECT_EQ(host::DocumentManager::Instance(), &Manager());
    const desk::ProjectDocumentRef document = OpenAndFind("Day 1//Reel 1.zuproj");
    EXPECT_EQ(desk::ParseLockRecord(mFolder.Read(kLock)).mUser, mDesktop.mUserName);
    EXPECT_FALSE(document->IsReadOnly() || document->IsDirty() || document->IsOutOfDate());
    EXPECT_EQ(document->GetEditorText(), u"one\ntwo\nthree");
    EXPECT_EQ(host::GetActiveProject(), document);
    const desk::ProjectDocumentRef other = OpenAndFind((mFolder.Write("b.zuproj"), "b.zuproj"));
    EXPECT_EQ(host::GetActiveProject(), other);
    EXPECT_TRUE(Open()) << "open already: comes to the front";
    EXPECT_EQ(host::GetActiveProject(), document);
    Edit(document, u"x");
    EXPECT_TRUE(Manager().CloseProject(document, false));
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_EQ(mFolder.Read(kProject), kBytes);
    EXPECT_EQ(host::GetActiveProject(), other);
    mManager.reset();
    EXPECT_EQ(host::OpenProjectCount(), 0);
    EXPECT_FALSE(host::DocumentManager::Instance() || host::GetActiveProject());
}

TEST_F(OpenProjectTest, SomebodyElsesLockIsAskedAbout) {
    WriteForeignLock();
    const std::string record = mFolder.Read(kLock);
    EXPECT_FALSE(Open(u"Cancel"));
    for (const char* part : {"Reel 1", "tomas", "edit-bay-2", "since"}) EXPECT_TRUE(AsksFor(part)) << part;
    EXPECT_EQ(host::OpenProjectCount(), 0);

    EXPECT_TRUE(Open(u"Make a Copy"));
    EXPECT_FALSE(Find() || OpenAndFind("Day 1/Reel 1 copy.zuproj")->IsReadOnly());
    EXPECT_EQ(mFolder.Read("Day 1/Reel 1 copy.zuproj"), kBytes);

    mDialogs.ExpectQuestion("Project Locked", u"Open Read-Only");
    EXPECT_TRUE(OpenAndFind()->IsReadOnly());
    EXPECT_TRUE(Manager().CloseAllProjects());
    EXPECT_EQ(mFolder.Read(kLock), record);

    mFolder.Write(kLock, "{");
    EXPECT_FALSE(Open(u"Cancel"));
    EXPECT_TRUE(AsksFor("somebody unknown"));
    mFolder.Remove(kLock);
}

TEST_F(OpenProjectTest, WhereNoLockCanBeWrittenItCanBeLookedAt) {
    for (const host::UTF16String answer : {u"Cancel", u"Open Read-Only"}) {
        mDisk.Fail(Operation::CreateNewFile, 1, EROFS);
        mDialogs.ExpectQuestion("Project Cannot Be Locked", answer);
        EXPECT_EQ(Open(), answer != u"Cancel");
        EXPECT_TRUE(AsksFor("Read-only file system")) << mDialogs.LastText();
        EXPECT_FALSE(mFolder.Exists(kLock));
    }
    EXPECT_TRUE(Find()->IsReadOnly());
    EXPECT_EQ(Find()->GetEditorText(), u"one\ntwo\nthree");
    const std::string longest = std::string(255 - 7, 'x') + ".zuproj";
    mFolder.Write(longest);
    mDialogs.ExpectQuestion("Project Cannot Be Locked", u"Cancel");
    EXPECT_FALSE(Open(longest));
}

TEST_F(OpenProjectTest, WhatIsNoFileIsRefusedAtOnceAndNeverLocked) {
    ASSERT_EQ(mkfifo(mFolder.Path("pipe.zuproj").c_str(), 0600), 0);
    mFolder.MakeFolder("folder.zuproj");
    std::filesystem::create_symlink("loop.zuproj", mFolder.Path("loop.zuproj"));
    std::filesystem::create_symlink("nowhere", mFolder.Path("dangling.zuproj"));
    std::filesystem::create_symlink("folder.zuproj", mFolder.Path("to folder.zuproj"));
    std::filesystem::create_symlink("/dev/null", mFolder.Path("device.zuproj"));
    mFolder.Write("notes.txt");
    for (const char* name : {"pipe.zuproj", "folder.zuproj", "loop.zuproj", "dangling.zuproj",
                             "to folder.zuproj", "device.zuproj", "missing.zuproj", "notes.txt"}) {
        mDialogs.ExpectMessage("The Project Was Not Opened");
        EXPECT_FALSE(Open(name)) << name;
        EXPECT_EQ(CountHidden(), 0) << name;
    }
    EXPECT_EQ(mDisk.Count(Operation::Link), 0);
}

TEST_F(OpenProjectTest, AnOpeningThatTheUserCancelsLeavesNoLockWhileTheVolumeStillHangs) {
    CancelWaiting();
    mDisk.CloseGate(Operation::ReadSmallFile, mFolder.Path(kProject));
    EXPECT_FALSE(Open());
    EXPECT_FALSE(mFolder.Exists(kLock));
    mDialogs.mWhileWaiting = {};
    mDisk.OpenGate();
    EXPECT_TRUE(Open());
}

TEST_F(OpenProjectTest, ShowsWhatCannotBeEditedAsWhatItIs) {
    const struct {
        std::string mBytes;
        Kind mKind;
    } cases[] = {{std::string("\0\1\2", 3), Kind::Binary},
                 {"caf\xE9", Kind::Binary},
                 {"a\xEF\xBF\xBC", Kind::Text},
                 {"", Kind::EditableText},
                 {std::string(desk::kEditableLimit, 'x').replace(1 << 18, 1, "\n"), Kind::Text},
                 {std::string(desk::EditedText::kMostLines, '\n'), Kind::Text},
                 {std::string(desk::kEditableLimit + 1, '\n'), Kind::Large}};
    for (const auto& c : cases) {
        mFolder.Write(kProject, c.mBytes);
        const desk::ProjectDocumentRef document = OpenAndFind();
        EXPECT_EQ(document->GetContent().mKind, c.mKind) << c.mBytes.size();
        EXPECT_EQ(document->GetContent().mStatus.mSize, c.mBytes.size());
        document->SetDirty(true);
        EXPECT_EQ(document->IsDirty(), c.mKind == Kind::EditableText);
        EXPECT_TRUE(Manager().CloseProject(document, false));
    }
    std::filesystem::resize_file(mFolder.Path(kProject), std::uintmax_t(1) << 40);
    mDisk.ResetCounts();
    EXPECT_EQ(OpenAndFind()->GetContent().mKind, Kind::Large);
    EXPECT_LE(mDisk.Count(Operation::ReadSmallFile), 2) << "its lock only";
}

TEST_F(OpenProjectTest, ALinkHoldsBothLocksAndIsSavedThrough) {
    std::filesystem::create_symlink("Day 1/Reel 1.zuproj", mFolder.Path("link.zuproj"));
    const desk::ProjectDocumentRef document = OpenAndFind("link.zuproj");
    EXPECT_TRUE(mFolder.Exists(kLock) && mFolder.Exists(".link.zuproj.lock"));
    EXPECT_TRUE(Open()) << "one file is not opened twice";
    EXPECT_EQ(host::OpenProjectCount(), 1);
    Edit(document, u"one\nthree");
    EXPECT_TRUE(Save(document));
    EXPECT_TRUE(std::filesystem::is_symlink(mFolder.Path("link.zuproj")));
    EXPECT_EQ(mFolder.Read(kProject), "one\r\nthree");
    EXPECT_TRUE(Manager().CloseProject(document, true));
    EXPECT_FALSE(mFolder.Exists(kLock) || mFolder.Exists(".link.zuproj.lock"));

    WriteForeignLock();
    EXPECT_TRUE(Open(u"Make a Copy", "link.zuproj"));
    EXPECT_TRUE(
        std::filesystem::is_regular_file(std::filesystem::symlink_status(mFolder.Path("link copy.zuproj"))));
    mFolder.Write("data.bin", "x");
    std::filesystem::create_symlink("data.bin", mFolder.Path("data.zuproj"));
    mDialogs.ExpectQuestion("Project Cannot Be Locked", u"Open Read-Only");
    EXPECT_TRUE(OpenAndFind("data.zuproj")->IsReadOnly());
}

TEST_F(OpenProjectTest, AProjectThatWasOpenedThroughALinkIsKnownAsTheFileThatItIs) {
    std::filesystem::create_symlink("Day 1/Reel 1.zuproj", mFolder.Path("link.zuproj"));
    std::filesystem::create_directory_symlink("Day 1", mFolder.Path("today"));
    mFolder.Write("Day 10/Reel 1.zuproj");
    for (const char* name : {"link.zuproj", "today/Reel 1.zuproj"}) {
        SCOPED_TRACE(name);
        const desk::ProjectDocumentRef document = OpenAndFind(name);
        EXPECT_TRUE(Find() == document && Open() && Open("today/Reel 1.zuproj"));
        EXPECT_EQ(host::OpenProjectCount(), 1);
        const desk::ProjectDocumentRef neighbour = OpenAndFind("Day 10/Reel 1.zuproj");
        EXPECT_EQ(host::File::Move(mFolder.PathUTF16("Day 1"), mFolder.PathUTF16("Day 2")), 0);
        EXPECT_TRUE(Find("Day 2/Reel 1.zuproj") == document && !Find());
        EXPECT_TRUE(Find("Day 10/Reel 1.zuproj") == neighbour) << "it lay in another folder";
        EXPECT_TRUE(Manager().CloseProject(neighbour, true));
        Edit(document, u"x");
        EXPECT_TRUE(Save(document));
        EXPECT_EQ(mFolder.Read("Day 2/Reel 1.zuproj"), "x");
        EXPECT_TRUE(Manager().CloseProjectsIn(mFolder.PathUTF16("Day 2")) && !Find("Day 2/Reel 1.zuproj"));
        EXPECT_EQ(CountHidden(), 0);
        mFolder.Rename("Day 2", "Day 1");
    }
}

TEST_F(OpenProjectTest, NewProjectsGetFreeNamesAndTakeNobodys) {
    const mode_t mask = umask(027);
    EXPECT_EQ(Manager().CreateProject(mFolder.PathUTF16("Day 1/")), mFolder.PathUTF16("Day 1/Untitled.zuproj"));
    umask(mask);
    EXPECT_EQ(mFolder.Read("Day 1/Untitled.zuproj"), "");
    EXPECT_EQ(std::filesystem::status(mFolder.Path("Day 1/Untitled.zuproj")).permissions(),
              std::filesystem::perms(0640));
    mFolder.Write("Day 1/Untitled.zuproj", "of somebody else");
    const host::UTF16String second = Manager().CreateProject(mFolder.PathUTF16("Day 1"));
    EXPECT_EQ(second, mFolder.PathUTF16("Day 1/Untitled_1.zuproj"));
    EXPECT_EQ(mFolder.Read("Day 1/Untitled.zuproj"), "of somebody else");
    EXPECT_EQ(host::OpenProjectCount(), 0);
    mDialogs.ExpectMessage("The Project Was Not Made");
    EXPECT_EQ(Manager().CreateProject(mFolder.PathUTF16("Day 9")), u"");
    EXPECT_TRUE(AsksFor("No such file"));
}
