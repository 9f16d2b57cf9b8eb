#include <filesystem>
#include <fstream>

#include "benchmarks/HeapMeter.h"
#include "benchmarks/VolumeJobs.h"
#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "host/core/Strings.h"
#include "host/project/DocumentManager.h"
#include "tests/volume/worker/HostProcess.h"

namespace bench {

namespace {

constexpr int kProjects = 1000;
constexpr int kRuns = 3;

class LeakJob final : public VolumeJob {
public:
    LeakJob(HostProcess& host, const std::string& production)
        : VolumeJob({"heap kept after 1,000 projects were listed, opened and closed", "KB", {}, 32}, kRuns),
          mHost(host),
          mFolder(production + "/Scenes") {
        std::filesystem::create_directories(mFolder);
        for (int i = 0; i < kProjects; ++i) std::ofstream(PathOf(i)) << "project " << i << '\n';
    }
    ~LeakJob() override { std::filesystem::remove_all(mFolder); }

    double RunOurs() override {
        if (!mIsWarm) OpenAndClose();
        mIsWarm = true;
        const auto before = static_cast<double>(HeapInUse());
        OpenAndClose();
        return (static_cast<double>(HeapInUse()) - before) / 1024;
    }
    double RunBaseline() override { return -1; }

private:
    std::string PathOf(int project) const { return mFolder + "/Scene " + std::to_string(project) + ".zuproj"; }

    void OpenAndClose() {
        const host::UTF16String folder = host::UTF8to16(mFolder);
        desk::FolderStore& store = *desk::GetServices().mFolderStore;
        store.RequestListing(folder, [](const desk::FolderStore::Delivery&) {});
        mHost.Settle();
        host::DocumentManager& documents = *host::DocumentManager::Instance();
        for (int i = 0; i < kProjects; ++i) Require(documents.OpenProject(host::UTF8to16(PathOf(i))));
        Require(host::OpenProjectCount() == kProjects);
        Require(documents.CloseAllProjects());
        store.Forget(folder);
        mHost.Settle();
    }

    HostProcess& mHost;
    const std::string mFolder;
    bool mIsWarm = false;
};

}  // namespace

VolumeJobPtr MakeLeakJob(HostProcess& host, const std::string& production) {
    return std::make_unique<LeakJob>(host, production);
}

}  // namespace bench
