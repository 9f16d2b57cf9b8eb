#include "tests/volume/UserOperations.h"

#include <gmock/gmock.h>

#include <ostream>
#include <regex>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "desk/core/log/Log.h"
#include "host/files/Dir.h"
#include "host/files/File.h"
#include "host/files/FileUtils.h"
#include "host/project/ProductionItems.h"
#include "tests/volume/Stack.h"

using namespace HandlerSharedProjects;
using Kind = UserOperation::Kind;
using Step = std::function<void(Stack&)>;

namespace {

constexpr char kScene[] = "Cuts/Scene 1.zuproj";

host::ProjectRef FindOpen(const Stack& stack, const std::string& name) {
    host::ProjectRef project;
    IsProjectOpen(stack.PathUTF16(name), project);
    return project;
}

// How the operations begin.

void Nothing(Stack&) {}
void MakeTrash(Stack& stack) {
    std::filesystem::create_directory(stack.TrashFolder());
}
void OpenOne(Stack& stack) {
    MakeTrash(stack);
    stack.OpenAndEdit(kScene);
}
void OpenOneToCopy(Stack& stack) {
    OpenOne(stack);
    stack.mDialogs.mNewFiles = 1;
}
void ManyVolumes(Stack& stack) {
    stack.mVolume.SetVolumes(true);
}
void OpenOnManyVolumes(Stack& stack) {
    OpenOne(stack);
    ManyVolumes(stack);
}

// What they do.

/// Into the folder "Sound".
Step Copy(const std::string& name, bool move = false) {
    return
        [=](Stack& stack) { Utils::CopyFiles({stack.PathUTF16(name)}, stack.PathUTF16("Sound"), move, true); };
}
Step Move(const std::string& name) {
    return Copy(name, true);
}
Step Trash(const std::string& name) {
    return [=](Stack& stack) { Utils::MoveToSharedProjectsTrash({stack.PathUTF16(name)}, false, true); };
}
/// Who renames tells the user, by the result or what is thrown.
void Rename(Stack& stack) {
    if (!Utils::MoveProjectAndLockFiles(stack.PathUTF16(kScene), stack.PathUTF16("Cuts/Final.zuproj")))
        stack.mDialogs.mTold.push_back("not renamed");
}
void AddProject(Stack& stack) {
    AddProjectToZuProduction(stack.PathUTF16(kScene), stack.PathUTF16("Sound/New.zuproj"));
}
/// As the command does for a folder.
void MakeACopyOfFolder(Stack& stack) {
    const host::UTF16String copy = stack.PathUTF16("Reels copy");
    host::Dir(copy).Create();
    host::Utilities::CopyDirectoryTree(stack.PathUTF16("Reels"), copy);
}
void TakeAndGiveUp(Stack& stack) {
    host::UTF16String user, machine;
    host::GetProjectLockingPrefs(user, machine);
    const auto lock = host::CreateProjectLockFile(stack.PathUTF16(kScene), user, machine);
    stack.mMain.RunUntilIdle();
    EXPECT_EQ(lock && lock->IsLocked(), stack.Told().empty());
}
void CloseSaving(Stack& stack) {
    stack.mDocuments->CloseProject(FindOpen(stack, kScene), true);
}

// What has come of them.

enum class State { Done, NotDone, Between };

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}

bool Contains(const std::string& text, const char* pattern) {
    return std::regex_search(text, std::regex(pattern));
}

bool IsMoveInDoubt(const std::vector<std::string>& told) {
    return Contains(Join(told), "may or may not have been moved");
}

State FindState(const UserOperation& operation, Stack& stack, const testproduction::Findings& findings) {
    const auto isThere = [&](const std::string& name) {
        return std::filesystem::exists(stack.PathBehind(name));
    };
    const auto choose = [](bool isDone) { return isDone ? State::Done : State::NotDone; };
    switch (operation.mKind) {
        case Kind::Move:
            if (isThere(operation.mFrom) == isThere(operation.mTo)) return State::Between;
            return choose(isThere(operation.mTo));
        case Kind::Copy:
            return choose(
                isThere(operation.mTo) &&
                (operation.mProjects == 0 || !std::filesystem::is_empty(stack.PathBehind(operation.mTo))));
        case Kind::Save:
            return choose(findings.mVersions.at(1) == 1);
        case Kind::Open:
            return choose(FindOpen(stack, operation.mFrom) != nullptr);
        case Kind::Lock:
            break;
    }
    return choose(stack.Told().empty());
}

