#include <QTest>
#include <QtWidgets>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/RecoveryDialog.h"
#include "desk/app/RecoveryOffer.h"
#include "desk/core/names/TemporaryNames.h"
#include "desk/framework/CommandRouter.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace desk {
namespace {

class RecoveryOfferTest : public ProjectDocumentsFixture {
protected:
    RecoveryOfferTest() { mArea.show(); }
    ~RecoveryOfferTest() override {
        mOffer.reset();
        mKeeper.reset();
        for (const OpenProjectRef& project : std::vector(OpenProjectList::Instance().Get()))
            Manager().CloseProject(project, false);
        mMain.RunUntilIdle();
    }

    /// A program that is gone has left it.
    void Leave(const std::string& bytes, std::string_view base = kBytes, const char* project = kProject) {
        KeptText text;
        text.mProject = mFolder.PathUTF16(project);
        text.mTime = 1772443700 + mLeft++;
        text.mOwner = MakeRecordOwner();
        text.mOwner.mBootID += '1';
        text.mBase = MarkContent(base);
        text.mBytes = bytes;
        KeptTexts::Write(KeptTexts::MakePath(mProfile.Path("texts")), text);
    }
    void Start() {
        mOffer.reset();
        mKeeper.emplace(mProfile.Path("texts"));
        mOffer.emplace(mArea, *mKeeper);
        mOffer->OfferAtStart();
        mMain.RunUntilIdle();
    }
    RecoveryDialog* Dialog() {
        auto* dialog = mArea.findChild<RecoveryDialog*>();
        return dialog && dialog->isVisible() ? dialog : nullptr;
    }
    /// All texts of the list.
    std::string Shown() {
        std::string texts;
        if (Dialog())
            for (const QLabel* label : Dialog()->findChildren<QLabel*>())
                if (label->isVisible())
                    texts += label->text().toStdString() + label->accessibleName().toStdString() + '|';
        return texts;
    }
    bool Shows(const std::string& part) { return Shown().find(part) != std::string::npos; }
    void Press(const char* text) {
        for (auto* button : Dialog()->findChildren<QPushButton*>())
            if (button->isVisible() && button->text() == QString::fromUtf8(text)) {
                button->click();
                return mMain.RunUntilIdle();
            }
        ADD_FAILURE() << "no button " << text << " in " << Shown();
    }
    std::string Text() { return mArea.findChild<QPlainTextEdit*>()->toPlainText().toStdString(); }
    std::size_t CountKept() {
        mMain.RunUntilIdle();
        return KeptTexts::List(mProfile.Path("texts")).size();
    }

    TemporaryFolder mProfile;
    int mLeft = 0;
    ProjectArea mArea{nullptr};
    std::optional<TextKeeper> mKeeper;
    std::optional<RecoveryOffer> mOffer;
};

TEST_F(RecoveryOfferTest, RecoveredTextIsAnUnsavedChangeThatCanBeUndone) {
    Start();
    EXPECT_EQ(Dialog(), nullptr) << "nothing to recover";
    EXPECT_FALSE(CommandRouter::Instance().FindStatus(kCommandRecoverText).mIsEnabled);
    Leave("one\r\ntwo\nthree and four");
    Start();
    EXPECT_TRUE(Shows("Reel 1|") && Shows("/Day 1|") && Shows("The file has not changed since|")) << Shown();
    Press("Open Recovered Text");
    EXPECT_EQ(Dialog(), nullptr) << "that was all";
    ASSERT_TRUE(Find() && Find()->IsDirty() && Find()->IsRecovered() && !Find()->IsReadOnly());
    EXPECT_EQ(Text(), "one\ntwo\nthree and four");
    mArea.findChild<QPlainTextEdit*>()->undo();
    EXPECT_EQ(Text(), "one\ntwo\nthree");
    EXPECT_FALSE(Find()->IsDirty());
    mDialogs.ExpectQuestion("Reload Project", u"Cancel");
    EXPECT_FALSE(Manager().ReloadProject(Find()));
    mMain.Advance(std::chrono::seconds(5));
    EXPECT_TRUE(Manager().CloseProject(Find(), true));
    EXPECT_EQ(CountKept(), 1u) << "neither saved nor discarded";

    for (const char* text : {"five", "six"}) Leave(text);
    Start();
    Press("Open Recovered Text");
    mArea.findChild<QPlainTextEdit*>()->undo();
    Press("Open Recovered Text");
    EXPECT_TRUE(Find()->IsDirty());
    EXPECT_EQ(CountKept(), 3u) << "nobody has decided about the one that was undone";
}

TEST_F(RecoveryOfferTest, NothingIsOverwrittenThatWasWrittenSince) {
    Leave("mine");
    const std::string theirs(std::strlen(kBytes), 't');
    mFolder.Write(kProject, theirs);
    Start();
    EXPECT_TRUE(Shows("The file was changed: ")) << Shown();
    Press("Open Recovered Text");
    const ProjectDocumentRef document = Find();
    EXPECT_EQ(Text(), "mine");
    auto* editor = mArea.findChild<QPlainTextEdit*>();
    editor->undo();
    EXPECT_EQ(Text(), theirs);
    editor->redo();
    EXPECT_FALSE(Save(document, "Project File Has Changed", u"Cancel"));
    mMain.Advance(std::chrono::seconds(5));
    mDesktop.mBootID += '2';
    EXPECT_EQ(KeptTexts::List(mProfile.Path("texts")).at(0).mText.mBase, ContentMark())
        << "after the next crash it is still based on an older file";
    EXPECT_TRUE(Save(document, "Project File Has Changed", u"Overwrite"));
    editor->selectAll();
    editor->insertPlainText("again");
    EXPECT_TRUE(Save(document)) << "asked once";
    EXPECT_EQ(mFolder.Read(kProject), "again");
    mDesktop.mBootID.pop_back();
}

TEST_F(RecoveryOfferTest, WhatCannotBeEditedNowStaysKept) {
    Leave("mine");
    WriteForeignLock();
    Start();
    Press("Open Recovered Text");
    ASSERT_TRUE(Find() && Find()->IsReadOnly());
    EXPECT_EQ(Text(), "mine");
    mDialogs.ExpectQuestion("Project Is Read-Only", u"Save as Copy");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("Day 1/mine.zuproj"));
    Manager().SaveProject(Find());
    EXPECT_EQ(mFolder.Read("Day 1/mine.zuproj"), "mine");
    EXPECT_EQ(mFolder.Read(kProject), kBytes);
    EXPECT_EQ(CountKept(), 0u);

