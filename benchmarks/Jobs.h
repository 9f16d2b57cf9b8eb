#pragma once

#include <functional>
#include <vector>

#include "benchmarks/BenchedTree.h"
#include "benchmarks/ResultTable.h"

namespace bench {

/// A job that both sides do, and what is measured in it.
struct Job {
    std::string mName;
    std::vector<Figure> mFigures;
    int mRepetitions = 9;
    /// Does the job once and returns the values of the figures. Milliseconds come first where they are
    /// measured: they are the time that the benchmark library reports.
    std::function<std::vector<double>(BenchedTree&)> mRun;
    /// There is nothing to compare it with: it is run with the panel (`PanelBench`) alone.
    bool mIsPanelOnly = false;
    /// What stands beside it where that is not the other tree; also returns the values of the figures, not a
    /// number for one that has nothing beside it.
    std::function<std::vector<double>()> mRunBeside = {};
    /// It takes minutes, and is run only when `--long` asks for it.
    bool mIsLong = false;
};

/// All jobs. Their sample folders are made when a job first needs them, and removed with the jobs.
std::vector<Job> MakeJobs();

}  // namespace bench
