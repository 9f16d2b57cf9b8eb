#include <gmock/gmock.h>

#include <thread>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "desk/files/PosixFileSystem.h"
#include "desk/files/ReplaceFile.h"
#include "desk/project/LockProtocol.h"
#include "host/files/FileException.h"
#include "tests/support/LogExpectation.h"
#include "tests/volume/FaultyMount.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;
using desk::LockTaking;

namespace {

constexpr int kProjects = 6;
constexpr int kRounds = 20;
constexpr int kFiles = 64;
constexpr char kHere[] = "Cuts/Scene 1.zuproj";
constexpr char kThere[] = "Sound/Scene 1.zuproj";

/// Which calls the volume fails, and how often in all at least.
struct Rule {
    const char* mText;
    int mFailures;
    /// The user hears of some; else they are all recovered from.
    bool mIsTold = true;
};

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.mText;
}

/// A production on two mounts that fail by a rule: ours, where a user works, and that of another machine.
class LostReply : public testing::TestWithParam<Rule> {
protected:
    LostReply() { mOtherMachine.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82"; }

    void UserMoves(const std::string& from, const std::string& to) {
        Insist([&] {
            try {
                Utils::CopyFiles({mStack->PathUTF16(from)}, mStack->PathUTF16(to.substr(0, to.rfind('/'))),
                                 true, false);
            } catch (const FileException& exception) {
                mStack->mDialogs.mTold.push_back(exception.what());
            }
            return Exists(to);
        });
        ASSERT_FALSE(Exists(from));
    }

    void UserOpensAndSaves(const std::string& name, int version) {
        desk::ProjectDocumentRef document;
        Insist([&] {
            document = mStack->OpenAndEdit(name);
            return document && document->IsDirty();
        });
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_NE(OtherTakes(name).mOutcome, LockTaking::Outcome::Ours) << "the user has it";
        Insist([&] { return mStack->mDocuments->SaveProject(document) && !document->IsDirty(); });
        EXPECT_EQ(mFolder.Read(name), testproduction::MakeContent(1, version));
        EXPECT_TRUE(mStack->mDocuments->CloseProject(document, false));
        Settle();
    }

    /// The user tries four times at most, and is told whenever it did not work.
    void Insist(const std::function<bool()>& attempt) {
        for (int i = 0; i < 4; ++i) {
            const std::size_t told = mStack->Told().size();
            const bool isDone = attempt();
            Settle();
            if (isDone) return;
            EXPECT_GT(mStack->Told().size(), told) << "nobody was told";
        }
        FAIL() << "it could not be done";
    }

    LockTaking OtherTakes(const std::string& project) {
        const auto mine = desk::MakeLockRecord(mOtherMachine, u"tomas", u"edit-bay-2");
        const std::string lock = OtherPath(project);
        const LockTaking taking = mProtocol.Take(lock, mine);
        for (const desk::LockRemains& remains : mProtocol.TakeRemains()) mProtocol.RemoveRemains(remains);
        if (taking.mOutcome == LockTaking::Outcome::Ours) {
            ++mTaken;
            EXPECT_EQ(mProtocol.Release(lock, mine.mNonce), desk::LockRelease::Done);
        }
        return taking;
    }
    /// What it is told of each is true.
    void OtherReplacesAFile(const std::string& name, int version) {
        using Outcome = desk::FileReplacement::Outcome;
        const std::string before = mFolder.Read(name);
        const std::string after = std::to_string(version);
        const Outcome outcome = desk::ReplaceFile(mDisk, mOther->Path(name), after, 0600).mOutcome;
        const std::string found = mFolder.Read(name);
        EXPECT_EQ(found, outcome == Outcome::Done ? after : outcome == Outcome::NotDone ? before : found);
        EXPECT_THAT(found, testing::AnyOf(before, after));
    }
    /// Several at a time, since each failure waits until caches have run out.
    void OtherReplacesFiles(int version) {
        std::vector<std::jthread> others;
        for (int file = 0; file < kFiles; ++file)
            others.emplace_back([this, file, version] {
                OtherReplacesAFile("settings " + std::to_string(file) + ".json", version);
            });
    }
    /// What the other machine does in a round: locks taken and given up, and files replaced, while nobody
    /// works.
    void OtherWorks(int round) {
        const bool isOfRenames = std::string(GetParam().mText).starts_with("rename");
        const int count = isOfRenames ? 5 : 2 * GetParam().mFailures / kRounds + 8;
        for (int i = 0; i < count && !HasFailure(); ++i)
            EXPECT_NE(OtherTakes("Scene 0.zuproj").mOutcome, LockTaking::Outcome::Held) << "nobody has it";
        if (isOfRenames && round % 4 == 0) OtherReplacesFiles(round);
    }

    void Settle() {
        mStack->mMain.RunUntilIdle();
        if (mStack->mMain.CountDelayed() > 0) mStack->Settle();
    }
    bool Exists(const std::string& name) const { return mFolder.Exists(name); }
    std::string OtherPath(const std::string& project) const {
        const std::size_t name = project.rfind('/') + 1;
        return mOther->Path(project.substr(0, name) + '.' + project.substr(name) + ".lock");
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
    std::unique_ptr<FaultyMount> mOurs, mOther;
    std::unique_ptr<Stack> mStack;
    desk::PosixFileSystem mDisk;
    RecordingDesktop mOtherMachine;
    desk::LockProtocol mProtocol{mDisk, mOtherMachine};
    int mTaken = 0;
};

INSTANTIATE_TEST_SUITE_P(Rules, LostReply,
                         testing::Values(Rule{"link:2:5:after", 1000, false}, Rule{"create:2:5:after", 1000},
                                         Rule{"unlink:2:5:after", 1000, false},
                                         Rule{"rename:2:5:after", 100, false}, Rule{"write:2:5:after", 1000},
                                         Rule{"fsync:2:5:after", 1000}, Rule{"link:2:17:after", 100, false},
                                         Rule{"unlink:2:2:after", 100, false}, Rule{"link:5:5:before", 40},
                                         Rule{"create:2:5:before", 100}, Rule{"unlink:2:5:before", 100, false},
                                         Rule{"rename:2:5:before", 100}, Rule{"write:5:28:before", 40},
                                         Rule{"fsync:2:5:before", 100}),
                         [](const auto& rule) {
                             std::string name = rule.param.mText;
                             std::ranges::replace(name, ':', '_');
                             return name;
                         });

}  // namespace

TEST_P(LostReply, LeavesNoOrphanNoFalseHolderAndNoHalfSavedProject) {
    if (!FaultyMount::IsPossible()) GTEST_SKIP() << "no /dev/fuse: lost replies were not tried";
    std::optional<ExpectLogged> errors;
    if (GetParam().mIsTold) errors.emplace("");
    testproduction::Make(mFolder.Path(), kProjects);
    for (int file = 0; file < kFiles; ++file) mFolder.Write("settings " + std::to_string(file) + ".json");
    mOurs = std::make_unique<FaultyMount>(mFolder.Path(), GetParam().mText);
    mOther = std::make_unique<FaultyMount>(mFolder.Path(), GetParam().mText);
    if (!mOurs->IsMounted() || !mOther->IsMounted())
        GTEST_SKIP() << "not allowed to mount, lost replies were not tried: " << mOurs->ErrorText();
    mStack = std::make_unique<Stack>(mOurs->Path());
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::string from = round % 2 ? kThere : kHere;
        const std::string to = round % 2 ? kHere : kThere;
        UserMoves(from, to);
        OtherWorks(round);
        UserOpensAndSaves(to, round + 1);
        const auto found = testproduction::Examine(mFolder.Path());
        EXPECT_EQ(found.DescribeLosses(kProjects), "");
        EXPECT_THAT(found.mHidden, testing::IsEmpty());
    }
    mStack.reset();
    EXPECT_GT(mTaken, kRounds);
    EXPECT_GE(mOurs->CountFailures() + mOther->CountFailures(), GetParam().mFailures);
}
