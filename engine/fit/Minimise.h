#pragma once

#include "fit/Problem.h"

namespace velmorak::fitting {

/// Where a parameter may go.
struct Limits {
    double low;
    double high;
};

/// A minimum, and what is known of the parameters there.
struct Minimum {
    std::vector<double> values;
    Selection moving;     ///< Parameters that are neither fixed nor at a limit.
    Selection atLimit;    ///< Free parameters that a limit stops.
    MatrixXd covariance;  ///< Of those that are moving.
    int steps = 0;
};

/// Finds a minimum by the method of Levenberg and Marquardt (J. Moré, Lecture Notes in Mathematics 630 (1978) 105) with
/// steps that end at limits; then by Newton's method with the full second derivatives, whose inverse is the covariance.
/// @param start within the limits.
/// @param free parameters that are not fixed.
/// @throws Failure, Stopped.
Minimum minimise(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                 const std::vector<Limits>& limits, const std::function<bool()>& isStopping);

/// @throws Failure naming parameters that the data cannot tell apart, or on which the function does not depend.
void refuseSingular(const LeastSquaresProblem& problem, const MatrixXd& r, const Selection& chosen);

/// Start values for all parameters: those that are given, those that the data tell, or the usual ones.
std::vector<double> startValues(LeastSquaresProblem& problem, const FitParameters& given);

/// @return "mean=91.2, width=2.5" of the parameters chosen.
std::string listed(const LeastSquaresProblem& problem, const std::vector<double>& values, const Selection& chosen);

}  // namespace velmorak::fitting
