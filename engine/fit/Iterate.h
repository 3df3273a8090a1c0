#pragma once

#include "fit/Minimise.h"

namespace velmorak::fitting {

inline Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

/// The current point of a minimisation.
struct Iterate {
    LeastSquaresProblem& problem;
    const Selection& free;
    const std::vector<Limits>& limits;
    std::vector<double> values;
    LinearSystem system{};  ///< In the free parameters, at the values.
    Selection moving{};     ///< Free parameters that are not at a limit.
    Selection atLimit{};

    void linearise() { system = problem.linearise(values, free); }

    /// Divides the free parameters into moving and atLimit. @return the system of the moving ones.
    LinearSystem withoutParametersAtLimits();

    /// @return the values after a step of the moving parameters, clamped to the limits.
    std::vector<double> moved(const VectorXd& step) const;

    /// @return the chosen parameters as "mean=91.2, width=2.5".
    std::string format(const Selection& chosen) const;

    /// @return ", last at " and the free parameters, for messages.
    std::string lastValues() const;
};

}  // namespace velmorak::fitting
