#include "PlotStatistics.h"

#include "FitNotes.h"
#include "PlotText.h"

#include <velmorak/FormatMeasurement.h>

#include <cmath>

namespace velmorak {

namespace {

std::string countText(std::int64_t count) {
    return std::to_string(count);
}

std::string pairText(double x, double y) {
    return "(" + roundedText(x, 3) + ", " + roundedText(y, 3) + ")";
}

/// Moments of a coordinate from the sums of w, wx and wx².
struct Moments {
    Moments(double w, double wx, double wxx);
    double mean = 0.0;
    double rms = 0.0;
};

Moments::Moments(double w, double wx, double wxx) {
    mean = wx / w;
    const double variance = wxx / w - mean * mean;
    rms = std::isnan(variance) ? variance : std::sqrt(std::max(variance, 0.0));
}

template <std::size_t dimensions>
ProfileSums<dimensions> inRange(const Profile<dimensions>& profile) {
    ProfileSums<dimensions> sums;
    for (std::size_t cell = 0; cell < profile.cells().size(); ++cell) {
        if (profile.grid().isInside(cell)) {
            sums.add(profile.cells()[cell]);
        }
    }
    return sums;
}

/// Without entries there is no mean.
std::vector<StatisticsRow> momentRows(std::int64_t entries, double mean, double rms) {
    if (entries == 0) {
        return {{"Entries", "0"}};
    }
    return {{"Entries", countText(entries)}, {"Mean", roundedText(mean)}, {"RMS", roundedText(rms)}};
}

std::string momentLine(std::int64_t entries, const Moments& x, const Moments& y) {
    if (entries == 0) {
        return "no entries";
    }
    return countText(entries) + " entries, mean " + pairText(x.mean, y.mean) + ", RMS " + pairText(x.rms, y.rms);
}

}  // namespace

std::vector<StatisticsRow> statisticsOf(const Histogram1D& histogram) {
    std::vector<StatisticsRow> rows = momentRows(histogram.inRange().entries, histogram.mean(), histogram.rms());
    if (histogram.underflow().entries > 0) {
        rows.push_back({"Underflow", roundedOrWhole(histogram.underflow().w)});
    }
    if (histogram.overflow().entries > 0) {
        rows.push_back({"Overflow", roundedOrWhole(histogram.overflow().w)});
    }
    if (histogram.nanEntries() > 0) {
        rows.push_back({"NaN", countText(histogram.nanEntries())});
    }
    return rows;
}

std::vector<StatisticsRow> statisticsOf(const Profile1D& profile) {
    const ProfileSums<1> sums = inRange(profile);
    const Moments x(sums.w, sums.wx[0], sums.wxx[0]);
    return momentRows(sums.entries, x.mean, x.rms);
}

std::vector<StatisticsRow> statisticsOf(const FunctionObject& function) {
    const FitNotes notes = fitNotesOf(function);
    std::vector<StatisticsRow> rows;
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
    const auto sums = histogram.inRange();
    return momentLine(sums.entries, Moments(sums.w, sums.wx[0], sums.wxx[0]), Moments(sums.w, sums.wx[1], sums.wxx[1]));
}

std::string statisticsLine(const Profile2D& profile) {
    const ProfileSums<2> sums = inRange(profile);
    return momentLine(sums.entries, Moments(sums.w, sums.wx[0], sums.wxx[0]), Moments(sums.w, sums.wx[1], sums.wxx[1]));
}

}  // namespace velmorak
