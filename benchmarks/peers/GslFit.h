#pragma once

#include <array>
#include <vector>

namespace velmorak::bench {

/// Points with errors, for a Gauss on a line.
struct FitPoints {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> error;
};
using PeakOnLine = std::array<double, 5>;  ///< Amplitude, mean, sigma, p0, p1.

double peakOnLine(double x, const double* parameters);

/// The best parameters by the GNU Scientific Library, with its trust region method, derivatives by differences and
/// covariance.
PeakOnLine fittedByGsl(const FitPoints& points, const PeakOnLine& start);

}  // namespace velmorak::bench
