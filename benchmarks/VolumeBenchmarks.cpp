#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QTemporaryDir>
#include <chrono>
#include <functional>
#include <iostream>
#include <stdexcept>

#include "benchmarks/ResultTable.h"
#include "desk/core/Services.h"
#include "desk/core/SystemDesktop.h"
#include "desk/files/PosixFileSystem.h"
#include "desk/project/LockKeeper.h"

namespace {

using namespace bench;

/// So many in a row make one value: a single one is too short to be told from the disk's moods.
constexpr int kLocks = 50;
constexpr int kRepetitions = 15;

void Require(bool isGood) {
    if (!isGood) throw std::runtime_error("a step has failed");
}

void TakeAndGiveUp(const std::string& folder) {
    const auto taking =
        desk::LockKeeper::Instance().Take(folder + "/.Reel 1.zuproj.lock", u"ines", u"edit-bay-1");
    Require(taking.mLock != nullptr);
}

/// The system calls that cannot be done without, and nothing else.
void TakeAndGiveUpBare(const std::string& folder, const std::string& record) {
    const std::string temporary = folder + "/.temporary";
    const std::string lock = folder + "/.Reel 1.zuproj.lock";
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    Require(::write(file, record.data(), record.size()) == static_cast<ssize_t>(record.size()));
    Require(::fsync(file) == 0 && ::close(file) == 0);
    Require(::link(temporary.c_str(), lock.c_str()) == 0);
    Require(::unlink(temporary.c_str()) == 0 && ::unlink(lock.c_str()) == 0);
}

/// Microseconds for one.
double Measure(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kLocks; ++i) work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count() / kLocks;
}

void RunLocks(benchmark::State& state, const std::string& parent, Result& result) {
    const QTemporaryDir temporary(QString::fromStdString(parent + "/production-desk-XXXXXX"));
    const std::string folder = temporary.path().toStdString();
    const std::string record =
        WriteLockRecord(desk::MakeLockRecord(*desk::GetServices().mDesktop, u"ines", u"edit-bay-1"));
    bool oursFirst = false;
    try {
        for ([[maybe_unused]] auto _ : state) {
            double ours = oursFirst ? Measure([&] { TakeAndGiveUp(folder); }) : 0;
            result.mBaseline.push_back(Measure([&] { TakeAndGiveUpBare(folder, record); }));
            if (!oursFirst) ours = Measure([&] { TakeAndGiveUp(folder); });
            result.mOurs.push_back(ours);
            state.SetIterationTime(ours / 1e6);
            oursFirst = !oursFirst;
        }
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
    state.counters["ours"] = Median(result.mOurs);
    state.counters["bare"] = Median(result.mBaseline);
    state.counters["ratio"] = Ratio(result);
}

/// The folder for temporary files, on a disk or not, and memory, where nothing hides our own work.
std::vector<Result> MakeResults() {
    return {{{"take and give up a lock, disk", "µs", 3, {}}, {}, {}},
            {{"take and give up a lock, memory", "µs", {}, {}}, {}, {}}};
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    desk::PosixFileSystem fileSystem;
    desk::SystemDesktop desktop;
    desk::GetServices().mFileSystem = &fileSystem;
    desk::GetServices().mDesktop = &desktop;
    std::vector<Result> results = MakeResults();
    const std::string parents[] = {QDir::tempPath().toStdString(), "/dev/shm"};
    for (std::size_t i = 0; i < results.size(); ++i)
        benchmark::RegisterBenchmark(
            results[i].mFigure.mName.c_str(),
            [&, i](benchmark::State& state) { RunLocks(state, parents[i], results[i]); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond)
            ->Iterations(kRepetitions);
    benchmark::RunSpecifiedBenchmarks();
    std::cout << '\n';
    std::erase_if(results, [](const Result& result) { return result.mOurs.empty(); });
    PrintTable(std::cout, results, "ours", "bare system calls");
    return 0;
}
