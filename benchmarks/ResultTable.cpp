#include "benchmarks/ResultTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace bench {

namespace {

/// Three significant digits; whole numbers from 100 on.
std::string ToText(double value) {
    if (std::isnan(value)) return "—";
    const int digits =
        value == 0 ? 0 : std::clamp(2 - static_cast<int>(std::floor(std::log10(std::abs(value)))), 0, 4);
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f", digits, value);
    return text;
}

std::string LimitText(const Figure& figure) {
    std::string text;
    if (figure.mRatioLimit) text = ToText(*figure.mRatioLimit) + " × baseline";
    if (figure.mLimit) text += (text.empty() ? "" : ", ") + ToText(*figure.mLimit) + " " + figure.mUnit;
    return text;
}

std::string Verdict(const Result& result) {
    const Figure& figure = result.mFigure;
    if (result.mOurs.empty() || (!figure.mRatioLimit && !figure.mLimit)) return "";
    if (figure.mLimit && Median(result.mOurs) > *figure.mLimit) return "missed";
    if (figure.mRatioLimit && result.mBaseline.empty()) return "";
    return figure.mRatioLimit && Ratio(result) > *figure.mRatioLimit ? "missed" : "kept";
}

}  // namespace

double Median(std::vector<double> values) {
    if (values.empty()) return std::nan("");
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double Ratio(const Result& result) {
    return Median(result.mOurs) / Median(result.mBaseline);
}

void PrintTable(std::ostream& out, const std::vector<Result>& results, const std::string& ours,
                const std::string& baseline) {
    out << "| job | " << ours << " | " << baseline
        << " | ratio | at most | | runs |\n|---|---:|---:|---:|---|---|---:|\n";
    for (const auto& result : results) {
        const auto& unit = result.mFigure.mUnit;
        out << "| " << result.mFigure.mName << " | " << ToText(Median(result.mOurs)) << ' ' << unit << " | "
            << ToText(Median(result.mBaseline)) << ' ' << unit << " | " << ToText(Ratio(result)) << " | "
            << LimitText(result.mFigure) << " | " << Verdict(result) << " | "
            << std::max(result.mOurs.size(), result.mBaseline.size()) << " |\n";
    }
}

}  // namespace bench
