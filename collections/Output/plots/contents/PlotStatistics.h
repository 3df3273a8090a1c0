#pragma once

#include "Output/plots/contents/PlotContents.h"

#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

namespace velmorak {

/// Entries, mean and rms in range; underflow, overflow and NaN if there are any.
std::vector<StatisticsRow> statisticsOf(const Histogram1D& histogram);
std::vector<StatisticsRow> statisticsOf(const Profile1D& profile);
/// Parameters of a function; with errors, chi square and p-value if a fit recorded them in the annotation.
std::vector<StatisticsRow> statisticsOf(const FunctionObject& function);

std::string statisticsLine(const Histogram2D& histogram);
std::string statisticsLine(const Histogram3D& histogram);
std::string statisticsLine(const Profile2D& profile);

}  // namespace velmorak
