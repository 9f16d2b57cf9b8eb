#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "benchmarks/VolumeJobs.h"
#include "benchmarks/slow_volume/VolumeMount.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/project/lock/LockProtocol.h"
#include "desk/project/production/Production.h"
#include "host/core/Strings.h"
#include "tests/volume/worker/HostProcess.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr int kProjects = 1000;
constexpr int kRuns = 5;

void WriteDurably(const std::string& path, const std::string& bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    Require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    Require(::fsync(file) == 0 && ::close(file) == 0);
}

void FlushFolder(const std::string& path) {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Require(::fsync(folder) == 0 && ::close(folder) == 0);
}

class TrashJob final : public VolumeJob {
public:
    TrashJob(HostProcess& host, const std::string& production)
        : VolumeJob({"1,000 projects moved to the trash with their locks", "ms", 1.1, {}}, kRuns),
          mHost(host),
          mFolder(production + "/Reels") {}

    double RunOurs() override {
        const std::vector<std::string> names = MakeProjects();
        host::UTF16StringVec paths;
        for (const std::string& name : names) paths.push_back(host::UTF8to16(mFolder + '/' + name));
        const double time = TimeOf([&] {
            HandlerSharedProjects::Utils::MoveToSharedProjectsTrash(paths, false, true);
            mHost.Settle();
        });
        Require(!fs::exists(mFolder + '/' + names.back()) &&
                fs::exists(mHost.TrashFolder() + '/' + names.back()));
        Clear();
        return time;
    }
    /// For each project: both locks taken, the file renamed, both locks given up, and where it came from
    /// written down; both folders flushed once.
    double RunBaseline() override {
        const std::vector<std::string> names = MakeProjects();
        const std::string trash = mHost.TrashFolder();
        const std::string records = trash + "/.records";
        fs::create_directories(records);
        const double time = TimeOf([&] {
            for (const std::string& name : names) {
                const std::string locks[] = {mFolder + "/." + name + ".lock", trash + "/." + name + ".lock"};
                Take(locks[0]);
                Take(locks[1]);
                Require(::renameat2(AT_FDCWD, (mFolder + '/' + name).c_str(), AT_FDCWD,
                                    (trash + '/' + name).c_str(), RENAME_NOREPLACE) == 0);
                for (const std::string& lock : locks) Require(::unlink(lock.c_str()) == 0);
                WriteDurably(records + '/' + name + ".json", mRecord);
            }
            FlushFolder(mFolder);
            FlushFolder(trash);
        });
        Clear();
        return time;
    }

private:
    std::vector<std::string> MakeProjects() const {
        Clear();
        fs::create_directories(mFolder);
        std::vector<std::string> names;
        for (int i = 0; i < kProjects; ++i) {
            names.push_back("Scene " + std::to_string(i) + ".zuproj");
            std::ofstream(mFolder + '/' + names.back()) << "project " << i << '\n';
        }
        ::sync();
        return names;
    }
    void Take(const std::string& lock) const {
        const std::string temporary = lock + "-temporary";
        WriteDurably(temporary, mRecord);
        Require(::link(temporary.c_str(), lock.c_str()) == 0 && ::unlink(temporary.c_str()) == 0);
    }
    void Clear() const {
        fs::remove_all(mFolder);
        fs::remove_all(mHost.TrashFolder());
    }

    HostProcess& mHost;
    const std::string mFolder;
    const std::string mRecord =
        WriteLockRecord(desk::MakeLockRecord(*desk::GetServices().mDesktop, u"ines", u"edit-bay-1"));
};

/// On a volume on which every operation costs 10 ms; the kernel keeps names, and that they are not there, for a
/// second.
class SlowTrashJob final : public VolumeJob {
public:
    explicit SlowTrashJob(HostProcess& host)
        : VolumeJob({"100 projects moved to the trash of a volume with 10 ms per operation", "ms", 1.1, 4000},
                    3),
          mHost(host) {}

