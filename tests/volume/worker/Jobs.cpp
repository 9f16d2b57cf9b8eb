#include "tests/volume/worker/Jobs.h"

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/files/Dir.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
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

/// What a worker process does with a production, at random.
struct Job {
    /// One step of the job called `name`; false for an unknown name.
    bool Step(const std::string& name) {
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

    void Take() {
        UTF16String user, machine;
        GetProjectLockingPrefs(user, machine);
        for (const std::string& project : testproduction::List(mFolder).mProjects) {
            const auto lock = CreateProjectLockFile(UTF8to16(project), user, machine);
            if (!lock || !lock->IsLocked()) throw std::logic_error("a lock could not be taken");
        }
    }

    void Move() {
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

    void Save() {
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

    void Copy() {
        const UTF16String folder = UTF8to16(PickFolder());
        UTF16StringVec sources;
        for (const std::string& project : testproduction::List(mFolder).mProjects)
            sources.push_back(UTF8to16(project));
        if (mRandom() % 2) sources = {UTF8to16(PickFolder())};
        if (sources.front() != UTF8to16(mFolder)) Utils::CopyFiles(sources, folder, false, true);
    }

    /// A copy beside it of "Reels", or of project 0.
    void Duplicate() {
        const bool isFolder = mRandom() % 2;
        const UTF16String source = UTF8to16(mFolder + (isFolder ? "/Reels" : "/Scene 0.zuproj"));
        const UTF16String copy = GetZuProductionItemCopyPath(source, {});
        if (!isFolder) return AddProjectToZuProduction(source, copy);
        host::Dir(copy).Create();
        Utilities::CopyDirectoryTree(source, copy);
    }

    void Add() {
        AddProjectToZuProduction(UTF8to16(PickProject()),
                                 Join(UTF8to16(PickFolder()), UTF8to16(MakeName() + ".zuproj")));
    }

    void SaveAsCopy() {
        const UTF16String path = UTF8to16(PickProject());
        auto& documents = *desk::ProjectDocuments::Instance();
        ProjectRef project;
        if (!documents.OpenProject(path) || !IsProjectOpen(path, project)) return;
        mHost.mDialogs.mNewFiles = 1;
        documents.SaveProjectAsCopy(project);
        documents.CloseAllProjects();
    }

    void Trash() {
        if (mRandom() % 2) return Restore();
        const std::string item = mRandom() % 5 == 0 ? PickFolder() : PickProject();
        if (item != mFolder && item != mHost.TrashFolder())
            Utils::MoveToSharedProjectsTrash({UTF8to16(item)}, false, true);
    }

    void Shuffle() { mRandom() % 5 == 0 ? Trash() : Move(); }

    void RenameProject() {
        const UTF16String project = UTF8to16(PickProject());
        Utils::MoveProjectAndLockFiles(project, Join(FolderOf(project), UTF8to16(MakeName() + ".zuproj")));
    }

    void MoveProject() { Utils::CopyFiles({UTF8to16(PickProject())}, UTF8to16(PickFolder()), true, true); }

    void RenameFolder() {
        const std::string folder = PickFolder();
        if (folder == mFolder || folder == mHost.TrashFolder()) return;
        const UTF16String source = UTF8to16(folder);
        const UTF16String destination = Join(FolderOf(source), UTF8to16(MakeName()));
        if (File::Move(source, destination) == 0)
            Utils::UpdatePathsOfOpenProjectsAndLockFiles(source, destination);
    }

    void MoveFolder() {
        const std::string folder = PickFolder();
        if (folder == mFolder || folder == mHost.TrashFolder()) return;
        Utils::CopyFiles({UTF8to16(folder)}, UTF8to16(PickFolder()), true, true);
    }

    void Restore() {
        const testproduction::Items trashed = testproduction::List(mHost.TrashFolder());
        if (trashed.mProjects.empty()) return;
        Utils::CopyFiles({UTF8to16(PickOne(trashed.mProjects, mRandom))}, UTF8to16(PickFolder()), true, true);
    }

    std::string PickProject() {
        for (;;) {
            const testproduction::Items items = testproduction::List(mFolder);
            if (!items.mProjects.empty()) return PickOne(items.mProjects, mRandom);
        }
    }

    /// Any folder but the trash's inside; the production's too.
    std::string PickFolder() {
        const testproduction::Items items = testproduction::List(mFolder);
        std::string folder = PickOne(items.mFolders, mRandom);
        return folder.starts_with(mHost.TrashFolder()) ? mFolder : folder;
    }

    std::string MakeName() { return "Take " + std::to_string(mRandom() % 100'000); }

    HostProcess& mHost;
    const std::string mFolder;
    std::mt19937 mRandom;
};

}  // namespace

bool DoForLong(const std::string& job, HostProcess& host, const std::string& folder, unsigned seed,
               const std::function<bool()>& goesOn) {
    Job worker{host, folder, std::mt19937(seed)};
    while (goesOn())
        if (!worker.Step(job)) return false;
    return true;
}
