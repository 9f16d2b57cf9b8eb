#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "desk/core/Log.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "tests/support/LogExpectation.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;
using testing::IsEmpty;

namespace {

constexpr int kProjects = 6;

using Step = std::function<void(Stack&)>;
using Check = std::function<bool(Stack&)>;

/// One operation of the user's, on a production of projects "Scene 0" to "Scene 5" ("Cuts" holds 1, "Reels" 2,
/// and so on, see `testproduction::Make`).
struct Case {
    const char* mName;
    Step mPrepare;
    Step mRun;
    Check mIsDone;
    /// Whole copies are no fault: the operation makes one, or removes the source only after the copy is
    /// complete.
    bool mMakesCopies = false;
    /// Where it is specified to do nothing without a word; the log has it.
    bool mMayBeSilent = false;
    /// An empty project that it makes.
    const char* mNew = nullptr;
};

void PrintTo(const Case& operation, std::ostream* out) {
    *out << operation.mName;
}

constexpr char kScene[] = "Cuts/Scene 1.zuproj";

bool Exists(const Stack& stack, const std::string& name) {
    return std::filesystem::exists(stack.Path(name));
}

/// True when `there` stands in the production, and `gone` does not.
Check Is(const std::string& there, const std::string& gone = "nothing") {
    return [=](Stack& stack) { return Exists(stack, there) && !Exists(stack, gone); };
}

Check IsInTrash(const std::string& name) {
    return [=](Stack& stack) { return std::filesystem::exists(stack.TrashFolder() + '/' + name); };
}

host::ProjectRef FindOpen(const Stack& stack, const std::string& name) {
    host::ProjectRef project;
    IsProjectOpen(stack.PathUTF16(name), project);
    return project;
}

Check IsOpen(const std::string& name) {
    return [=](Stack& stack) { return FindOpen(stack, name) != nullptr; };
}

bool IsSaved(Stack& stack) {
    return testproduction::Examine(stack.mProduction).mVersions[1] == 1;
}

Step Trash(const std::string& name) {
    return [=](Stack& stack) { Utils::MoveToSharedProjectsTrash({stack.PathUTF16(name)}, false, true); };
}

/// Into the folder "Sound".
Step Copy(const std::string& name, bool move = false) {
    return
        [=](Stack& stack) { Utils::CopyFiles({stack.PathUTF16(name)}, stack.PathUTF16("Sound"), move, true); };
}

Step Move(const std::string& name) {
    return Copy(name, true);
}

/// Who renames tells the user, by the result or what is thrown.
void Rename(Stack& stack) {
    if (!Utils::MoveProjectAndLockFiles(stack.PathUTF16(kScene), stack.PathUTF16("Cuts/Final.zuproj")))
        stack.mDialogs.mTold.push_back("not renamed");
}

void Nothing(Stack&) {}
void MakeTrash(Stack& stack) {
    std::filesystem::create_directory(stack.TrashFolder());
}
void OpenOne(Stack& stack) {
    MakeTrash(stack);
    stack.OpenAndEdit(kScene);
}
void ManyVolumes(Stack& stack) {
    stack.mVolume.SetVolumes(true);
}
void OpenOnManyVolumes(Stack& stack) {
    OpenOne(stack);
    ManyVolumes(stack);
}

std::vector<Case> MakeCases() {
    const Check isRenamed = Is("Cuts/Final.zuproj", kScene);
    const Check isMoved = Is("Sound/Scene 1.zuproj", kScene);
    const Check areMoved = Is("Sound/Cuts/Scene 1.zuproj", "Cuts");
    const Check areOpenThere = IsOpen("Sound/Cuts/Scene 1.zuproj");
    return {
        {"RenameProject", Nothing, Rename, isRenamed},
        {"RenameOpenProject", OpenOne, Rename, IsOpen("Cuts/Final.zuproj")},
        {"MoveProject", Nothing, Move(kScene), isMoved},
        {"MoveOpenProject", OpenOne, Move(kScene), isMoved},
        {"MoveFolder", Nothing, Move("Cuts"), areMoved},
        {"MoveFolderOfOpenProject", OpenOne, Move("Cuts"),
         [=](Stack& stack) { return areMoved(stack) && areOpenThere(stack); }},
        {"MoveProjectAcrossVolumes", ManyVolumes, Move(kScene), isMoved, true},
        {"MoveOpenProjectAcrossVolumes", OpenOnManyVolumes, Move(kScene), isMoved, true},
        {"MoveFolderAcrossVolumes", ManyVolumes, Move("Cuts"), areMoved, true},
        {"MoveFolderOfOpenProjectAcrossVolumes", OpenOnManyVolumes, Move("Cuts"), areMoved, true},
        {"CopyProject", Nothing, Copy(kScene), Is("Sound/Scene 1.zuproj"), true},
        {"CopyFolder", Nothing, Copy("Reels"), Is("Sound/Reels/North/Scene 3.zuproj"), true},
        {"AddProject", Nothing,
         [](Stack& stack) {
             AddProjectToZuProduction(stack.PathUTF16(kScene), stack.PathUTF16("Sound/New.zuproj"));
         },
         Is("Sound/New.zuproj"), true},
        {"TrashProject", MakeTrash, Trash(kScene), IsInTrash("Scene 1.zuproj")},
        {"TrashFolder", MakeTrash, Trash("Reels"), IsInTrash("Reels/North/Scene 3.zuproj")},
        {"TrashOpenProject", OpenOne, Trash(kScene), IsInTrash("Scene 1.zuproj")},
        {"TrashForTheFirstTime", Nothing, Trash(kScene), IsInTrash("Scene 1.zuproj"), false, true},
        {"Open", Nothing, [](Stack& stack) { stack.mDocuments->OpenProject(stack.PathUTF16(kScene)); },
         IsOpen(kScene)},
        {"Save", OpenOne, [](Stack& stack) { stack.mDocuments->SaveProject(FindOpen(stack, kScene)); },
         IsSaved},
        {"SaveAndClose", OpenOne,
         [](Stack& stack) { stack.mDocuments->CloseProject(FindOpen(stack, kScene), true); },
         [](Stack& stack) { return IsSaved(stack) && !FindOpen(stack, kScene); }},
        {"CreateProject", Nothing,
         [](Stack& stack) { stack.mDocuments->CreateProject(stack.PathUTF16("Cuts")); },
         Is("Cuts/Untitled.zuproj"), false, false, "Cuts/Untitled.zuproj"},
        {"CreateFolder", Nothing,
         [](Stack& stack) { FileUtils::CreateNewDirectory(stack.PathUTF16("Cuts/New")); }, Is("Cuts/New")},
    };
}

std::string Join(const std::vector<std::string>& lines) {
    std::ostringstream text;
    for (const std::string& line : lines) text << line << '\n';
    return text.str();
}

using Lies = FaultyFileSystem::Lies;

/// What the disk can do, and what it answers after a lost reply.
struct Volume {
    const char* mName;
    bool mHasLinks;
    Lies mLies;
};

constexpr Volume kVolumes[] = {
    {"that tells the truth", true, Lies::None},
    {"without links", false, Lies::None},
};

class EveryFault : public testing::TestWithParam<Case> {
protected:
    /// Runs the operation with its `nth` step failing; false when it has not so many.
    bool RunWithFault(const Volume& volume, int nth, bool isAfter) {
        Stack stack;
        testproduction::Make(stack.mProduction, kProjects);
        stack.mVolume.SetHasLinks(volume.mHasLinks);
        GetParam().mPrepare(stack);
        stack.Settle();
        EXPECT_THAT(stack.Told(), IsEmpty());
        stack.mVolume.ResetCounts();
        stack.mVolume.SetLies(volume.mLies);
        isAfter ? stack.mVolume.FailAfter(FaultyFileSystem::Operation::Any, nth, EIO)
                : stack.mVolume.Fail(FaultyFileSystem::Operation::Any, nth, EIO);
        std::string thrown;
        try {
            GetParam().mRun(stack);
        } catch (const FileException& exception) {
            thrown = exception.what();
            desk::Log(desk::LogLevel::Warning, thrown);
        }
        stack.mMain.RunUntilIdle();
        stack.mVolume.ForgetLies();
        const bool isReached = stack.mVolume.Count(FaultyFileSystem::Operation::Any) >= nth;
        stack.Settle();
        CheckOutcome(stack, thrown, isReached);
        return isReached;
    }