    double RunOurs() override {
        const Projects projects;
        const host::UTF16String before = desk::Production::Instance().GetFolder();
        desk::Production::Instance().Open(host::UTF8to16(projects.mVolume.Path()));
        host::UTF16StringVec paths;
        for (int i = 0; i < kSlowProjects; ++i) paths.push_back(host::UTF8to16(projects.PathOf("Reels/", i)));
        const double time =
            TimeOf([&] { HandlerSharedProjects::Utils::MoveToSharedProjectsTrash(paths, false, true); });
        mHost.Settle();
        Require(projects.AreGone());
        desk::Production::Instance().Open(before);
        return time;
    }
    /// The calls that change something, from as many threads: what the kernel makes of them, which lets no two
    /// of them into one folder. No record is written.
    double RunBaseline() override {
        const Projects projects;
        const double time = TimeOf([&] {
            ::mkdir(projects.mVolume.Path("Trash").c_str(), 0777);
            for (const char* folder : {"Reels/", "Trash/"})
                WriteDurably(projects.mVolume.Path(folder) + "lock", "-");
            desk::RunShared(kSlowProjects, [&](std::size_t i) { Take(projects, static_cast<int>(i)); });
            desk::RunShared(kSlowProjects, [&](std::size_t i) { Move(projects, static_cast<int>(i)); });
            desk::RunShared(kSlowProjects, [&](std::size_t i) { GiveUp(projects, static_cast<int>(i)); });
            for (const char* folder : {"Reels/", "Trash/"})
                Require(::unlink((projects.mVolume.Path(folder) + "lock").c_str()) == 0);
        });
        Require(projects.AreGone());
        return time;
    }

private:
    static constexpr int kSlowProjects = 100;

    struct Projects {
        Projects() { Require(mVolume.IsMounted()); }
        std::string PathOf(const std::string& folder, int number) const {
            return mVolume.Path(folder + "Scene " + std::to_string(number) + ".zuproj");
        }
        bool AreGone() const { return fs::is_empty(mFolder.path().toStdString() + "/Reels"); }

        static std::string Make(const QTemporaryDir& folder) {
            fs::create_directories(folder.path().toStdString() + "/Reels");
            for (int i = 0; i < kSlowProjects; ++i)
                std::ofstream(folder.path().toStdString() + "/Reels/Scene " + std::to_string(i) + ".zuproj")
                    << i;
            return folder.path().toStdString();
        }

        const QTemporaryDir mFolder;
        const slowvolume::VolumeMount mVolume{
            QCoreApplication::applicationDirPath() + QStringLiteral("/slow-volume"),
            Make(mFolder),
            {QStringLiteral("--rename-flags"), QStringLiteral("--keep-absence")}};
    };

    static void Take(const Projects& projects, int number) {
        for (const char* folder : {"Reels/", "Trash/"})
            Require(::link((projects.mVolume.Path(folder) + "lock").c_str(),
                           (projects.PathOf(folder, number) + ".lock").c_str()) == 0);
    }
    static void Move(const Projects& projects, int number) {
        Require(::renameat2(AT_FDCWD, projects.PathOf("Reels/", number).c_str(), AT_FDCWD,
                            projects.PathOf("Trash/", number).c_str(), RENAME_NOREPLACE) == 0);
    }
    static void GiveUp(const Projects& projects, int number) {
        for (const char* folder : {"Reels/", "Trash/"})
            Require(::unlink((projects.PathOf(folder, number) + ".lock").c_str()) == 0);
    }

    HostProcess& mHost;
};

}  // namespace

VolumeJobPtr MakeSlowTrashJob(HostProcess& host) {
    return std::make_unique<SlowTrashJob>(host);
}

VolumeJobPtr MakeTrashJob(HostProcess& host, const std::string& production) {
    return std::make_unique<TrashJob>(host, production);
}

}  // namespace bench
