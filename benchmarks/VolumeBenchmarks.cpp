#include <benchmark/benchmark.h>

#include <QDir>
#include <QTemporaryDir>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "benchmarks/VolumeJobs.h"
#include "tests/volume/worker/HostProcess.h"

namespace bench {

void Require(bool isGood) {
    if (!isGood) throw std::runtime_error("a step has failed");
}

}  // namespace bench

namespace {

using namespace bench;

/// Both sides take turns at being the first.
void Run(benchmark::State& state, VolumeJob& job, Result& result) {
    bool isOursFirst = false;
    try {
        for ([[maybe_unused]] auto _ : state) {
            double ours = isOursFirst ? job.RunOurs() : 0;
            if (const double baseline = job.RunBaseline(); baseline >= 0) result.mBaseline.push_back(baseline);
            if (!isOursFirst) ours = job.RunOurs();
            result.mOurs.push_back(ours);
            state.SetIterationTime(ours / 1e3);
            isOursFirst = !isOursFirst;
        }
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
    state.counters["ours"] = Median(result.mOurs);
    state.counters["bare"] = Median(result.mBaseline);
    state.counters["ratio"] = Ratio(result);
}

/// On the folder for temporary files, on a disk or not, and in memory, where nothing hides our own work.
std::vector<VolumeJobPtr> MakeJobs(HostProcess& host, const std::string& production) {
    const std::string disk = QDir::tempPath().toStdString();
    std::vector<VolumeJobPtr> jobs;
    jobs.push_back(MakeLockJob(disk, "disk", 3));
    jobs.push_back(MakeLockJob("/dev/shm", "memory", {}));
    jobs.push_back(MakeTrashJob(host, production));
    jobs.push_back(MakeSlowTrashJob(host));
    jobs.push_back(MakeCopyJob(disk, false));
    jobs.push_back(MakeCopyJob(disk, true));
    jobs.push_back(MakeLeakJob(host, production));
    jobs.push_back(MakeSettingsReadJob(disk));
    jobs.push_back(MakeSettingsWriteJob(disk, false));
    jobs.push_back(MakeSettingsWriteJob(disk, true));
    return jobs;
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    const QTemporaryDir production;
    // As many workers as the program has.
    HostProcess host(production.path().toStdString(), 24);
    const std::vector<VolumeJobPtr> jobs = MakeJobs(host, production.path().toStdString());
    std::vector<Result> results;
    for (const VolumeJobPtr& job : jobs) results.push_back({job->GetFigure(), {}, {}});
    for (std::size_t i = 0; i < jobs.size(); ++i)
        benchmark::RegisterBenchmark(jobs[i]->GetFigure().mName.c_str(),
                                     [&, i](benchmark::State& state) { Run(state, *jobs[i], results[i]); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(jobs[i]->GetRuns());
    benchmark::RunSpecifiedBenchmarks();
    std::cout << '\n';
    std::erase_if(results, [](const Result& result) { return result.mOurs.empty(); });
    PrintTable(std::cout, results, "ours", "bare");
    return 0;
}