    void RunWithEachFault(const Volume& volume, bool isAfter) {
        int nth = 1;
        for (bool isReached = true; isReached && !HasFailure(); ++nth) {
            SCOPED_TRACE((isAfter ? "after step " : "before step ") + std::to_string(nth));
            isReached = RunWithFault(volume, nth, isAfter);
        }
        EXPECT_TRUE(nth > 2 || HasFailure()) << "it took no step";
        ASSERT_LT(nth, 500);
    }

    void CheckOutcome(Stack& stack, const std::string& thrown, bool isReached) {
        const bool isDone = GetParam().mIsDone(stack);
        EXPECT_TRUE(isDone || isReached) << "it fails by itself";
        std::vector<std::string> told = stack.Told();
        if (!thrown.empty()) told.push_back(thrown);
        EXPECT_TRUE(isDone || GetParam().mMayBeSilent || !told.empty()) << "nobody was told";
        EXPECT_TRUE(isReached || told.empty());
        const std::vector<host::ProjectRef> open = host::GetOpenProjectList();
        for (const host::ProjectRef& project : open) {
            EXPECT_TRUE(std::filesystem::exists(UTF16to8(project->GetProjectPath()))) << "open, but gone";
            EXPECT_TRUE(stack.mDocuments->CloseProject(project, false));
        }
        stack.Settle();
        if (const char* made = GetParam().mNew; made && Exists(stack, made)) {
            EXPECT_EQ(std::filesystem::file_size(stack.Path(made)), 0u);
            std::filesystem::remove(stack.Path(made));
        }
        const auto findings = testproduction::Examine(stack.mProduction);
        EXPECT_EQ(findings.DescribeLosses(kProjects, GetParam().mMakesCopies), "");
        const std::string toldText = Join(told);
        for (const std::string& hidden : findings.mHidden)
            EXPECT_TRUE(toldText.find(hidden) != std::string::npos)
                << "left behind, and nobody told: " << hidden;
        if (HasFailure()) ADD_FAILURE() << "told:\n" << toldText;
    }
};

INSTANTIATE_TEST_SUITE_P(Operations, EveryFault, testing::ValuesIn(MakeCases()),
                         [](const auto& operation) { return std::string(operation.param.mName); });

}  // namespace

TEST_P(EveryFault, AtEachStepBeforeAndAfterItIsToldAndLosesNothing) {
    const ExpectLogged anything("");
    for (const Volume& volume : kVolumes) {
        SCOPED_TRACE(std::string("on a volume ") + volume.mName);
        if (volume.mLies == Lies::None) RunWithEachFault(volume, false);
        RunWithEachFault(volume, true);
    }
}
