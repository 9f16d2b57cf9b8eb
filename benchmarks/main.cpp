#include <benchmark/benchmark.h>

#include <QLocale>
#include <algorithm>
#include <cstring>
#include <exception>
#include <iostream>
#include <optional>

#include "benchmarks/BenchApplication.h"
#include "benchmarks/Jobs.h"
#include "benchmarks/PanelBench.h"
#include "benchmarks/TunedFileSystemModel.h"
#include "desk/toolkit/Theme.h"

namespace {

using namespace bench;

struct Sides {
    BenchedTree& mPanel;
    BenchedTree& mBaseline;
};

/// Runs the baseline without the program's style sheet, which it has no use for.
std::vector<double> RunPlain(const Job& job, BenchedTree& baseline) {
    const QString styleSheet = qApp->styleSheet();
    qApp->setStyleSheet({});
    const auto values = job.mRun(baseline);
    qApp->setStyleSheet(styleSheet);
    return values;
}

/// One repetition of both sides, in turn first.
double RunOnce(const Job& job, const Sides& sides, std::vector<Result>& results, bool panelFirst) {
    std::vector<double> panel;
    if (panelFirst) panel = job.mRun(sides.mPanel);
    const auto baseline = RunPlain(job, sides.mBaseline);
    if (!panelFirst) panel = job.mRun(sides.mPanel);
    for (std::size_t i = 0; i < results.size(); ++i) {
        results[i].mOurs.push_back(panel[i]);
        results[i].mBaseline.push_back(baseline[i]);
    }
    return panel.front();
}

void RunJob(benchmark::State& state, const Job& job, const Sides& sides, std::vector<Result>& allResults) {
    std::vector<Result> results;
    for (const auto& figure : job.mFigures) results.push_back({figure, {}, {}});
    bool panelFirst = false;
    try {
        for ([[maybe_unused]] auto _ : state) {
            state.SetIterationTime(RunOnce(job, sides, results, panelFirst) / 1000);
            panelFirst = !panelFirst;
        }
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
        std::cerr << job.mName << ": " << error.what() << '\n';
    }
    for (const auto& result : results) {
        const std::string suffix = &result == &results.front() ? "" : "_gap";
        state.counters["panel" + suffix] = Median(result.mOurs);
        state.counters["baseline" + suffix] = Median(result.mBaseline);
        state.counters["ratio" + suffix] = Ratio(result);
    }
    allResults.insert(allResults.end(), results.begin(), results.end());
}

/// Takes "--repetitions=N" out of the arguments.
std::optional<int> TakeRepetitions(int& argc, char** argv) {
    constexpr char kOption[] = "--repetitions=";
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], kOption, sizeof(kOption) - 1) != 0) continue;
        const int repetitions = std::max(1, std::atoi(argv[i] + sizeof(kOption) - 1));
        std::rotate(argv + i, argv + i + 1, argv + argc--);
        return repetitions;
    }
    return {};
}

int Run(const std::optional<int>& repetitions) {
    TunedFileSystemModel baseline;
    desk::Theme::Apply(desk::ThemeKind::Dark);
    PanelBench panel;
    const Sides sides{panel, baseline};
    const auto jobs = MakeJobs();
    std::vector<Result> results;
    for (const auto& job : jobs) {
        benchmark::RegisterBenchmark(job.mName.c_str(),
                                     [&](benchmark::State& state) { RunJob(state, job, sides, results); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(repetitions.value_or(job.mRepetitions));
    }
    benchmark::RunSpecifiedBenchmarks();
    std::cout << '\n';
    PrintTable(std::cout, results);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const auto repetitions = TakeRepetitions(argc, argv);
    BenchApplication application(argc, argv);
    // Both sides sort by the rules of a language, numbers by value.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    try {
        return Run(repetitions);
    } catch (const std::exception& error) {
        std::cerr << "panel-benchmarks: " << error.what() << '\n';
        return 1;
    }
}
