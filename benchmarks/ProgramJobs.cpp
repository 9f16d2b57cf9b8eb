#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <thread>

#include "benchmarks/JobParts.h"
#include "benchmarks/slow_volume/VolumeMount.h"

namespace bench {

namespace {

using namespace std::chrono_literals;

constexpr int kManyProjects = 10'000;
constexpr int kFewProjects = 2'000;
/// Threads that have nothing more to do have ended by then, and nobody has used the program for a minute.
constexpr std::chrono::seconds kRest = 70s;
constexpr std::chrono::seconds kIdleTime = 60s;

QString Program(const char* name) {
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

/// The output of this program, run with `argument` in a process of its own.
double RunSelf(const QString& argument) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), {argument});
    if (!process.waitForFinished(300'000) || process.exitCode() != 0)
        throw std::runtime_error("a process of its own failed: " + argument.toStdString());
    return process.readAllStandardOutput().trimmed().toDouble();
}

/// The real program on a folder, with a profile of its own.
class DeskProcess {
public:
    DeskProcess(const std::string& folder, const QStringList& options) {
        mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mProcess.start(Program("production-desk"),
                       QStringList{QStringLiteral("--profile"), mProfile.path(), QStringLiteral("--plugin-dir"),
                                   QStringLiteral(ZU_PLUGIN_FOLDER)} +
                           options + QStringList{QString::fromStdString(folder)});
        if (!mProcess.waitForStarted()) throw std::runtime_error("production-desk did not start");
    }
    ~DeskProcess() {
        mProcess.terminate();
        mProcess.waitForFinished(20'000);
    }
    void WaitForEnd() {
        if (!mProcess.waitForFinished(60'000) || mProcess.exitCode() != 0)
            throw std::runtime_error("production-desk failed");
    }

    /// What the process has used so far.
    struct Usage {
        double mWakeUps = 0;
        double mProcessorMilliseconds = 0;
        double mResidentKilobytes = 0;
    };
    Usage GetUsage() const {
        const QString folder = QStringLiteral("/proc/%1").arg(mProcess.processId());
        Usage usage;
        for (const QString& task :
             QDir(folder + QStringLiteral("/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            usage.mWakeUps += ReadField(folder + QStringLiteral("/task/") + task + QStringLiteral("/status"),
                                        "voluntary_ctxt_switches:");
        usage.mResidentKilobytes = ReadField(folder + QStringLiteral("/status"), "VmRSS:");
        QFile stat(folder + QStringLiteral("/stat"));
        if (!stat.open(QIODevice::ReadOnly)) throw std::runtime_error("production-desk has ended");
        const QList<QByteArray> fields = stat.readAll().split(')').back().simplified().split(' ');
        // utime and stime: proc(5).
        usage.mProcessorMilliseconds =
            (fields[11].toDouble() + fields[12].toDouble()) * 1000 / static_cast<double>(sysconf(_SC_CLK_TCK));
        return usage;
    }

private:
    static double ReadField(const QString& path, const QByteArray& name) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return 0;
        for (const QByteArray& line : file.readAll().split('\n'))
            if (line.startsWith(name)) return line.mid(name.size()).simplified().split(' ').front().toDouble();
        return 0;
    }

    QTemporaryDir mProfile;
    QProcess mProcess;
};

std::vector<double> MeasureStart(const SampleFolder& folder) {
    const QTemporaryDir pictures;
    const auto start = Clock::now();
    DeskProcess desk(folder.Path(),
                     {QStringLiteral("--screenshot"), pictures.filePath(QStringLiteral("p.png"))});
    desk.WaitForEnd();
    return {Milliseconds(start, Clock::now())};
}

std::vector<double> MeasureEmptyWindow() {
    const auto start = Clock::now();
    RunSelf(QStringLiteral("--empty-window"));
    return {Milliseconds(start, Clock::now())};
}

/// On a volume that must be polled.
std::vector<double> MeasureIdle(const SampleFolder& folder) {
    slowvolume::VolumeMount volume(Program("slow-volume"), folder.Path(),
                                   {QStringLiteral("--delay-ms"), QStringLiteral("0")});
    if (!volume.IsMounted()) throw std::runtime_error("could not mount the volume: " + volume.ErrorText());
    const DeskProcess desk(volume.Path(), {});
    std::this_thread::sleep_for(kRest);
    const auto before = desk.GetUsage();
    std::this_thread::sleep_for(kIdleTime);
    const auto after = desk.GetUsage();
    const double minutes = std::chrono::duration<double, std::ratio<60>>(kIdleTime).count();
    return {(after.mWakeUps - before.mWakeUps) / (minutes * 60),
            (after.mProcessorMilliseconds - before.mProcessorMilliseconds) / minutes,
            (after.mResidentKilobytes - before.mResidentKilobytes) / minutes};
}

}  // namespace

void AddProgramJobs(std::vector<Job>& jobs) {
    const auto many = std::make_shared<LazyFolder>(kManyProjects, SampleNames::AsGiven);
    const auto few = std::make_shared<LazyFolder>(kFewProjects, SampleNames::AsGiven);
    jobs.push_back(
        {"heap-fresh",
         {{"heap per row at 10,000 rows, names as people give them, first opening in a fresh process",
           "B",
           0.35,
           {}}},
         5,
         [](BenchedTree&) { return std::vector{RunSelf(QStringLiteral("--heap=panel"))}; }});
    jobs.back().mRunBeside = [] { return std::vector{RunSelf(QStringLiteral("--heap=baseline"))}; };
    jobs.push_back({"resident-1m",
                    {{"resident memory with 1,000,000 projects in 10,110 open folders", "MB", {}, 450}},
                    1,
                    [](BenchedTree&) { return std::vector{RunSelf(QStringLiteral("--resident"))}; }});
    jobs.back().mIsPanelOnly = true;
    jobs.back().mIsLong = true;
    jobs.push_back({"start",
                    {{"start to --screenshot of 2,000 rows, beside an empty window", "ms", {}, 250}},
                    7,
                    [few](BenchedTree&) { return MeasureStart(**few); }});
    jobs.back().mRunBeside = MeasureEmptyWindow;
    jobs.push_back({"idle",
                    {{"idle, polled folder of 10,000: wake-ups a second", "", {}, 2},
                     {"processor time a minute", "ms", {}, {}},
                     {"resident memory grown in a minute", "KB", {}, 100}},
                    1,
                    [many](BenchedTree&) { return MeasureIdle(**many); }});
    jobs.back().mIsPanelOnly = true;
}

}  // namespace bench
