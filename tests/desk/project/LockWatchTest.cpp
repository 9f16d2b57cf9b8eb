#include "desk/core/log/UserNotice.h"
#include "host/core/Messaging.h"
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
        EXPECT_TRUE(Manager().CloseProject(document, false));

        mNotices.clear();
        if (isTakenOver) mFolder.Remove(kLock);
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

TEST_F(LockWatchTest, WhatMayComeBackIsNoLossAndIsToldUntilItIsOver) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    const std::string lock = mFolder.Read(kLock);
    const struct {
        std::function<void()> mBegin;
        std::function<void()> mEnd;
        const char* mTold;
    } troubles[] = {
        {[&] { mFolder.Rename("Day 1", "away"); }, [&] { mFolder.Rename("away", "Day 1"); },
         "The folder of “Reel 1” is not there"},
        {[&] { mFolder.Rename("Day 1", "away"), mFolder.MakeFolder("Day 1"); },
         [&] { std::filesystem::remove(mFolder.Path("Day 1")), mFolder.Rename("away", "Day 1"); },
         "Neither the file of “Reel 1” nor your lock"},
        {[&] { mDisk.SetGone(true); }, [&] { mDisk.SetGone(false); }, "Stale file handle"},
        {[&] { mFolder.Write(kLock, lock.substr(0, lock.size() / 2)); }, [&] { mFolder.Write(kLock, lock); },
         "no lock"},
    };
    for (const auto& trouble : troubles) {
        SCOPED_TRACE(&trouble - troubles);
        Edit(document, u"mine");
        trouble.mBegin();
        mMain.Advance(10s);
        EXPECT_NE(host::UTF16to8(document->GetTrouble()).find(trouble.mTold), std::string::npos)
            << host::UTF16to8(document->GetTrouble());
        const bool isAway = &trouble - troubles < 2;
        isAway ? mDialogs.ExpectQuestion("The Project Was Not Saved", u"Cancel")
               : mDialogs.ExpectMessage("The Project Was Not Saved");
        EXPECT_FALSE(Manager().SaveProject(document));
        EXPECT_TRUE(AsksFor(trouble.mTold)) << mDialogs.LastText();
        EXPECT_TRUE(document->IsDirty() && !document->IsReadOnly());
        trouble.mEnd();
        mMain.Advance(4s);
        EXPECT_EQ(document->GetTrouble(), u"");
        EXPECT_TRUE(Manager().SaveProject(document)) << "it goes on by itself";
    }
    for (int i = 0; i < 2; ++i) {
        mFolder.Remove(kLock);
        mMain.Advance(3s);
        mFolder.Write(kLock, lock);
        mMain.Advance(3s);
    }
    EXPECT_TRUE(!document->IsReadOnly() && mNotices.empty()) << "what is not seen twice is none either";
    EXPECT_TRUE(Manager().CloseProject(document, true));
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockWatchTest, ALossIsLeftToTheOperationThatIsUnderWay) {
    const desk::ProjectDocumentRef document = OpenAndFind();
    Edit(document, u"mine");
    mDialogs.mMeanwhile = [&, isFirst = true]() mutable {
        if (!std::exchange(isFirst, false)) return;
        WriteForeignLock();
        mMain.Advance(10s);
        EXPECT_FALSE(document->IsReadOnly());
    };
    mDialogs.ExpectQuestion("Save Changes", u"Save");
    mDialogs.ExpectQuestion("Lock Lost", u"Cancel");
    EXPECT_FALSE(Manager().CloseProject(document, true));
    mMain.Advance(10s);
    EXPECT_TRUE(document->IsReadOnly() && mNotices.empty()) << "the question has told it";
}
