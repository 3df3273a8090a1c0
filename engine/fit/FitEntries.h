#pragma once

#include <velmorak/Fit.h>

#include <string>
#include <vector>

namespace velmorak::fitting {

/// The entries that take part in a fit, prepared for fast evaluation: the model value of an entry is the weighted sum
/// of the function over the points of a quadrature rule, divided by the error of the entry. Shape:
/// abscissae[point][entry] and weights[point][entry]; one point unless the function is averaged over bins.
struct FitEntries {
    std::vector<std::vector<double>> abscissae;
    std::vector<std::vector<double>> weights;
    std::vector<double> targets;
    std::vector<double> centers;
    std::vector<std::string> warnings;  ///< Sentences about ignored entries.
};

/// @throws Failure if no entry is left, or an entry does not suit the method.
FitEntries selectEntries(const FitData& data, const FitOptions& options);

}  // namespace velmorak::fitting
