#include "benchmarks/JobParts.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <stdexcept>

#include "benchmarks/HeapMeter.h"

namespace bench {

using namespace std::chrono_literals;

int CountRows(const QTreeView& view) {
    return view.model() ? view.model()->rowCount(view.rootIndex()) : 0;
}

QString RowName(const QModelIndex& index) {
    QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty()) text = index.data(Qt::AccessibleTextRole).toString();
    text = text.section(QLatin1Char(','), 0, 0);
    if (text.endsWith(QLatin1String(".zuproj"))) text.chop(7);
    return text;
}

QString RowName(const QTreeView& view, int row) {
    return RowName(view.model()->index(row, 0, view.rootIndex()));
}

namespace {

std::vector<QString> AllNames(const QTreeView& view) {
    std::vector<QString> names;
    for (int row = 0; row < CountRows(view); ++row) names.push_back(RowName(view, row));
    return names;
}

/// Opens the folder once and waits until nothing changes any more.
std::vector<QString> LearnOrder(BenchedTree& tree, const SampleFolder& folder) {
    tree.Prepare();
    tree.Open(folder.Path());
    const auto isDone = [&](const QRegion&) { return CountRows(tree.GetView()) == folder.CountProjects(); };
    BenchApplication::Instance().RunUntilPainted(*tree.GetView().viewport(), isDone, 60s, "all rows");
    BenchApplication::Instance().RunFor(2000ms);
    std::vector<QString> names = AllNames(tree.GetView());
    tree.Close();
    if (std::set(names.begin(), names.end()) != std::set(folder.Names().begin(), folder.Names().end()))
        throw std::runtime_error("rows are missing");
    return names;
}

}  // namespace

const std::vector<QString>& NamesAsShown(BenchedTree& tree, const SampleFolder& folder) {
    if (folder.AreNamesRegular()) return folder.Names();
    static std::map<std::pair<BenchedTree*, std::string>, std::vector<QString>> sKnown;
    const auto known = sKnown.find({&tree, folder.Path()});
    if (known != sKnown.end()) return known->second;
    return sKnown[{&tree, folder.Path()}] = LearnOrder(tree, folder);
}

bool ShowsAll(const QTreeView& view, const std::vector<QString>& names) {
    const auto count = static_cast<int>(names.size());
    if (CountRows(view) != count) return false;
    return std::ranges::all_of(std::array{0, 1, count / 2, count - 2, count - 1}, [&](int row) {
        return RowName(view, row) == names[static_cast<std::size_t>(row)];
    });
}

void CheckOrder(const QTreeView& view, const std::vector<QString>& names) {
    if (AllNames(view) != names) throw std::runtime_error("rows are out of order");
}

Clock::time_point RunUntilShown(BenchedTree& tree, const std::vector<QString>& names,
                                std::chrono::seconds timeout) {
    const auto isDone = [&](const QRegion&) { return ShowsAll(tree.GetView(), names); };
    return BenchApplication::Instance().RunUntilPainted(*tree.GetView().viewport(), isDone, timeout,
                                                        "all rows");
}

void OpenAndSettle(BenchedTree& tree, const SampleFolder& folder) {
    const std::vector<QString>& names = NamesAsShown(tree, folder);
    tree.Prepare();
    tree.Open(folder.Path());
    RunUntilShown(tree, names);
    BenchApplication::Instance().RunFor(500ms);
    // The panel has put back how the run before has left it.
    tree.GetView().clearSelection();
    tree.GetView().scrollToTop();
    BenchApplication::Instance().RunFor(200ms);
}

double MeasureHeap(BenchedTree& tree, const SampleFolder& folder) {
    tree.Prepare();
    BenchApplication::Instance().RunFor(500ms);
    const auto before = static_cast<double>(HeapInUse());
    tree.Open(folder.Path());
    const auto isDone = [&](const QRegion&) { return CountRows(tree.GetView()) == folder.CountProjects(); };
    BenchApplication::Instance().RunUntilPainted(*tree.GetView().viewport(), isDone, 60s, "all rows");
    BenchApplication::Instance().RunFor(1500ms);
    const auto after = static_cast<double>(HeapInUse());
    tree.Close();
    return (after - before) / folder.CountProjects();
}

}  // namespace bench
