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

/// One operation of the user's, on a production of projects "Scene 0" to "Scene 5" ("Cuts" holds 1, "Reels" 2,
/// and so on, see `testproduction::Make`).
struct Case {
    const char* mName;
    std::function<void(Stack&)> mPrepare;
    std::function<void(Stack&)> mRun;
    /// True when it was done.
    std::function<bool(Stack&)> mIsDone;
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

bool Exists(const Stack& stack, const std::string& name) {
    return std::filesystem::exists(stack.Path(name));
}

bool IsInTrash(const Stack& stack, const std::string& name) {
    return std::filesystem::exists(stack.TrashFolder() + '/' + name);
}

void Trash(Stack& stack, const std::string& name) {
    Utils::MoveToSharedProjectsTrash({stack.PathUTF16(name)}, false, true);
}

void Copy(Stack& stack, const std::string& name, const std::string& folder, bool move) {
    Utils::CopyFiles({stack.PathUTF16(name)}, stack.PathUTF16(folder), move, true);
}

int VersionOf(const Stack& stack, int project) {
    auto findings = testproduction::Examine(stack.mProduction);
    return findings.mVersions[project];
}

host::ProjectRef FindOpen(const Stack& stack, const std::string& name) {
    host::ProjectRef project;
    IsProjectOpen(stack.PathUTF16(name), project);
    return project;
}

void Nothing(Stack&) {}
void MakeTrash(Stack& stack) {
    std::filesystem::create_directory(stack.TrashFolder());
}
void OpenOne(Stack& stack) {
    MakeTrash(stack);
    stack.OpenAndEdit("Cuts/Scene 1.zuproj");
}
void ManyVolumes(Stack& stack) {
    stack.mVolume.SetVolumes(true);
}
void OpenOnManyVolumes(Stack& stack) {
    OpenOne(stack);
    ManyVolumes(stack);
}
bool IsSceneInSound(Stack& stack) {
    return Exists(stack, "Sound/Scene 1.zuproj") && !Exists(stack, "Cuts/Scene 1.zuproj");
}
bool AreCutsInSound(Stack& stack) {
    return Exists(stack, "Sound/Cuts/Scene 1.zuproj") && !Exists(stack, "Cuts");
}
/// Who renames tells the user, by the result or what is thrown.
void Rename(Stack& stack) {
    if (!Utils::MoveProjectAndLockFiles(stack.PathUTF16("Cuts/Scene 1.zuproj"),
                                        stack.PathUTF16("Cuts/Final.zuproj")))
        stack.mDialogs.mTold.push_back("not renamed");
}
void MoveScene(Stack& stack) {
    Copy(stack, "Cuts/Scene 1.zuproj", "Sound", true);
}
void MoveCuts(Stack& stack) {
    Copy(stack, "Cuts", "Sound", true);
}

std::vector<Case> MakeMoves() {
    return {
        {"RenameProject", Nothing, Rename,
         [](Stack& stack) {
             return Exists(stack, "Cuts/Final.zuproj") && !Exists(stack, "Cuts/Scene 1.zuproj");
         }},
        {"RenameOpenProject", OpenOne, Rename,
         [](Stack& stack) {
             return Exists(stack, "Cuts/Final.zuproj") && FindOpen(stack, "Cuts/Final.zuproj");
         }},
        {"MoveProject", Nothing, MoveScene, IsSceneInSound},
        {"MoveOpenProject", OpenOne, MoveScene, IsSceneInSound},
        {"MoveFolder", Nothing, MoveCuts, AreCutsInSound},
        {"MoveFolderOfOpenProject", OpenOne, MoveCuts,
         [](Stack& stack) { return AreCutsInSound(stack) && FindOpen(stack, "Sound/Cuts/Scene 1.zuproj"); }},
        {"MoveProjectAcrossVolumes", ManyVolumes, MoveScene, IsSceneInSound, true},
        {"MoveOpenProjectAcrossVolumes", OpenOnManyVolumes, MoveScene, IsSceneInSound, true},
        {"MoveFolderAcrossVolumes", ManyVolumes, MoveCuts, AreCutsInSound, true},
        {"MoveFolderOfOpenProjectAcrossVolumes", OpenOnManyVolumes, MoveCuts, AreCutsInSound, true},
    };
}

std::vector<Case> MakeCopiesAndTrash() {
    return {
        {"CopyProject", Nothing, [](Stack& stack) { Copy(stack, "Cuts/Scene 1.zuproj", "Sound", false); },
         [](Stack& stack) { return Exists(stack, "Sound/Scene 1.zuproj"); }, true},
        {"CopyFolder", Nothing, [](Stack& stack) { Copy(stack, "Reels", "Sound", false); },
         [](Stack& stack) { return Exists(stack, "Sound/Reels/North/Scene 3.zuproj"); }, true},
        {"AddProject", Nothing,
         [](Stack& stack) {
             AddProjectToZuProduction(stack.PathUTF16("Cuts/Scene 1.zuproj"),
                                      stack.PathUTF16("Sound/New.zuproj"));
         },
         [](Stack& stack) { return Exists(stack, "Sound/New.zuproj"); }, true},
        {"TrashProject", MakeTrash, [](Stack& stack) { Trash(stack, "Cuts/Scene 1.zuproj"); },
         [](Stack& stack) { return IsInTrash(stack, "Scene 1.zuproj"); }},
        {"TrashFolder", MakeTrash, [](Stack& stack) { Trash(stack, "Reels"); },
         [](Stack& stack) { return IsInTrash(stack, "Reels/North/Scene 3.zuproj"); }},
        {"TrashOpenProject", OpenOne, [](Stack& stack) { Trash(stack, "Cuts/Scene 1.zuproj"); },
         [](Stack& stack) { return IsInTrash(stack, "Scene 1.zuproj"); }},
        {"TrashForTheFirstTime", Nothing, [](Stack& stack) { Trash(stack, "Cuts/Scene 1.zuproj"); },
         [](Stack& stack) { return IsInTrash(stack, "Scene 1.zuproj"); }, false, true},
    };
}

std::vector<Case> MakeDocumentWork() {
    return {
        {"Open", Nothing,
         [](Stack& stack) { stack.mDocuments->OpenProject(stack.PathUTF16("Cuts/Scene 1.zuproj")); },
         [](Stack& stack) { return FindOpen(stack, "Cuts/Scene 1.zuproj") != nullptr; }},
        {"Save", OpenOne,
         [](Stack& stack) { stack.mDocuments->SaveProject(FindOpen(stack, "Cuts/Scene 1.zuproj")); },
         [](Stack& stack) { return VersionOf(stack, 1) == 1; }},
        {"SaveAndClose", OpenOne,
         [](Stack& stack) { stack.mDocuments->CloseProject(FindOpen(stack, "Cuts/Scene 1.zuproj"), true); },
         [](Stack& stack) { return VersionOf(stack, 1) == 1 && !FindOpen(stack, "Cuts/Scene 1.zuproj"); }},
        {"CreateProject", Nothing,
         [](Stack& stack) { stack.mDocuments->CreateProject(stack.PathUTF16("Cuts")); },
         [](Stack& stack) { return Exists(stack, "Cuts/Untitled.zuproj"); }, false, false,
         "Cuts/Untitled.zuproj"},
        {"CreateFolder", Nothing,
         [](Stack& stack) {
             try {
                 FileUtils::CreateNewDirectory(stack.PathUTF16("Cuts/New"));
             } catch (const FileException& exception) {
                 desk::Log(desk::LogLevel::Warning, exception.what());
                 stack.mDialogs.mTold.push_back(exception.what());
             }
         },
         [](Stack& stack) { return Exists(stack, "Cuts/New"); }},
    };
}

std::vector<Case> MakeCases() {
    std::vector<Case> cases = MakeMoves();
    for (Case& more : MakeCopiesAndTrash()) cases.push_back(std::move(more));
    for (Case& more : MakeDocumentWork()) cases.push_back(std::move(more));
    return cases;
}

std::string Join(const std::vector<std::string>& lines) {
    std::ostringstream text;
    for (const std::string& line : lines) text << line << '\n';
    return text.str();
}

class EveryFault : public testing::TestWithParam<Case> {
protected:
    /// Runs the operation with its `nth` step failing; false when it has not so many.
    bool RunWithFault(int nth, bool isAfter) {
        Stack stack;
        testproduction::Make(stack.mProduction, kProjects);
        GetParam().mPrepare(stack);
        stack.Settle();
        EXPECT_THAT(stack.Told(), IsEmpty());
        stack.mVolume.ResetCounts();
        isAfter ? stack.mVolume.FailAfter(FaultyFileSystem::Operation::Any, nth, EIO)
                : stack.mVolume.Fail(FaultyFileSystem::Operation::Any, nth, EIO);
        std::string thrown;
        try {
            GetParam().mRun(stack);
        } catch (const FileException& exception) {
            thrown = exception.what();
        }
        stack.mMain.RunUntilIdle();
        const bool isReached = stack.mVolume.Count(FaultyFileSystem::Operation::Any) >= nth;
        stack.Settle();
        Check(stack, thrown, isReached);
        return isReached;
    }

