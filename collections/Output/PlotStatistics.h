#pragma once

#include "PlotContents.h"

#include <velmorak/HistogramGrid.h>
#include <velmorak/Profile.h>

namespace velmorak {

/// Entries, mean and rms of what lies in range; what lies outside where there is some.
std::vector<StatisticsRow> statisticsOf(const Histogram1D& histogram);
std::vector<StatisticsRow> statisticsOf(const Profile1D& profile);
/// Parameters of a function; with errors, chi-squared and p-value where a fit notes them in its annotation.
std::vector<StatisticsRow> statisticsOf(const FunctionObject& function);

std::string statisticsLine(const Histogram2D& histogram);
std::string statisticsLine(const Profile2D& profile);

}  // namespace velmorak
