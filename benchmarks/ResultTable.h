#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace bench {

/// What is measured in a job, and how much it may be.
struct Figure {
    std::string mName;
    std::string mUnit;
    /// Most that ours may be of the baseline.
    std::optional<double> mRatioLimit;
    /// Most that ours may be.
    std::optional<double> mLimit;
};

struct Result {
    Figure mFigure;
    /// One value for each repetition.
    std::vector<double> mOurs;
    std::vector<double> mBaseline;
};

double Median(std::vector<double> values);
/// Median of ours by median of the baseline.
double Ratio(const Result& result);

/// Writes the results as a Markdown table, with names for the two sides.
void PrintTable(std::ostream& out, const std::vector<Result>& results, const std::string& ours = "panel",
                const std::string& baseline = "tuned QFSM");

}  // namespace bench
