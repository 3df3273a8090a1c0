#include "Output/plots/contents/PlotStatistics.h"

#include "Output/FitNotes.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/FormatMeasurement.h>

#include <cmath>

namespace velmorak {

namespace {

std::string countText(std::int64_t count) {
    return std::to_string(count);
}

bool hasWeights(const BinSums& sums) {
    return sums.w != static_cast<double>(sums.entries) || sums.ww != sums.w;
}

/// Fills outside of the axis, and their weights if there are any.
void addOutside(std::vector<StatisticsRow>& rows, const std::string& name, const BinSums& sums, bool isWeighted) {
    if (sums.entries == 0) {
        return;
    }
    rows.push_back({name, countText(sums.entries)});
    if (isWeighted) {
        rows.push_back({name + " weight", roundedOrWhole(sums.w)});
    }
}

/// Without entries there is no mean.
std::vector<StatisticsRow> momentRows(std::int64_t entries, double mean, double rms) {
    if (entries == 0) {
        return {{"Entries", "0"}};
    }
    return {{"Entries", countText(entries)}, {"Mean", roundedText(mean)}, {"RMS", roundedText(rms)}};
}

/// One number for each axis, in brackets if there are several.
template <std::size_t axes, typename NumberOf>
std::string axisText(const NumberOf& numberOf) {
    std::string text;
    for (std::size_t direction = 0; direction < axes; ++direction) {
        text += (direction > 0 ? ", " : "") + roundedText(numberOf(direction), 3);
    }
    return axes == 1 ? text : "(" + text + ")";
}

/// @param sums coordinates of the axes first.
template <std::size_t axes, std::size_t quantities>
std::string momentLine(const CellSums<quantities>& sums) {
    if (sums.entries == 0) {
        return "no entries";
    }
    std::string text = countText(sums.entries) + " entries, mean " +
                       axisText<axes>([&](std::size_t direction) { return sums.mean(direction); }) + ", RMS " +
                       axisText<axes>([&](std::size_t direction) { return sums.rms(direction); });
    if constexpr (axes == 2) {
        text += ", correlation " + roundedText(sums.correlation(0, 1), 3);
    }
    return text;
}

}  // namespace

std::vector<StatisticsRow> statisticsOf(const Histogram1D& histogram) {
    const BinSums all = histogram.inRange();
    const bool isWeighted = hasWeights(all) || hasWeights(histogram.underflow()) || hasWeights(histogram.overflow());
    std::vector<StatisticsRow> rows = momentRows(all.entries, all.mean(0), all.rms(0));
    if (!histogram.axis().labels.empty()) {
        rows = {{"Entries", countText(all.entries)}};  // The number of a category has no meaning.
    }
    if (isWeighted) {
        rows.insert(rows.begin() + 1, {"Sum of weights", roundedOrWhole(all.w)});
    }
    addOutside(rows, "Underflow", histogram.underflow(), isWeighted);
    addOutside(rows, "Overflow", histogram.overflow(), isWeighted);
    if (histogram.nanEntries() > 0) {
        rows.push_back({"NaN", countText(histogram.nanEntries())});
    }
    return rows;
}

std::vector<StatisticsRow> statisticsOf(const Profile1D& profile) {
    const CellSums<2> sums = profile.inRange();
    return momentRows(sums.entries, sums.mean(0), sums.rms(0));
}

std::vector<StatisticsRow> statisticsOf(const FunctionObject& function) {
    const FitNotes notes = fitNotesOf(function);
    std::vector<StatisticsRow> rows;
    if (notes.status == "not converged") {
        rows.push_back({"Fit", notes.status});
    }
    if (notes.chi2 && notes.ndf) {
        rows.push_back({"χ²/ndf", roundedText(*notes.chi2) + " / " + formatNumber(*notes.ndf)});
    }
    if (notes.pValue) {
        rows.push_back({"p-value", roundedText(*notes.pValue)});
    }
    for (std::size_t i = 0; i < function.parameters.size(); ++i) {
        const FunctionObject::Parameter& parameter = function.parameters[i];
        const double error = notes.errors[i].value_or(0.0);
        rows.push_back(
            {parameter.name, error == 0.0 ? roundedText(parameter.value) : formatMeasurement(parameter.value, error)});
    }
    return rows;
}

std::string statisticsLine(const Histogram2D& histogram) {
    return momentLine<2>(histogram.inRange());
}

std::string statisticsLine(const Histogram3D& histogram) {
    return momentLine<3>(histogram.inRange());
}

std::string statisticsLine(const Profile2D& profile) {
    return momentLine<2>(profile.inRange());
}

}  // namespace velmorak
