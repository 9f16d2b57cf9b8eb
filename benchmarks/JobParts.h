#pragma once

#include <QTreeView>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "benchmarks/BenchApplication.h"
#include "benchmarks/BenchedTree.h"
#include "benchmarks/Jobs.h"
#include "benchmarks/SampleFolder.h"
#include "benchmarks/SampleTree.h"

namespace bench {

/// A sample that is made when it is first used, and shared by jobs.
template <class Sample>
class Lazy {
public:
    template <class... Arguments>
    explicit Lazy(Arguments... arguments)
        : mMake([arguments...] { return std::make_unique<Sample>(arguments...); }) {}
    Sample& operator*() {
        if (!mSample) mSample = mMake();
        return *mSample;
    }

private:
    std::function<std::unique_ptr<Sample>()> mMake;
    std::unique_ptr<Sample> mSample;
};

using LazyFolder = Lazy<SampleFolder>;
using LazyTree = Lazy<SampleTree>;

int CountRows(const QTreeView& view);
/// The item's name in a row, without suffix and without what is said about its state.
QString RowName(const QModelIndex& index);
QString RowName(const QTreeView& view, int row);
/// The names of a folder's projects in the order in which `tree` shows them, which is learnt by opening the
/// folder once: the two sides agree on regular names, and not quite on others.
const std::vector<QString>& NamesAsShown(BenchedTree& tree, const SampleFolder& folder);
/// True when the view has these rows in order, told from a few of them.
bool ShowsAll(const QTreeView& view, const std::vector<QString>& names);
/// Throws std::runtime_error when a row is not where it belongs.
void CheckOrder(const QTreeView& view, const std::vector<QString>& names);
Clock::time_point RunUntilShown(BenchedTree& tree, const std::vector<QString>& names,
                                std::chrono::seconds timeout = std::chrono::seconds(60));
/// Opens a folder and waits until all is quiet.
void OpenAndSettle(BenchedTree& tree, const SampleFolder& folder);

/// Bytes of the heap for each row, of a folder that is opened and closed.
double MeasureHeap(BenchedTree& tree, const SampleFolder& folder);

/// Megabytes that are resident in this process while a million projects in 10,110 open folders are shown.
double MeasureResidentMemory(BenchedTree& tree);

/// Keystrokes in the search of many names, beside `find -iname`.
void AddSearchJobs(std::vector<Job>& jobs);
/// What the program as a whole costs: memory of a fresh process, start, rest.
void AddProgramJobs(std::vector<Job>& jobs);

}  // namespace bench
