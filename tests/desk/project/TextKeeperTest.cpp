#include <unistd.h>

#include "desk/core/names/ProcessFacts.h"
#include "desk/project/document/FileSinceKept.h"
#include "desk/project/document/TextKeeper.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace desk {
namespace {

using std::chrono::seconds;

class TextKeeperTest : public ProjectDocumentsFixture {
protected:
    ~TextKeeperTest() override {
        mKeeper.reset();
        for (const OpenProjectRef& project : std::vector(OpenProjectList::Instance().Get()))
            Manager().CloseProject(project, false);
    }

    /// The kept texts, the oldest first, whoever keeps them.
    std::vector<KeptTextFile> Kept() {
        mMain.RunUntilIdle();
        return KeptTexts::List(mProfile.Path("texts"));
    }
    /// What is kept of the only project, as it would be saved; empty when nothing is.
    std::string KeptBytes() {
        const std::vector<KeptTextFile> kept = Kept();
        EXPECT_LE(kept.size(), 1u);
        return kept.empty() ? "" : KeptTexts::Read(kept[0].mPath).value_or(KeptText()).mBytes;
    }
    ino_t FileNumber() {
        const std::vector<KeptTextFile> kept = Kept();
        struct stat facts {};
        if (!kept.empty() && ::stat(kept[0].mPath.c_str(), &facts) != 0) ADD_FAILURE() << kept[0].mPath;
        return facts.st_ino;
    }
    std::vector<KeptTextFile> Offered() {
        std::vector<KeptTextFile> offered;
        mKeeper->List([&](std::vector<KeptTextFile> files) { offered = std::move(files); });
        mMain.RunUntilIdle();
        return offered;
    }

