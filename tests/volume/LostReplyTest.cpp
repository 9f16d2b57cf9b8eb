#include <gmock/gmock.h>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/files/FileException.h"
#include "tests/support/LogExpectation.h"
#include "tests/volume/FaultyMount.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;

namespace {

/// A rule by which the volume fails, how many rounds make at least 1,000 failures, whether the user hears of
/// them (else they are all recovered from), and the saves in a round.
struct Rule {
    const char* mText;
    int mRounds;
    bool mIsTold = true;
    int mSaves = 1;
};

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.mText;
}

/// The user's operations on a real mount of which every second reply is lost: what was done is reported as
/// failed.
class LostReply : public testing::TestWithParam<Rule> {
protected:
    static constexpr char kHere[] = "Cuts/Scene 1.zuproj";
    static constexpr char kThere[] = "Sound/Scene 1.zuproj";
    static constexpr int kProjects = 6;

    /// Moves a project; the other side's lock never stands in the way, since nobody has one.
    void Move(Stack& stack, const std::string& from, const std::string& to) {
        for (int attempt = 0; attempt < 4 && !std::filesystem::exists(Source(to)); ++attempt) {
            const std::size_t told = stack.Told().size();
            try {
                Utils::CopyFiles({stack.PathUTF16(from)}, FolderOf(stack, to), true, false);
            } catch (const FileException&) {
                continue;
            }
            EXPECT_TRUE(std::filesystem::exists(Source(to)) || stack.Told().size() > told) << "nobody was told";
            Settle(stack);
        }
        ASSERT_TRUE(std::filesystem::exists(Source(to)));
        ASSERT_FALSE(std::filesystem::exists(Source(from)));
    }

    void OpenAndSave(Stack& stack, const std::string& name, int version) {
        desk::ProjectDocumentRef document;
        for (int save = 0; save < GetParam().mSaves && !HasFatalFailure(); ++save) {
            for (int attempt = 0; attempt < 4 && !(document && document->IsDirty()); ++attempt)
                document = stack.OpenAndEdit(name);
            ASSERT_TRUE(document) << "it could not be opened";
            Save(stack, *document, version + save);
        }
        ASSERT_TRUE(stack.mDocuments->CloseProject(document, false));
        Settle(stack);
    }

    void Save(Stack& stack, desk::ProjectDocument& document, int version) {
        for (int attempt = 0; attempt < 4 && document.IsDirty(); ++attempt) {
            const std::size_t told = stack.Told().size();
            const bool isSaved = stack.mDocuments->SaveProject(&document);
            EXPECT_TRUE(isSaved || stack.Told().size() > told) << "nobody was told";
        }
        ASSERT_FALSE(document.IsDirty()) << "it could not be saved";
        const std::string path = host::UTF16to8(document.GetProjectPath()).substr(stack.mProduction.size());
        ASSERT_EQ(mFolder.Read("North Shore" + path), testproduction::MakeContent(1, version));
    }

    void Settle(Stack& stack) {
        stack.mMain.RunUntilIdle();
        if (stack.mMain.CountDelayed() > 0) stack.Settle();
    }
    std::string Source(const std::string& name) const { return mFolder.Path("North Shore/" + name); }
    static UTF16String FolderOf(const Stack& stack, const std::string& name) {
        return stack.PathUTF16(name.substr(0, name.rfind('/')));
    }

    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
};

INSTANTIATE_TEST_SUITE_P(Rules, LostReply,
                         testing::Values(Rule{"link:2:5:after", 510, false}, Rule{"create:2:5:after", 360},
                                         Rule{"unlink:2:5:after", 300, false},
                                         Rule{"rename:2:5:after", 205, true, 5}, Rule{"write:2:5:after", 270},
                                         Rule{"fsync:2:5:after", 260}),
                         [](const auto& rule) {
                             const std::string text = rule.param.mText;
                             return text.substr(0, text.find(':'));
                         });

}  // namespace

TEST_P(LostReply, LeavesNoOrphanNoFalseHolderAndNoHalfSavedProject) {
    if (!FaultyMount::IsPossible()) GTEST_SKIP() << "no /dev/fuse: lost replies were not tried";
    std::optional<ExpectLogged> errors;
    if (GetParam().mIsTold) errors.emplace("Input/output error");
    const std::string production = mFolder.MakeFolder("North Shore");
    testproduction::Make(production, kProjects);
    FaultyMount mount(mFolder.Path(), GetParam().mText);
    if (!mount.IsMounted())
        GTEST_SKIP() << "not allowed to mount, lost replies were not tried: " << mount.ErrorText();
    {
        Stack stack(mount.Path("North Shore"));
        for (int round = 0; round < GetParam().mRounds && !HasFatalFailure(); ++round) {
            SCOPED_TRACE("round " + std::to_string(round));
            Move(stack, round % 2 ? kThere : kHere, round % 2 ? kHere : kThere);
            OpenAndSave(stack, round % 2 ? kHere : kThere, round * GetParam().mSaves + 1);
            const auto found = testproduction::Examine(production);
            ASSERT_EQ(found.DescribeLosses(kProjects), "");
            ASSERT_THAT(found.mHidden, testing::IsEmpty());
        }
    }
    EXPECT_GE(mount.CountFailures(), 1000);
}