    void Check(Stack& stack, const std::string& thrown, bool isReached) {
        const bool isDone = GetParam().mIsDone(stack);
        EXPECT_TRUE(isDone || isReached) << "it fails by itself";
        std::vector<std::string> told = stack.Told();
        if (!thrown.empty()) told.push_back(thrown);
        EXPECT_TRUE(isDone || GetParam().mMayBeSilent || !told.empty()) << "nobody was told";
        EXPECT_TRUE(isReached || told.empty());
        for (const desk::ProjectDocumentRef& document : GetOpenDocuments()) {
            EXPECT_TRUE(std::filesystem::exists(UTF16to8(document->GetProjectPath()))) << "open, but gone";
            EXPECT_TRUE(stack.mDocuments->CloseProject(document, false));
        }
        stack.Settle();
        if (const char* made = GetParam().mNew; made && Exists(stack, made)) {
            EXPECT_EQ(std::filesystem::file_size(stack.Path(made)), 0u);
            std::filesystem::remove(stack.Path(made));
        }
        const auto findings = testproduction::Examine(stack.mProduction);
        EXPECT_EQ(GetParam().mMakesCopies ? findings.DescribeLossesButCopies(kProjects)
                                          : findings.DescribeLosses(kProjects),
                  "");
        const std::string toldText = Join(told);
        for (const std::string& hidden : findings.mHidden)
            EXPECT_TRUE(toldText.find(hidden) != std::string::npos)
                << "left behind, and nobody told: " << hidden;
        if (HasFailure()) ADD_FAILURE() << "told:\n" << toldText;
    }

    static std::vector<desk::ProjectDocumentRef> GetOpenDocuments() {
        std::vector<desk::ProjectDocumentRef> documents;
        for (const host::ProjectRef& project : host::GetOpenProjectList())
            documents.push_back(desk::ToDocument(project));
        return documents;
    }
};

INSTANTIATE_TEST_SUITE_P(Operations, EveryFault, testing::ValuesIn(MakeCases()),
                         [](const auto& operation) { return std::string(operation.param.mName); });

}  // namespace

TEST_P(EveryFault, AtEachStepBeforeAndAfterItIsToldAndLosesNothing) {
    const ExpectLogged anything("");
    for (const bool isAfter : {false, true}) {
        int nth = 1;
        for (bool isReached = true; isReached && !HasFailure(); ++nth) {
            SCOPED_TRACE((isAfter ? "after step " : "before step ") + std::to_string(nth));
            isReached = RunWithFault(nth, isAfter);
        }
        EXPECT_TRUE(nth > 2 || HasFailure()) << "it took no step";
        ASSERT_LT(nth, 500);
    }
}
