#include <QCoreApplication>
#include <QProcess>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>

#include "benchmarks/JobParts.h"
#include "benchmarks/slow_volume/VolumeMount.h"

namespace bench {

namespace {

using namespace std::chrono_literals;

constexpr int kSlowDelay = 10;
/// Until all folders below the root have been listed and are followed.
constexpr std::chrono::milliseconds kRest = 4000ms;

int CountHits(const QAbstractItemModel& model, const QModelIndex& parent = {}) {
    int hits = 0;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        hits += model.rowCount(index) == 0 ? 1 : CountHits(model, index);
    }
    return hits;
}

/// A key in the search field, to the first paint of its hits; they are counted afterwards.
double MeasureKey(BenchedTree& tree, const QString& text, int hits) {
    QTreeView& view = tree.GetSearchView();
    bool isRenewed = false;
    const QObject context;
    const auto renew = [&] { isRenewed = true; };
    QObject::connect(view.model(), &QAbstractItemModel::modelReset, &context, renew);
    QObject::connect(view.model(), &QAbstractItemModel::rowsInserted, &context, renew);
    const auto isDone = [&](const QRegion&) { return isRenewed && CountRows(view) > 0; };
    const auto start = Clock::now();
    tree.Search(text);
    const auto end = BenchApplication::Instance().RunUntilPainted(*view.viewport(), isDone, 120s, "the hits");
    BenchApplication::Instance().RunFor(150ms);
    if (CountHits(*view.model()) != hits) throw std::runtime_error("other hits than expected");
    return Milliseconds(start, end);
}

void OpenTree(BenchedTree& tree, const std::string& path, int topFolders) {
    tree.Prepare();
    tree.Open(path);
    const auto isDone = [&](const QRegion&) { return CountRows(tree.GetView()) == topFolders; };
    BenchApplication::Instance().RunUntilPainted(*tree.GetView().viewport(), isDone, 60s, "the folders");
    BenchApplication::Instance().RunFor(500ms);
}

/// The first key in a production of which the panel knows the top only, then keys when all names are known:
/// fewer hits, and more again.
std::vector<double> MeasureKeys(BenchedTree& tree, const std::string& path, const SampleTree& sample) {
    OpenTree(tree, path, sample.CountTopFolders());
    const double first = MeasureKey(tree, QStringLiteral("kestrel"), sample.CountHits());
    BenchApplication::Instance().RunFor(kRest);
    std::vector<double> later;
    for (int i = 0; i < 3; ++i) {
        later.push_back(MeasureKey(tree, QStringLiteral("kestrel b"), sample.CountFewerHits()));
        later.push_back(MeasureKey(tree, QStringLiteral("kestrel"), sample.CountHits()));
    }
    tree.Search({});
    BenchApplication::Instance().RunFor(200ms);
    tree.Close();
    return {first, Median(later)};
}

std::vector<double> MeasureKeysSlow(BenchedTree& tree, const SampleTree& sample) {
    slowvolume::VolumeMount volume(QCoreApplication::applicationDirPath() + QStringLiteral("/slow-volume"),
                                   sample.Path(), {QStringLiteral("--delay-ms"), QString::number(kSlowDelay)});
    if (!volume.IsMounted()) throw std::runtime_error("could not mount the slow volume: " + volume.ErrorText());
    return MeasureKeys(tree, volume.Path(), sample);
}

std::vector<double> MeasureFind(const SampleTree& sample) {
    QProcess find;
    find.setStandardOutputFile(QProcess::nullDevice());
    const auto start = Clock::now();
    find.start(QStringLiteral("find"),
               {QString::fromStdString(sample.Path()), QStringLiteral("-iname"), QStringLiteral("*kestrel*")});
    if (!find.waitForFinished(300'000) || find.exitCode() != 0) throw std::runtime_error("find failed");
    return {Milliseconds(start, Clock::now()), std::nan("")};
}

Job MakeJob(const char* name, const std::string& names, double laterLimit, int repetitions,
            const std::shared_ptr<LazyTree>& sample) {
    Job job{
        name,
        {{"first keystroke over " + names + " names that are not known, to painted hits, beside find -iname",
          "ms",
          2.0,
          {}},
         {"later keystrokes over " + names + " names", "ms", {}, laterLimit}},
        repetitions,
        [sample](BenchedTree& tree) { return MeasureKeys(tree, (**sample).Path(), **sample); }};
    job.mRunBeside = [sample] { return MeasureFind(**sample); };
    return job;
}

}  // namespace

void AddSearchJobs(std::vector<Job>& jobs) {
    const auto tree = [](const QList<int>& folders, int projects) {
        return std::make_shared<LazyTree>(folders, projects, SampleNames::AsGiven);
    };
    jobs.push_back(MakeJob("search-100k", "100,000", 20, 5, tree({10, 10, 10}, 100'000)));
    jobs.push_back(MakeJob("search-1m", "1,000,000", 60, 1, tree({10, 10, 100}, 1'000'000)));
    jobs.back().mIsLong = true;
    const auto slow = tree({1, 10, 12}, 2'000);
    jobs.push_back({"search-slow-volume",
                    {{"10 ms per operation, 131 folders: first keystroke", "ms", {}, 400},
                     {"later keystrokes", "ms", {}, 20}},
                    3,
                    [slow](BenchedTree& bench) { return MeasureKeysSlow(bench, **slow); }});
    jobs.back().mIsPanelOnly = true;
}

}  // namespace bench
