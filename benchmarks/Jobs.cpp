#include "benchmarks/Jobs.h"

#include <malloc.h>
#include <unistd.h>

#include <QCollator>
#include <QCoreApplication>
#include <QHash>
#include <QHeaderView>
#include <QLocale>
#include <QMouseEvent>
#include <QProgressDialog>
#include <QScrollBar>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "benchmarks/BenchApplication.h"
#include "benchmarks/EventLoopProbe.h"
#include "benchmarks/JobParts.h"
#include "benchmarks/PanelBench.h"
#include "benchmarks/slow_volume/VolumeMount.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/project/lock/LockProtocol.h"
#include "host/framework/CommandIdentifiers.h"

namespace bench {

namespace {

using namespace std::chrono_literals;

constexpr int kManyProjects = 10'000;
constexpr int kSlowProjects = 2'000;
constexpr int kSlowDelay = 10;

int CountMisplaced(const QTreeView& view, const QModelIndex& folder, const QCollator& collator) {
    const QAbstractItemModel& model = *view.model();
    int misplaced = 0;
    QString last;
    bool isLastFolder = true;
    for (int row = 0; row < model.rowCount(folder); ++row) {
        const QModelIndex index = model.index(row, 0, folder);
        const bool isFolder = model.hasChildren(index);
        const QString name = RowName(index);
        misplaced += isFolder == isLastFolder && collator.compare(last, name) > 0;
        last = name;
        isLastFolder = isFolder;
        if (!isFolder) continue;
        if (!view.isExpanded(index)) throw std::runtime_error("a folder is not open");
        misplaced += CountMisplaced(view, index, collator);
    }
    return misplaced;
}

/// Throws when a folder is not open, or more rows than one in a hundred stand behind a greater one: the two
/// sides differ a little in where they put names as people give them.
void CheckFolders(const QTreeView& view, int rows) {
    QCollator collator(QLocale(QLocale::English, QLocale::UnitedStates));
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    if (CountMisplaced(view, view.rootIndex(), collator) * 100 > rows)
        throw std::runtime_error("rows are out of order");
}

/// Opens a folder; time to the paint of all rows and longest gap meanwhile.
std::vector<double> MeasureOpening(BenchedTree& tree, const std::string& path, const SampleFolder& folder,
                                   std::chrono::seconds timeout) {
    const std::vector<QString>& names = NamesAsShown(tree, folder);
    tree.Prepare();
    BenchApplication::Instance().RunFor(200ms);
    EventLoopProbe probe;
    probe.Start();
    const auto start = Clock::now();
    tree.Open(path);
    const auto end = RunUntilShown(tree, names, timeout);
    const double gap = probe.Stop(end);
    CheckOrder(tree.GetView(), names);
    return {Milliseconds(start, end), gap};
}

std::vector<double> MeasureOpeningMany(BenchedTree& tree, LazyFolder& folder) {
    auto values = MeasureOpening(tree, (*folder).Path(), *folder, 60s);
    tree.Close();
    return values;
}

/// A folder seen through a volume on which every operation takes long.
class SlowVolume {
public:
    explicit SlowVolume(const std::string& folder, int delay = kSlowDelay)
        : mMount(QCoreApplication::applicationDirPath() + QStringLiteral("/slow-volume"), folder,
                 {QStringLiteral("--delay-ms"), QString::number(delay)}) {
        if (!mMount.IsMounted())
            throw std::runtime_error("could not mount the slow volume: " + mMount.ErrorText());
    }
    std::string Path() const { return mMount.Path(); }

private:
    slowvolume::VolumeMount mMount;
};

std::vector<double> MeasureOpeningSlow(BenchedTree& tree, LazyFolder& folder) {
    const SlowVolume volume((*folder).Path());
    auto values = MeasureOpening(tree, volume.Path(), *folder, 300s);
    tree.Close();
    BenchApplication::Instance().RunFor(500ms);
    return values;
}

LazyTree MakeMillion() {
    return LazyTree(QList<int>{10, 10, 100}, 1'000'000, SampleNames::AsGiven);
}

/// Of this process, in megabytes: proc(5).
double ReadResidentMemory() {
    std::ifstream statistics("/proc/self/statm");
    double pages = 0;
    statistics >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Opens a tree of folders, all of them open; time to the paint of all rows, longest gap meanwhile, and the
/// memory that is resident then.
std::vector<double> MeasureRestoring(BenchedTree& tree, const std::string& folder, const SampleTree& sample,
                                     std::chrono::seconds timeout) {
    auto& application = BenchApplication::Instance();
    const int rows = sample.CountFolders() + sample.CountProjects();
    tree.Prepare();
    tree.PrepareFolders(folder, rows);
    application.RunFor(200ms);
    QTreeView& view = tree.GetView();
    EventLoopProbe probe;
    probe.Start();
    const auto start = Clock::now();
    tree.OpenWithFolders(folder);
    const auto isDone = [&](const QRegion&) { return CountShownRows(view) == rows; };
    const auto end = application.RunUntilPainted(*view.viewport(), isDone, timeout, "all rows");
    const double gap = probe.Stop(end);
    CheckFolders(view, rows);
    const double resident = ReadResidentMemory();
    tree.Close();
    application.RunFor(500ms);
    return {Milliseconds(start, end), gap, resident};
}

std::vector<double> MeasureHeapAgain(BenchedTree& tree, LazyFolder& folder) {
    return {MeasureHeap(tree, *folder)};
}

/// One project created among many, to its row's paint.
std::vector<double> MeasureCreation(BenchedTree& tree, LazyFolder& lazyFolder) {
    auto& application = BenchApplication::Instance();
    const SampleFolder& folder = *lazyFolder;
    OpenAndSettle(tree, folder);
    QTreeView& view = tree.GetView();
    const QString name = QStringLiteral("Scene 0");
    const auto isDone = [&](const QRegion& painted) {
        return CountRows(view) == folder.CountProjects() + 1 && RowName(view, 0) == name &&
               painted.intersects(view.visualRect(view.model()->index(0, 0, view.rootIndex())));
    };
    const auto start = Clock::now();
    folder.Create(name, 100);
    const auto end = application.RunUntilPainted(*view.viewport(), isDone, 30s, "the new row");
    folder.Remove(name);
    RunUntilShown(tree, NamesAsShown(tree, folder));
    application.RunFor(500ms);
    tree.Close();
    return {Milliseconds(start, end)};
}

void Click(QWidget& widget, QPoint point) {
    const QPointF local(point);
    const QPointF global(widget.mapToGlobal(point));
    QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &release);
}

void ClickHeader(QTreeView& view, int section) {
    QWidget& header = *view.header()->viewport();
    Click(header, QPoint(view.header()->sectionViewportPosition(section) + 12, header.height() / 2));
}

/// With the rows sorted by size, a click on the header of the names, to the paint of the rows sorted by name.
std::vector<double> MeasureResorting(BenchedTree& tree, LazyFolder& folder) {
    auto& application = BenchApplication::Instance();
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetView();
    ClickHeader(view, tree.GetSizeSection());
    application.RunFor(2500ms);
    const std::vector<QString>& names = NamesAsShown(tree, *folder);
    if (ShowsAll(view, names)) throw std::runtime_error("the rows are not sorted by size");
    const auto isDone = [&](const QRegion&) { return ShowsAll(view, names); };
    const auto start = Clock::now();
    ClickHeader(view, 0);
    const auto end = application.RunUntilPainted(*view.viewport(), isDone, 30s, "the order by name");
    CheckOrder(view, names);
    tree.Close();
    return {Milliseconds(start, end)};
}

/// The sizes of a folder's projects by their names, and in order.
class KnownSizes {
public:
    explicit KnownSizes(const SampleFolder& folder) {
        for (int i = 0; i < folder.CountProjects(); ++i) {
            mSizes.insert(folder.Names()[static_cast<std::size_t>(i)], SampleFolder::SizeAt(i));
            mSorted.push_back(SampleFolder::SizeAt(i));
        }
        std::ranges::sort(mSorted);
    }
    /// True when all rows are there in the order of their sizes, either way round.
    bool AreShownSorted(const QTreeView& view) const {
        const int count = static_cast<int>(mSorted.size());
        if (CountRows(view) != count) return false;
        const auto isAt = [&](int row, int place) {
            return mSizes.value(RowName(view, row)) == mSorted[static_cast<std::size_t>(place)];
        };
        const bool isRising = isAt(0, 0);
        // Probes first: this is asked for at every paint.
        for (int step = count / 64; step > 0; step = step > 1 ? 1 : 0)
            for (int row = 0; row < count; row += step)
                if (!isAt(row, isRising ? row : count - 1 - row)) return false;
        return true;
    }

private:
    QHash<QString, int> mSizes;
    std::vector<int> mSorted;
};

/// A click on the header of the sizes, which nobody has asked for yet, to the paint of the rows sorted by size.
std::vector<double> MeasureFirstSorting(BenchedTree& tree, LazyFolder& folder) {
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetView();
    const KnownSizes sizes(*folder);
    // The baseline sorts what it has; the panel goes on sorting while sizes come.
    const auto isDone = [&](const QRegion&) { return sizes.AreShownSorted(view); };
    EventLoopProbe probe;
    probe.Start();
    const auto start = Clock::now();
    ClickHeader(view, tree.GetSizeSection());
    const auto end = BenchApplication::Instance().RunUntilPainted(*view.viewport(), isDone, 120s, "the sizes");
    const double gap = probe.Stop(end);
    // Back to the order by name, as later jobs expect it.
    ClickHeader(view, 0);
    BenchApplication::Instance().RunFor(1000ms);
    tree.Close();
    return {Milliseconds(start, end), gap};
}

/// Pages through the rows as fast as they are painted: median and longest time of a frame.
std::vector<double> MeasureScrolling(BenchedTree& tree, LazyFolder& folder) {
    auto& application = BenchApplication::Instance();
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetView();
    std::vector<double> frames;
    for (int page = 0; page < 100; ++page) {
        QScrollBar& bar = *view.verticalScrollBar();
        const auto start = Clock::now();
        bar.setValue(bar.value() + bar.pageStep());
        const auto isDone = [](const QRegion&) { return true; };
        frames.push_back(
            Milliseconds(start, application.RunUntilPainted(*view.viewport(), isDone, 30s, "a page")));
    }
    tree.Close();
    return {Median(frames), *std::max_element(frames.begin(), frames.end())};
}

/// Time to the paint of the selected rows, and the longest gap in the second after it.
std::vector<double> MeasureSelectingAll(BenchedTree& tree, LazyFolder& folder) {
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetView();
    const auto isDone = [&](const QRegion&) {
        const auto selection = view.selectionModel()->selection();
        int rows = 0;
        for (const auto& range : selection) rows += range.height();
        return rows == (*folder).CountProjects();
    };
    const auto start = Clock::now();
    tree.SelectAll();
    const auto end =
        BenchApplication::Instance().RunUntilPainted(*view.viewport(), isDone, 30s, "the selected rows");
    EventLoopProbe probe;
    probe.Start();
    BenchApplication::Instance().RunFor(1000ms);
    const double gap = probe.Stop(Clock::now());
    tree.Close();
    return {Milliseconds(start, end), gap};
}

int RowHeight(const QTreeView& view) {
    return view.visualRect(view.model()->index(0, 0, view.rootIndex())).height();
}

std::vector<double> MeasureZooming(BenchedTree& tree, LazyFolder& folder) {
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetView();
    const int height = RowHeight(view);
    const auto isDone = [&](const QRegion&) { return RowHeight(view) > height; };
    const auto start = Clock::now();
    tree.Zoom(1);
    const auto end =
        BenchApplication::Instance().RunUntilPainted(*view.viewport(), isDone, 30s, "the larger rows");
    tree.Zoom(-1);
    BenchApplication::Instance().RunFor(200ms);
    tree.Close();
    return {Milliseconds(start, end)};
}

/// The second key of a search that has 100 hits, to the paint of the hits.
std::vector<double> MeasureSearching(BenchedTree& tree, LazyFolder& folder) {
    auto& application = BenchApplication::Instance();
    OpenAndSettle(tree, *folder);
    QTreeView& view = tree.GetSearchView();
    tree.Search(QStringLiteral("Take 7"));
    application.RunFor(1500ms);
    const auto isDone = [&](const QRegion&) { return CountRows(view) == kManyProjects / 100; };
    const auto start = Clock::now();
    tree.Search(QStringLiteral("Take 77"));
    const auto end = application.RunUntilPainted(*view.viewport(), isDone, 30s, "the hits");
    tree.Search({});
    application.RunFor(200ms);
    tree.Close();
    return {Milliseconds(start, end)};
}

/// All 2,000 projects selected and sent to the trash, to the paint without them; longest gap meanwhile.
std::vector<double> MeasureTrashing(BenchedTree& tree) {
    auto& application = BenchApplication::Instance();
    const SampleFolder folder(kSlowProjects);
    OpenAndSettle(tree, folder);
    tree.SelectAll();
    application.RunFor(500ms);
    QTreeView& view = tree.GetView();
    EventLoopProbe probe;
    probe.Start();
    const auto start = Clock::now();
    dynamic_cast<PanelBench&>(tree).Send(host::CommandID::kMoveToTrash);
    // The rows may have been painted while the command ran.
    view.viewport()->update();
    // The trash is left.
    const auto isDone = [&](const QRegion&) { return CountRows(view) == 1; };
    const auto end = application.RunUntilPainted(*view.viewport(), isDone, 300s, "the trash alone");
    const double gap = probe.Stop(end);
    tree.Close();
    application.RunFor(500ms);
    return {Milliseconds(start, end), gap};
}

/// A folder of 1,000 projects that was never opened, sent to the trash where every operation takes 20 ms. The
/// user cancels as soon as a dialog offers it: how long that takes, and the longest gap from the command on.
std::vector<double> MeasureCancellingTrash(BenchedTree& tree) {
    constexpr int kDelay = 20;
    auto& application = BenchApplication::Instance();
    const SampleFolder folder(1'000);
    std::filesystem::create_directory(folder.Path() + "/Reels");
    // Of the user's own: each is read, and none forbids it.
    const desk::Desktop& desktop = *desk::GetServices().mDesktop;
    const std::string lock =
        desk::WriteLockRecord(desk::MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName()));
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        if (entry.is_regular_file()) {
            const std::string name = entry.path().filename().string();
            std::filesystem::rename(entry.path(), folder.Path() + "/Reels/" + name);
            std::ofstream(folder.Path() + "/Reels/." + name + ".lock") << lock;
        }
    const SlowVolume volume(folder.Path(), kDelay);
    tree.Prepare();
    tree.Open(volume.Path());
    QTreeView& view = tree.GetView();
    const auto isShown = [&](const QRegion&) { return CountRows(view) == 1; };
    application.RunUntilPainted(*view.viewport(), isShown, 60s, "the folder");
    application.RunFor(500ms);
    tree.SelectAll();
    application.RunFor(500ms);
    Clock::time_point cancelled{};
    QTimer canceller;
    QObject::connect(&canceller, &QTimer::timeout, &canceller, [&] {
        auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
        if (!dialog || dialog->wasCanceled()) return;
        cancelled = Clock::now();
        // As its button does; the slot of that name tells nobody.
        Q_EMIT dialog->canceled();
    });
    canceller.start(1ms);
    EventLoopProbe probe;
    probe.Start();
    dynamic_cast<PanelBench&>(tree).Send(host::CommandID::kMoveToTrash);
    const auto end = Clock::now();
    const double gap = probe.Stop(end);
    if (!std::filesystem::exists(folder.Path() + "/Reels")) throw std::runtime_error("the folder is gone");
    tree.Close();
    application.RunFor(2500ms);
    return {cancelled == Clock::time_point{} ? 0 : Milliseconds(cancelled, end), gap};
}

}  // namespace

double MeasureResidentMemory(BenchedTree& tree) {
    LazyTree million = MakeMillion();
    const std::string path = (*million).Path();
    // What it took to make the sample is not what its rows take.
    ::malloc_trim(0);
    return MeasureRestoring(tree, path, *million, 300s).back();
}

std::vector<Job> MakeJobs() {
    const auto many = std::make_shared<LazyFolder>(kManyProjects);
    const auto given = std::make_shared<LazyFolder>(kManyProjects, SampleNames::AsGiven);
    const auto tenTimesAsMany = std::make_shared<LazyFolder>(10 * kManyProjects, SampleNames::AsGiven);
    const auto slow = std::make_shared<LazyFolder>(kSlowProjects);
    const auto manyFolders = std::make_shared<LazyTree>(QList<int>{10, 10, 10}, 100'000);
    const auto foldersOfGiven =
        std::make_shared<LazyTree>(QList<int>{10, 10, 10}, 100'000, SampleNames::AsGiven);
    const auto threeTimesAsMany =
        std::make_shared<LazyTree>(QList<int>{3, 10, 100}, 300'000, SampleNames::AsGiven);
    const auto aMillion = std::make_shared<LazyTree>(MakeMillion());
    const auto slowFolders = std::make_shared<LazyTree>(QList<int>{1, 10, 12}, kSlowProjects);
    const auto with = [](std::vector<double> (*run)(BenchedTree&, LazyFolder&),
                         const std::shared_ptr<LazyFolder>& folder) {
        return [run, folder](BenchedTree& tree) { return run(tree, *folder); };
    };
    const auto restore = [](const std::shared_ptr<LazyTree>& sample) {
        return
            [sample](BenchedTree& tree) { return MeasureRestoring(tree, (**sample).Path(), **sample, 300s); };
    };
    std::vector<Job> jobs;
    // The heap first: later jobs would be measured against caches that are filled already.
    jobs.push_back({"heap",
                    {{"heap per row at 10,000 rows, opened again and again in one process", "B", 0.6, {}}},
                    5,
                    with(MeasureHeapAgain, many)});
    jobs.push_back({"open",
                    {{"10,000 projects in one folder, from opening to first paint with all rows there, sorted",
                      "ms",
                      0.35,
                      {}},
                     {"longest event-loop gap meanwhile", "ms", 0.5, {}}},
                    11,
                    with(MeasureOpeningMany, many)});
    jobs.push_back({"open-given-names",
                    {{"the same with names as people give them", "ms", 0.15, {}},
                     {"longest event-loop gap meanwhile", "ms", 0.5, {}}},
                    11,
                    with(MeasureOpeningMany, given)});
    jobs.push_back({"open-100k",
                    {{"100,000 projects in one folder, with names as people give them", "ms", 0.15, {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    3,
                    with(MeasureOpeningMany, tenTimesAsMany)});
    jobs.push_back({"create",
                    {{"one project created among 10,000, to its row painted", "ms", 0.05, {}}},
                    7,
                    with(MeasureCreation, many)});
    jobs.push_back({"resort", {{"resort by name, painted", "ms", 0.5, {}}}, 9, with(MeasureResorting, many)});
    jobs.push_back({"first-sort",
                    {{"first sort by size of 10,000, to the paint of the final order", "ms", 1.0, {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    5,
                    with(MeasureFirstSorting, given)});
    jobs.push_back({"first-sort-100k",
                    {{"first sort by size of 100,000, to the paint of the final order", "ms", 1.0, {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    3,
                    with(MeasureFirstSorting, tenTimesAsMany)});
    jobs.push_back({"slow-volume",
                    {{"10 ms per operation, 2,000 projects in one folder: from opening to painted, sorted",
                      "ms",
                      0.01,
                      {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    3,
                    with(MeasureOpeningSlow, slow)});
    const Figure gap{"longest event-loop gap meanwhile", "ms", {}, 50};
    const auto addRestoring = [&](const char* name, const std::string& what, double limit, int repetitions,
                                  const std::shared_ptr<LazyTree>& sample) {
        const Figure figure{what + ", from opening to first paint with all rows there", "ms", limit, {}};
        jobs.push_back({name, {figure, gap}, repetitions, restore(sample)});
    };
    addRestoring("restore", "1,110 open folders with 100,000 projects", 0.2, 5, manyFolders);
    addRestoring("restore-given-names", "the same with names as people give them", 0.2, 5, foldersOfGiven);
    addRestoring("restore-300k", "3,033 open folders with 300,000 projects", 0.25, 3, threeTimesAsMany);
    addRestoring("restore-1m", "10,110 open folders with 1,000,000 projects", 0.25, 1, aMillion);
    jobs.back().mIsLong = true;
    jobs.push_back({"restore-slow",
                    {{"10 ms per operation, 131 open folders with 2,000 projects: from opening to painted",
                      "ms",
                      0.03,
                      {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    3,
                    [slowFolders](BenchedTree& tree) {
                        const SlowVolume volume((**slowFolders).Path());
                        return MeasureRestoring(tree, volume.Path(), **slowFolders, 300s);
                    }});
    jobs.push_back({"scroll",
                    {{"a page scrolled at 10,000 rows, painted", "ms", {}, 16.7},
                     {"the longest of 100 such frames", "ms", {}, {}}},
                    7,
                    with(MeasureScrolling, many)});
    jobs.push_back({"select-all",
                    {{"select all of 10,000, painted", "ms", {}, {}},
                     {"longest event-loop gap in the second after it", "ms", {}, 50}},
                    7,
                    with(MeasureSelectingAll, many)});
    jobs.push_back({"select-all-100k",
                    {{"select all of 100,000, painted", "ms", 0.5, {}},
                     {"longest event-loop gap in the second after it", "ms", {}, 50}},
                    3,
                    with(MeasureSelectingAll, tenTimesAsMany)});
    jobs.push_back(
        {"zoom", {{"zoom step over 10,000 rows, painted", "ms", {}, {}}}, 7, with(MeasureZooming, many)});
    jobs.push_back({"search",
                    {{"search keystroke over 10,000 names, to painted hits", "ms", {}, {}}},
                    7,
                    with(MeasureSearching, many)});
    AddSearchJobs(jobs);
    AddProgramJobs(jobs);
    jobs.push_back({"trash",
                    {{"2,000 projects to the trash, to the paint without them", "ms", {}, {}},
                     {"longest event-loop gap meanwhile", "ms", {}, 50}},
                    5,
                    MeasureTrashing});
    jobs.back().mIsPanelOnly = true;
    jobs.push_back(
        {"trash-cancelled",
         {{"a folder of 1,000 locked projects, never opened, to the trash at 20 ms per operation: from "
           "Cancel to the end",
           "ms",
           {},
           100},
          {"longest event-loop gap meanwhile", "ms", {}, 100}},
         3,
         MeasureCancellingTrash});
    jobs.back().mIsPanelOnly = true;
    return jobs;
}

}  // namespace bench
