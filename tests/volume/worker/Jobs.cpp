#include "tests/volume/worker/Jobs.h"

#include <thread>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectDocuments.h"
#include "host/files/Dir.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/DocumentManager.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectLockFile.h"
#include "tests/volume/TestProduction.h"
#include "tests/volume/worker/HostProcess.h"

using namespace HandlerSharedProjects;
using testproduction::PickOne;

namespace {

/// What the panel would tell the user: others move the same items.
void Try(const std::function<void()>& work) {
    try {
        work();
    } catch (const host::FileException& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
    }
}

UTF16String Join(const UTF16String& folder, const UTF16String& name) {
    return PathUtils::CombinePaths(folder, name);
}

UTF16String FolderOf(const UTF16String& path) {
    return PathUtils::GetFullDirectoryPart(path);
}

}  // namespace

Job::Job(HostProcess& host, std::string folder, unsigned seed)
    : mHost(host), mFolder(std::move(folder)), mRandom(seed) {}

bool Job::Step(const std::string& name) {
    const std::map<std::string, void (Job::*)()> steps = {
        {"take", &Job::Take},          {"move", &Job::Move},           {"save", &Job::Save},
        {"copy", &Job::Copy},          {"duplicate", &Job::Duplicate}, {"add", &Job::Add},
        {"save-as", &Job::SaveAsCopy}, {"trash", &Job::Trash},         {"shuffle", &Job::Shuffle}};
    const auto step = steps.find(name);
    if (step == steps.end()) return false;
    Try([&] { (this->*step->second)(); });
    mHost.Settle();
    return true;
}

void Job::Take() {
    UTF16String user, machine;
    GetProjectLockingPrefs(user, machine);
    for (const std::string& project : testproduction::List(mFolder).mProjects) {
        const auto lock = CreateProjectLockFile(UTF8to16(project), user, machine);
        if (!lock || !lock->IsLocked()) throw std::logic_error("a lock could not be taken");
    }
}

void Job::Move() {
    switch (mRandom() % 6) {
        case 0:
            return RenameFolder();
        case 1:
            return MoveFolder();
        case 2:
        case 3:
            return RenameProject();
        default:
            return MoveProject();
    }
}

void Job::Save() {
    const UTF16String path = UTF8to16(PickProject());
    DocumentManager& documents = *DocumentManager::Instance();
    if (!documents.OpenProject(path)) return;
    ProjectRef project;
    if (!IsProjectOpen(path, project)) return;
    const auto document = desk::ToDocument(project);
    for (int i = 0; i < 3; ++i) {
        const auto identity = testproduction::Identify(document->GetContent().mBytes);
        if (!identity) throw std::logic_error("what was read is not whole");
        const UTF16String text =
            UTF8to16(testproduction::MakeContent(identity->mNumber, identity->mVersion + 1));
        document->SetTextSource([text] { return text; });
        document->SetDirty(true);
        if (!documents.SaveProject(project)) break;
    }
    documents.CloseProject(project, false);
}

void Job::Copy() {
    const UTF16String folder = UTF8to16(PickFolder());
    UTF16StringVec sources;
    for (const std::string& project : testproduction::List(mFolder).mProjects)
        sources.push_back(UTF8to16(project));
    if (mRandom() % 2) sources = {UTF8to16(PickFolder())};
    if (sources.front() != UTF8to16(mFolder)) Utils::CopyFiles(sources, folder, false, true);
}

void Job::Duplicate() {
    const bool isFolder = mRandom() % 2;
    const UTF16String source = UTF8to16(mFolder + (isFolder ? "/Reels" : "/Scene 0.zuproj"));
    const UTF16String copy = GetZuProductionItemCopyPath(source, {});
    if (!isFolder) return AddProjectToZuProduction(source, copy);
    host::Dir(copy).Create();
    Utilities::CopyDirectoryTree(source, copy);
}

void Job::Add() {
    AddProjectToZuProduction(UTF8to16(PickProject()),
                             Join(UTF8to16(PickFolder()), UTF8to16(MakeName() + ".zuproj")));
}

void Job::SaveAsCopy() {
    const UTF16String path = UTF8to16(PickProject());
    auto& documents = *desk::ProjectDocuments::Instance();
    ProjectRef project;
    if (!documents.OpenProject(path) || !IsProjectOpen(path, project)) return;
    mHost.mDialogs.mNewFiles = 1;
    documents.SaveProjectAsCopy(project);
    documents.CloseAllProjects();
}

void Job::Trash() {
    if (mRandom() % 2) return Restore();
    const std::string item = mRandom() % 5 == 0 ? PickFolder() : PickProject();
    if (item != mFolder && item != mHost.TrashFolder())
        Utils::MoveToSharedProjectsTrash({UTF8to16(item)}, false, true);
}

void Job::Shuffle() {
    mRandom() % 5 == 0 ? Trash() : Move();
}

void Job::RenameProject() {
    const UTF16String project = UTF8to16(PickProject());
    Utils::MoveProjectAndLockFiles(project, Join(FolderOf(project), UTF8to16(MakeName() + ".zuproj")));
}

void Job::MoveProject() {
    Utils::CopyFiles({UTF8to16(PickProject())}, UTF8to16(PickFolder()), true, true);
}

void Job::RenameFolder() {
    const std::string folder = PickFolder();
    if (folder == mFolder || folder == mHost.TrashFolder()) return;
    const UTF16String source = UTF8to16(folder);
    const UTF16String destination = Join(FolderOf(source), UTF8to16(MakeName()));
    if (File::Move(source, destination) == 0) Utils::UpdatePathsOfOpenProjectsAndLockFiles(source, destination);
}

void Job::MoveFolder() {
    const std::string folder = PickFolder();
    if (folder == mFolder || folder == mHost.TrashFolder()) return;
    Utils::CopyFiles({UTF8to16(folder)}, UTF8to16(PickFolder()), true, true);
}

void Job::Restore() {
    const testproduction::Items trashed = testproduction::List(mHost.TrashFolder());
    if (trashed.mProjects.empty()) return;
    Utils::CopyFiles({UTF8to16(PickOne(trashed.mProjects, mRandom))}, UTF8to16(PickFolder()), true, true);
}

std::string Job::PickProject() {
    for (;;) {
        const testproduction::Items items = testproduction::List(mFolder);
        if (!items.mProjects.empty()) return PickOne(items.mProjects, mRandom);
    }
}

std::string Job::PickFolder() {
    const testproduction::Items items = testproduction::List(mFolder);
    std::string folder = PickOne(items.mFolders, mRandom);
    return folder.starts_with(mHost.TrashFolder()) ? mFolder : folder;
}

std::string Job::MakeName() {
    return "Take " + std::to_string(mRandom() % 100'000);
}