    TemporaryFolder mProfile;
    std::optional<TextKeeper> mKeeper{mProfile.Path("texts")};
};

TEST_F(TextKeeperTest, KeepsWhatChangesWithinFiveSecondsAndNothingElse) {
    const ProjectDocumentRef document = OpenAndFind();
    mMain.Advance(seconds(20));
    EXPECT_FALSE(mProfile.Exists("texts"));
    int writes = 0;
    ino_t last = 0;
    for (int second = 1; second <= 20; ++second) {
        Edit(document, u"one\ntwo\nnew " + host::NumberToString(second));
        mDisk.ResetCounts();
        mMain.Advance(seconds(1));
        EXPECT_EQ(mDisk.CountOnUIThread(), 0) << "typing waits for no disk";
        if (const ino_t now = FileNumber(); now != std::exchange(last, now)) ++writes;
    }
    EXPECT_EQ(writes, 5);
    EXPECT_EQ(KeptBytes(), "one\r\ntwo\nnew 20") << "line ends as a save writes them";
    mMain.Advance(seconds(60));
    EXPECT_EQ(FileNumber(), last) << "nothing has changed";

    const KeptTextFile kept = Kept().at(0);
    EXPECT_EQ(kept.mText.mProject, mFolder.PathUTF16(kProject));
    EXPECT_EQ(kept.mText.mBase, MarkContent(kBytes));
    EXPECT_EQ(kept.mText.mTime, 1772443800);
    EXPECT_EQ(kept.mStanding, OwnerStanding::Own);
    struct stat facts {};
    ASSERT_EQ(::stat(kept.mPath.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);
    mFolder.Rename("Day 1", "Day 2");
    document->SetProjectPath(mFolder.PathUTF16("Day 2/Reel 1.zuproj"));
    mMain.Advance(seconds(5));
    EXPECT_EQ(Kept().at(0).mText.mProject, document->GetProjectPath());
    mFolder.Rename("Day 2", "Day 1");
}

TEST_F(TextKeeperTest, WhatIsKeptGoesWithTheUsersDecisionOnly) {
    const std::function<void(const ProjectDocumentRef&)> decisions[] = {
        [&](const auto& document) { EXPECT_TRUE(Save(document)); },
        [&](const auto& document) { document->SetDirty(false); },
        [&](const auto& document) {
            mDialogs.ExpectQuestion("Reload Project", u"Discard and Reload");
            EXPECT_TRUE(Manager().ReloadProject(document));
        },
        [&](const auto& document) { EXPECT_TRUE(Close(document, u"Discard")); }};
    for (const auto& decide : decisions) {
        const ProjectDocumentRef document = OpenAndFind();
        Edit(document, u"new");
        mMain.Advance(seconds(5));
        EXPECT_FALSE(Close(document, u"Cancel"));
        EXPECT_EQ(KeptBytes(), "new");
        decide(document);
        EXPECT_EQ(KeptBytes(), "");
    }
    Edit(OpenAndFind(), u"later");
    mKeeper.reset();
    EXPECT_EQ(KeptBytes(), "later") << "the program ends without a decision";
}

TEST_F(TextKeeperTest, ADiskThatRefusesOrStandsStillIsToldOnceAndTriedAgain) {
    const ProjectDocumentRef document = OpenAndFind();
    const ExpectLogged told("cannot be kept"), logged("Unsaved text is not kept: ");
    const ExpectLogged tooLarge("is too large to be kept");
    mDisk.Deny(mProfile.Path(), ENOSPC);
    Edit(document, u"new");
    mMain.Advance(seconds(20));
    EXPECT_EQ(told.Count(), 1);
    EXPECT_EQ(logged.Count(), 1);
    mDisk.Allow(mProfile.Path());
    mMain.Advance(seconds(5));
    EXPECT_EQ(KeptBytes(), "new");
    Edit(document, host::UTF16String(kKeptTextLimit + 1, u'x'));
    mMain.Advance(seconds(20));
    EXPECT_EQ(KeptBytes(), "new") << "too large: what was kept before is better than nothing";
}

TEST_F(TextKeeperTest, OffersWhatProgramsHaveLeftThatAreGone) {
    Edit(OpenAndFind(), u"new");
    mMain.Advance(seconds(5));
    EXPECT_TRUE(Offered().empty()) << "its own";
    mKeeper.emplace(mProfile.Path("texts"));
    KeptText text = *KeptTexts::Read(Kept().at(0).mPath);
    // How what this owner has left is offered; absent when it is not.
    const auto offered = [&]() -> std::optional<OwnerStanding> {
        KeptTexts::Write(Kept().at(0).mPath, text);
        const std::vector<KeptTextFile> files = Offered();
        return files.empty() ? std::nullopt : std::optional(files[0].mStanding);
    };
    text.mOwner.mPid = ::getppid();
    text.mOwner.mProcessStart = ReadProcessFacts(::getppid())->mStart;
    EXPECT_EQ(offered(), std::nullopt) << "another program, which is running";
    text.mOwner.mMachine = u"renamed";
    EXPECT_EQ(offered(), std::nullopt) << "its machine has another name by now";
    ++text.mOwner.mProcessStart;
    EXPECT_EQ(offered(), OwnerStanding::Gone) << "its pid is another process's now";
    text.mOwner.mMachineID = std::string(32, 'f');
    EXPECT_EQ(offered(), OwnerStanding::Unknown) << "another machine's";
    text.mOwner.mBootID += '1';
    mDisk.SetVolumeType(0xEF53);
    EXPECT_EQ(offered(), OwnerStanding::Gone) << "of an earlier boot, on a disk of this machine";
    mDisk.SetVolumeType(0x6969);
    EXPECT_EQ(offered(), OwnerStanding::Unknown) << "on a shared volume";

    const std::string path = Offered().at(0).mPath;
    mKeeper->Adopt(Find(), path);
    EXPECT_TRUE(Offered().empty());
    EXPECT_NE(Kept().at(0).mPath, path) << "of two programs that recover it one does";
    EXPECT_EQ(Kept().at(0).mStanding, OwnerStanding::Own);
    EXPECT_TRUE(Save(Find()));
    EXPECT_TRUE(Kept().empty());
}

TEST_F(TextKeeperTest, WhatIsDamagedIsLoggedAndStays) {
    Edit(OpenAndFind(), u"new");
    mMain.Advance(seconds(5));
    const std::string whole =
        mProfile.Read("texts/" + std::filesystem::path(Kept().at(0).mPath).filename().string());
    int number = 0;
    for (const std::string& bytes :
         {std::string(), std::string("\n"), std::string("{}\nnew"), whole.substr(0, whole.size() - 1),
          whole + "x", std::string(200'000, '['), std::string(5'000'000, 'x'),
          "{\"version\":2" + whole.substr(whole.find(','))})
        mProfile.Write("texts/" + std::to_string(++number) + ".unsaved", bytes);
    const ExpectLogged logged(".unsaved");
    EXPECT_EQ(Kept().size(), 1u);
    EXPECT_EQ(logged.Count(), 2 * number) << "and told";
    EXPECT_EQ(Kept().size(), 1u);
    EXPECT_EQ(logged.Count(), 2 * number) << "once";
    EXPECT_EQ(ParseKeptText(whole)->mBytes, "new");
    EXPECT_TRUE(mProfile.Exists("texts/1.unsaved"));
}

TEST_F(TextKeeperTest, TellsWhenTheDiskDoesNotAnswerOrHoldsNothing) {
    KeptText text;
    text.mProject = mFolder.PathUTF16(kProject);
    mDisk.SetGone(true);
    EXPECT_EQ(FindFileSinceKept(mDisk, text).mSystemError, ESTALE);
    mDisk.SetGone(false);
    mFolder.Remove(kProject);
    EXPECT_EQ(FindFileSinceKept(mDisk, text).mState, FileSinceKept::State::Gone);
    mFolder.Write(kProject, kBytes);
}

}  // namespace
}  // namespace desk
