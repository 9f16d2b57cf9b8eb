#include <benchmark/benchmark.h>

#include <QLocale>
#include <QPixmap>
#include <QScopeGuard>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "benchmarks/BenchApplication.h"
#include "benchmarks/JobParts.h"
#include "benchmarks/Jobs.h"
#include "benchmarks/PanelBench.h"
#include "benchmarks/TunedFileSystemModel.h"
#include "desk/core/work/Arenas.h"
#include "desk/toolkit/Theme.h"

namespace {

using namespace bench;

struct Sides {
    BenchedTree& mPanel;
    /// Null with --panel-only.
    BenchedTree* mBaseline;
};

void Add(const std::vector<double>& values, std::vector<Result>& results, std::vector<double> Result::*side) {
    for (std::size_t i = 0; i < results.size(); ++i)
        if (!std::isnan(values[i])) (results[i].*side).push_back(values[i]);
}

/// Runs the baseline without the program's style sheet, which it has no use for.
void RunBaseline(const Job& job, BenchedTree& baseline, std::vector<Result>& results) {
    const QString styleSheet = qApp->styleSheet();
    const auto restore = qScopeGuard([&] { qApp->setStyleSheet(styleSheet); });
    qApp->setStyleSheet({});
    Add(job.mRun(baseline), results, &Result::mBaseline);
}

/// One repetition of both sides, each in turn the first. Returns the panel's milliseconds.
double RunOnce(const Job& job, const Sides& sides, std::vector<Result>& results, bool isPanelFirst) {
    const auto runBaseline = [&] {
        if (sides.mBaseline && job.mRunBeside)
            Add(job.mRunBeside(), results, &Result::mBaseline);
        else if (sides.mBaseline)
            RunBaseline(job, *sides.mBaseline, results);
    };
    if (!isPanelFirst) runBaseline();
    Add(job.mRun(sides.mPanel), results, &Result::mOurs);
    if (isPanelFirst) runBaseline();
    return results.front().mOurs.back();
}

void RunJob(benchmark::State& state, const Job& job, const Sides& sides, std::vector<Result>& allResults) {
    std::vector<Result> results;
    for (const auto& figure : job.mFigures) results.push_back({figure, {}, {}});
    bool isPanelFirst = false;
    try {
        for ([[maybe_unused]] auto _ : state) {
            const Sides shown{sides.mPanel, job.mIsPanelOnly ? nullptr : sides.mBaseline};
            state.SetIterationTime(RunOnce(job, shown, results, isPanelFirst) / 1000);
            isPanelFirst = !isPanelFirst;
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

/// The program's own options, beside those of the benchmark library.
struct Options {
    std::optional<int> mRepetitions;
    bool mIsPanelOnly = false;
    bool mAreLongOnesMeant = false;
    /// This process measures the heap of one side, "panel" or "baseline", or the panel's resident memory, or
    /// shows an empty window, and ends.
    std::string mHeap;
    bool mIsResident = false;
    bool mIsEmptyWindow = false;
};

/// Takes the own options out of the arguments.
Options TakeOptions(int& argc, char** argv) {
    constexpr std::string_view kRepetitions = "--repetitions=";
    constexpr std::string_view kHeap = "--heap=";
    Options options;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.starts_with(kRepetitions)) {
            options.mRepetitions = std::max(1, std::atoi(argv[i] + kRepetitions.size()));
        } else if (argument == "--panel-only") {
            options.mIsPanelOnly = true;
        } else if (argument == "--long") {
            options.mAreLongOnesMeant = true;
        } else if (argument.starts_with(kHeap)) {
            options.mHeap = argument.substr(kHeap.size());
        } else if (argument == "--resident") {
            options.mIsResident = true;
        } else if (argument == "--empty-window") {
            options.mIsEmptyWindow = true;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return options;
}

std::unique_ptr<BenchedTree> MakeSide(const std::string& side) {
    if (side != "panel") return std::make_unique<TunedFileSystemModel>(kWindowSize);
    desk::Theme::Apply(desk::ThemeKind::Dark);
    return std::make_unique<PanelBench>();
}

int RunHeap(const std::string& side) {
    constexpr int kProjects = 10'000;
    const SampleFolder folder(kProjects, SampleNames::AsGiven);
    const auto tree = MakeSide(side);
    std::cout << MeasureHeap(*tree, folder) << std::endl;
    return 0;
}

int RunResident() {
    const auto tree = MakeSide("panel");
    std::cout << MeasureResidentMemory(*tree) << std::endl;
    return 0;
}

int RunEmptyWindow() {
    QWidget window;
    window.resize(kWindowSize);
    window.show();
    QTimer::singleShot(0, &window, [&window] {
        window.grab();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

int Run(const Options& options) {
    if (!options.mHeap.empty()) return RunHeap(options.mHeap);
    if (options.mIsResident) return RunResident();
    if (options.mIsEmptyWindow) return RunEmptyWindow();
    desk::Theme::Apply(desk::ThemeKind::Dark);
    PanelBench panel;
    TunedFileSystemModel baseline(panel.GetView().size());
    const Sides sides{panel, options.mIsPanelOnly ? nullptr : &baseline};
    const auto jobs = MakeJobs();
    std::vector<Result> results;
    for (const auto& job : jobs) {
        if (job.mIsLong && !options.mAreLongOnesMeant) continue;
        benchmark::RegisterBenchmark(job.mName.c_str(),
                                     [&](benchmark::State& state) { RunJob(state, job, sides, results); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(options.mRepetitions.value_or(job.mRepetitions));
    }
    benchmark::RunSpecifiedBenchmarks();
    std::cout << '\n';
    PrintTable(std::cout, results);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    desk::ShareArenas();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const auto options = TakeOptions(argc, argv);
    BenchApplication application(argc, argv);
    // Both sides sort by the rules of a language, numbers by value.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    try {
        return Run(options);
    } catch (const std::exception& error) {
        std::cerr << "panel-benchmarks: " << error.what() << '\n';
        return 1;
    }
}
