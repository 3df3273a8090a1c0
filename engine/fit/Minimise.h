#pragma once

#include "fit/LeastSquaresProblem.h"

namespace velmorak::fitting {

/// The range of a parameter.
struct Limits {
    double low;
    double high;
};

struct Minimum {
    std::vector<double> values;
    Selection moving;     ///< Parameters that are neither fixed nor at a limit.
    Selection atLimit;    ///< Free parameters that a limit stops.
    MatrixXd covariance;  ///< Of the moving parameters.
    int steps = 0;
};

/// Finds a minimum by the Levenberg-Marquardt method (J. Moré, Lecture Notes in Mathematics 630 (1978) 105), with steps
/// that end at limits, then by Newton's method with the full second derivatives, whose inverse is the covariance.
/// @param start within the limits.
/// @param free parameters that are not fixed.
/// @throws Failure, Stopped.
Minimum minimise(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                 const std::vector<Limits>& limits, const std::function<bool()>& isStopping);

/// Start values of all parameters: those given, else estimates from the data, else defaults.
std::vector<double> startValues(LeastSquaresProblem& problem, const FitParameters& given);

}  // namespace velmorak::fitting
