#pragma once

#include "fit/Iterate.h"

/// Parameters that the data do not determine.
namespace velmorak::fitting {

/// The smallest step of a finite difference of gradients, in standard deviations.
inline constexpr double minDifferenceStep = 1e-5;
/// Accepted relative error of the second derivatives from rounding and from the finite step.
inline constexpr double maxCurvatureError = 1e-3;

/// @return a step that survives the rounding of its sum with the parameter, in units of the deviation.
double differenceStepOf(double value, double deviation);

/// @throws Failure with the names of parameters that the data cannot distinguish or that have no influence.
void checkNotSingular(const LeastSquaresProblem& problem, const MatrixXd& r, const Selection& chosen);

/// @param axis in which the curvature is not positive, in the standard deviations of the linear system (the columns of
/// unit).
[[noreturn]] void throwSaddlePoint(const Iterate& iterate, const MatrixXd& unit, const VectorXd& axis);

/// Names the parameters whose curvature is lost in rounding.
[[noreturn]] void throwUndetermined(const Iterate& iterate, const LinearSystem& linear);

}  // namespace velmorak::fitting