void ExpectTruth(const UserOperation& operation, State state, const std::string& told) {
    EXPECT_TRUE(!told.empty() || state == State::Done || operation.mMayBeSilent) << "nobody was told";
    const bool isOpen = Contains(told, "\\bmay\\b|still there|also stands");
    EXPECT_TRUE(isOpen || state != State::Between) << "it is at both places, and nobody was told";
    const char* const denials[] = {"not (moved|renamed)", "not (be )?(copied|made|created|added)", "not saved",
                                   "not opened", "cannot be locked"};
    const bool isDenied = Contains(told, denials[static_cast<int>(operation.mKind)]);
    EXPECT_TRUE(isOpen || !isDenied || state == State::NotDone) << "it is not as it was told";
}

std::vector<std::string> FindHiddenNames(const std::string& production) {
    std::vector<std::string> names;
    for (const std::string& hidden : testproduction::Examine(production).mHidden)
        names.push_back(std::filesystem::path(hidden).filename().string());
    return names;
}

/// Whatever stands at the new place is whole, or is an empty folder that `mayBeEmpty`.
void ExpectWhole(const UserOperation& operation, Stack& stack, bool mayBeEmpty) {
    const std::string place = stack.PathBehind(operation.mTo);
    if (operation.mTo.empty() || !std::filesystem::exists(place)) return;
    if (!std::filesystem::is_directory(place)) {
        if (operation.mProjects > 0) return;
        EXPECT_EQ(std::filesystem::file_size(place), 0u) << "a new project";
        std::filesystem::remove(place);
        return;
    }
    if (mayBeEmpty && std::filesystem::is_empty(place)) return;
    EXPECT_EQ(testproduction::List(place).mProjects.size(), operation.mProjects) << place << " is hollow";
}

}  // namespace

void PrintTo(const UserOperation& operation, std::ostream* out) {
    *out << operation.mName;
}

std::vector<UserOperation> MakeUserOperations() {
    const std::string moved = "Sound/Scene 1.zuproj";
    return {
        {"RenameProject", Kind::Move, Nothing, Rename, kScene, "Cuts/Final.zuproj"},
        {"RenameOpenProject", Kind::Move, OpenOne, Rename, kScene, "Cuts/Final.zuproj"},
        {"MoveProject", Kind::Move, Nothing, Move(kScene), kScene, moved},
        {"MoveOpenProject", Kind::Move, OpenOne, Move(kScene), kScene, moved},
        {"MoveFolder", Kind::Move, Nothing, Move("Cuts"), "Cuts", "Sound/Cuts"},
        {"MoveFolderOfOpenProject", Kind::Move, OpenOne, Move("Cuts"), "Cuts", "Sound/Cuts"},
        {"MoveProjectAcrossVolumes", Kind::Move, ManyVolumes, Move(kScene), kScene, moved},
        {"MoveOpenProjectAcrossVolumes", Kind::Move, OpenOnManyVolumes, Move(kScene), kScene, moved},
        {"MoveFolderAcrossVolumes", Kind::Move, ManyVolumes, Move("Reels"), "Reels", "Sound/Reels", 3},
        {"MoveFolderOfOpenProjectAcrossVolumes", Kind::Move, OpenOnManyVolumes, Move("Cuts"), "Cuts",
         "Sound/Cuts"},
        {"CopyProject", Kind::Copy, Nothing, Copy(kScene), kScene, moved},
        {"CopyFolder", Kind::Copy, Nothing, Copy("Reels"), "Reels", "Sound/Reels", 3},
        {"AddProject", Kind::Copy, Nothing, AddProject, kScene, "Sound/New.zuproj"},
        {"MakeACopyOfFolder", Kind::Copy, Nothing, MakeACopyOfFolder, "Reels", "Reels copy", 3},
        {"TrashProject", Kind::Move, MakeTrash, Trash(kScene), kScene, "Trash/Scene 1.zuproj"},
        {"TrashFolder", Kind::Move, MakeTrash, Trash("Reels"), "Reels", "Trash/Reels", 3},
        {"TrashOpenProject", Kind::Move, OpenOne, Trash(kScene), kScene, "Trash/Scene 1.zuproj"},
        {"TrashForTheFirstTime", Kind::Move, Nothing, Trash(kScene), kScene, "Trash/Scene 1.zuproj", 1, true},
        {"Open", Kind::Open, Nothing,
         [](Stack& stack) { stack.mDocuments->OpenProject(stack.PathUTF16(kScene)); }, kScene},
        {"Save", Kind::Save, OpenOne,
         [](Stack& stack) { stack.mDocuments->SaveProject(FindOpen(stack, kScene)); }, kScene},
        {"SaveAndClose", Kind::Save, OpenOne, CloseSaving, kScene},
        {"SaveAsCopy", Kind::Copy, OpenOneToCopy,
         [](Stack& stack) { stack.mDocuments->SaveProjectAsCopy(FindOpen(stack, kScene)); }, kScene,
         "Cuts/Scene 1 copy.zuproj"},
        {"CreateProject", Kind::Copy, Nothing,
         [](Stack& stack) { stack.mDocuments->CreateProject(stack.PathUTF16("Cuts")); }, "",
         "Cuts/Untitled.zuproj", 0},
        {"CreateFolder", Kind::Copy, Nothing,
         [](Stack& stack) { FileUtils::CreateNewDirectory(stack.PathUTF16("Cuts/New")); }, "", "Cuts/New", 0},
        {"TakeAndGiveUpALock", Kind::Lock, Nothing, TakeAndGiveUp, kScene},
    };
}