    mFolder.Remove(kLock);
    Leave("mine again");
    Leave("elsewhere", kBytes, "Day 9/Reel 9.zuproj");
    mFolder.Write("Day 1/Reel 2.zuproj", "held");
    Leave("held", "before", "Day 1/Reel 2.zuproj");
    Start();
    Edit(OpenAndFind(), u"other changes");
    EXPECT_TRUE(Shows("its volume is not mounted") && Shows("holds this text already")) << Shown();
    mDialogs.ExpectMessage("The Text Was Not Recovered");
    Press("Open Recovered Text");
    EXPECT_TRUE(AsksFor("other unsaved changes")) << mDialogs.LastText();
    EXPECT_EQ(CountKept(), 3u);
}

TEST_F(RecoveryOfferTest, WhatTheProjectShowsAlreadyStaysKeptUntilItIsDiscarded) {
    Leave(kBytes, "before");
    Start();
    Press("Open Recovered Text");
    EXPECT_TRUE(Find() && !Find()->IsDirty());
    EXPECT_TRUE(Shows("holds this text already")) << Shown();
    EXPECT_EQ(CountKept(), 1u) << "what the file shows may not be on the disk";
}

TEST_F(RecoveryOfferTest, WhatAKilledProgramWasWritingIsOfferedIfItIsWhole) {
    Leave("mine");
    const std::string path = KeptTexts::List(mProfile.Path("texts")).at(0).mPath;
    const std::string bytes = mProfile.Read("texts/" + std::filesystem::path(path).filename().string());
    KeptTexts::Remove(path);
    LockRecord owner = MakeRecordOwner();
    owner.mBootID += '1';
    const auto leave = [&](const std::string& target, const std::string& written) {
        mProfile.Write("texts/" + MakeTemporaryNameFor(TemporaryPurpose::Save, target, owner), written);
    };
    leave("1.unsaved", bytes);
    leave("2.unsaved", bytes.substr(0, bytes.size() - 1));
    Start();
    EXPECT_TRUE(Shows("Reel 1|")) << Shown();
    EXPECT_EQ(CountKept(), 1u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mProfile.Path("texts")), {}), 1);
}

TEST_F(RecoveryOfferTest, CopiesAndDiscardsWithoutTheProject) {
    Leave("first", kBytes, "Day 9/Reel 9.zuproj");
    Leave("second", kBytes, "Day 9/Reel 9.zuproj");
    Start();
    mDialogs.ExpectMessage("The Text Was Not Recovered");
    Press("Open Recovered Text");
    mDialogs.ExpectNewFile("Save as Copy", std::nullopt);
    Press("Save as Copy…");
    mDialogs.ExpectQuestion("Discard Unsaved Text", u"Keep");
    Press("Discard…");
    EXPECT_EQ(CountKept(), 2u);
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16(kProject));
    mDialogs.ExpectMessage("The Copy Was Not Made");
    mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("Day 1/new"));
    Press("Save as Copy…");
    EXPECT_EQ(mFolder.Read("Day 1/new.zuproj"), "first");
    EXPECT_EQ(mFolder.Read(kProject), kBytes);
    EXPECT_EQ(CountKept(), 1u);
    mDialogs.ExpectQuestion("Discard Unsaved Text", u"Discard");
    Press("Discard…");
    EXPECT_EQ(CountKept(), 0u);
    EXPECT_EQ(Dialog(), nullptr);
}

TEST_F(RecoveryOfferTest, AVolumeThatHangsHoldsNothingUpAndLaterKeepsAll) {
    Leave("mine");
    mDisk.CloseGate(Operation::Status, mFolder.Path(kProject));
    mKeeper.emplace(mProfile.Path("texts"));
    mOffer.emplace(mArea, *mKeeper);
    mOffer->OfferAtStart();
    EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return Shows("Looking at what the file holds"); }));
    ASSERT_TRUE(mDisk.WaitAtGate());
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_TRUE(Shows("The file has not changed since"));
    Press("Later");
    EXPECT_EQ(Dialog(), nullptr);
    EXPECT_EQ(CountKept(), 1u);
    CommandRouter::Instance().Send(kCommandRecoverText);
    ASSERT_NE(Dialog(), nullptr);
    // Another program is faster.
    KeptTexts::Remove(KeptTexts::List(mProfile.Path("texts")).at(0).mPath);
    Press("Open Recovered Text");
    EXPECT_EQ(Dialog(), nullptr);
    EXPECT_EQ(Find(), nullptr);
}

}  // namespace
}  // namespace desk
