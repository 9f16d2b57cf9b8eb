#include "desk/core/UserNotice.h"
#include "desk/project/LockKeeper.h"
#include "host/core/Messaging.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

using namespace std::chrono_literals;

namespace {

class LockWatchTest : public ProjectDocumentsFixture, public host::Listener {
protected:
    LockWatchTest() { host::AddListener(desk::kStation_UserNotices, this); }
    ~LockWatchTest() override { host::RemoveListener(desk::kStation_UserNotices, this); }
    void ListenToMessage(const host::Message& message) override {
        if (const auto* notice = host::MessageCast<desk::UserNoticeMessage>(message))
            mNotices.push_back(host::UTF16to8(notice->GetText()));
    }
    host::ProjectLockFileRef ReadLock() {
        return host::ReadProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName,
                                         mDesktop.mMachineName);
    }

    std::vector<std::string> mNotices;
};

}  // namespace

TEST_F(LockWatchTest, ALockThatWasTakenOverOrRemovedMakesTheProjectReadOnlyWithinSeconds) {
    for (const bool isTakenOver : {true, false}) {
        const desk::ProjectDocumentRef document = OpenAndFind();
        Edit(document, u"mine");
        mDisk.ResetCounts();
        isTakenOver ? WriteForeignLock() : mFolder.Remove(kLock);
        mMain.Advance(4s);
        EXPECT_FALSE(document->IsReadOnly()) << "seen once only";
        mMain.Advance(3s);
        EXPECT_TRUE(document->IsReadOnly() && document->IsDirty());
        EXPECT_EQ(document->GetCurrentText(), u"mine");
        ASSERT_TRUE(document->GetLock()) << "the lost lock says so in the editor";
        EXPECT_FALSE(document->GetLock()->IsLocked());
        EXPECT_EQ(mDisk.CountOnUIThread(), 0);
        mMain.Advance(20s);
        ASSERT_EQ(mNotices.size(), 1u) << "told once";
        const bool namesHolder = mNotices[0].find("tomas on edit-bay-2") != std::string::npos;
        EXPECT_TRUE(mNotices[0].find("“Reel 1”") != std::string::npos && namesHolder == isTakenOver)
            << mNotices[0];
        const host::ProjectLockFileRef holder = ReadLock();
        EXPECT_EQ(holder ? host::UTF16to8(holder->GetLockOwner()) : "", isTakenOver ? "tomas" : "");

        mDialogs.ExpectQuestion("Project Is Read-Only", u"Save as Copy");
        mDialogs.ExpectNewFile("Save as Copy", mFolder.PathUTF16("mine.zuproj"));
        EXPECT_FALSE(Manager().SaveProject(document));
        EXPECT_EQ(mFolder.Read("mine.zuproj"), "mine");
        EXPECT_TRUE(Manager().CloseAllProjects());
        mNotices.clear();
        mFolder.Remove("mine.zuproj");
        if (isTakenOver) mFolder.Remove(kLock);
    }
}

TEST_F(LockWatchTest, ALossIsSeenWhenTheFoldersChangeIsTold) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    WriteForeignLock();
    for (const bool isReadOnly : {false, true}) {
        host::BroadcastMessage(host::kStation_DirectoryChanges,
                               host::DirectoryChangedMessage(mFolder.PathUTF16("Day 1")));
        mMain.RunUntilIdle();
        EXPECT_EQ(document->IsReadOnly(), isReadOnly);
    }
}

TEST_F(LockWatchTest, TheLossOfALinksTargetGivesTheLinksOwnLockUp) {
    std::filesystem::create_symlink("Reel 1.zuproj", mFolder.Path("Day 1/link.zuproj"));
    const desk::ProjectDocumentRef document = OpenAndFind("Day 1/link.zuproj");
    WriteForeignLock();
    mMain.Advance(7s);
    EXPECT_TRUE(document->IsReadOnly());
    EXPECT_FALSE(mFolder.Exists("Day 1/.link.zuproj.lock"));
    EXPECT_EQ(mNotices.size(), 1u);
}

TEST_F(LockWatchTest, WhatMayComeBackIsNoLoss) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    const std::string lock = mFolder.Read(kLock);
    const auto awayAndBack = [&](const char* item) {
        mFolder.Rename(item, "away");
        mMain.Advance(10s);
        mFolder.Rename("away", item);
    };
    const std::function<void()> troubles[] = {
        [&] { awayAndBack("Day 1"); },
        [&] {
            // The empty place of a volume.
            mFolder.Rename("Day 1", "away");
            std::filesystem::create_directory(mFolder.Path("Day 1"));
            mMain.Advance(10s);
            std::filesystem::remove(mFolder.Path("Day 1"));
            mFolder.Rename("away", "Day 1");
        },
        [&] {
            mDisk.SetGone(true);
            mMain.Advance(10s);
            mDisk.SetGone(false);
        },
        [&] {
            mDisk.Deny(mFolder.Path(kLock));
            mMain.Advance(10s);
            mDisk.Allow(mFolder.Path(kLock));
        },
        [&] {
            mFolder.Write(kLock, lock.substr(0, lock.size() / 2));
            mMain.Advance(10s);
            mFolder.Write(kLock, lock);
        },
        [&] {
            for (int i = 0; i < 2; ++i) {
                mFolder.Remove(kLock);
                mMain.Advance(3s);
                mFolder.Write(kLock, lock);
                mMain.Advance(3s);
            }
        },
    };
    for (const auto& trouble : troubles) {
        trouble();
        mMain.Advance(4s);
        EXPECT_FALSE(document->IsReadOnly()) << &trouble - troubles;
    }
    EXPECT_TRUE(mNotices.empty());
    Edit(document, u"mine");
    EXPECT_TRUE(Manager().SaveProject(document));
    EXPECT_TRUE(Manager().CloseProject(document, true));
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockWatchTest, ALockThatASaveFoundLostIsTakenBackWhenItsFolderIsBack) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    const std::string lock = mFolder.Read(kLock);
    Edit(document, u"mine");
    mFolder.Rename("Day 1", "away");
    mDialogs.ExpectQuestion("Lock Lost", u"Cancel");
    EXPECT_FALSE(Manager().SaveProject(document));
    mFolder.Rename("away", "Day 1");
    EXPECT_TRUE(Manager().SetProjectReadOnly(document, false));
    EXPECT_EQ(mFolder.Read(kLock), lock) << "the same lock";
    mMain.Advance(10s);
    EXPECT_FALSE(document->IsReadOnly());
    EXPECT_TRUE(Manager().SaveProject(document));
    EXPECT_TRUE(Manager().CloseProject(document, true));
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockWatchTest, ALossIsLeftToTheOperationThatIsUnderWay) {
    class Meanwhile : public ScriptedDialogs {
    public:
        desk::Answer Ask(const desk::Question& question) override {
            if (mMeanwhile) std::exchange(mMeanwhile, nullptr)();
            return ScriptedDialogs::Ask(question);
        }
        std::function<void()> mMeanwhile;
    } dialogs;
    const desk::ProjectDocumentRef document = OpenAndFind();
    Edit(document, u"mine");
    dialogs.mMeanwhile = [&] {
        WriteForeignLock();
        mMain.Advance(10s);
        EXPECT_FALSE(document->IsReadOnly());
    };
    dialogs.ExpectQuestion("Save Changes", u"Save");
    dialogs.ExpectQuestion("Lock Lost", u"Cancel");
    EXPECT_FALSE(Manager().CloseProject(document, true));
    mMain.Advance(10s);
    EXPECT_TRUE(document->IsReadOnly() && mNotices.empty()) << "the question has told it";
}