std::vector<std::string> RunOperation(const UserOperation& operation, Stack& stack) {
    std::vector<std::string> thrown;
    try {
        operation.mRun(stack);
    } catch (const FileException& exception) {
        thrown.push_back(exception.what());
        desk::Log(desk::LogLevel::Warning, exception.what());
    }
    stack.mMain.RunUntilIdle();
    stack.mVolume.ForgetLies();
    stack.Settle();
    std::vector<std::string> told = stack.Told();
    std::ranges::move(thrown, std::back_inserter(told));
    return told;
}

bool CheckOutcome(const UserOperation& operation, Stack& stack, const std::vector<std::string>& told,
                  bool keepsNames) {
    const bool isInDoubt = keepsNames && IsMoveInDoubt(told);
    for (const host::ProjectRef& project : host::GetOpenProjectList()) {
        const std::string path = UTF16to8(project->GetProjectPath());
        const bool isThere =
            std::filesystem::exists(stack.PathBehind(path.substr(stack.mProduction.size() + 1)));
        EXPECT_TRUE(isThere || isInDoubt) << "open, but gone: " << path;
    }
    auto findings = testproduction::Examine(stack.mBehind);
    const State state = FindState(operation, stack, findings);
    ExpectWhole(operation, stack, keepsNames && !told.empty());
    if (operation.mProjects == 0) findings = testproduction::Examine(stack.mBehind);
    const bool mayBeTwice = operation.mKind == Kind::Copy || state == State::Between;
    EXPECT_EQ(findings.DescribeLosses(kUserProjects, mayBeTwice), "");
    ExpectTruth(operation, state, Join(told));
    return state == State::Done;
}

void CheckNothingIsLeft(const std::string& folder, const std::vector<std::string>& told, bool keepsNames) {
    RecordingDesktop desktop;
    if (keepsNames) testproduction::Sweep(folder, desktop);
    for (const std::string& name : FindHiddenNames(folder))
        EXPECT_TRUE(desk::IsTemporaryName(name) || (keepsNames && IsMoveInDoubt(told))) << "left: " << name;
    // The next start of the machine.
    desktop.mBootID.back() = 'f';
    testproduction::Sweep(folder, desktop);
    for (const std::string& name : FindHiddenNames(folder))
        EXPECT_NE(Join(told).find(name), std::string::npos) << "left for good, and nobody told: " << name;
}
