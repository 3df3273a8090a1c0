#include "fit/Minimise.h"

#include "fit/Degeneracy.h"
#include "fit/LevenbergMarquardt.h"
#include "fit/Newton.h"

#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <cmath>
#include <numeric>
#include <utility>

namespace velmorak::fitting {

namespace {

constexpr int maxSteps = 1000;
constexpr int maxFlatSteps = 6;
/// Distance from the minimum, in standard deviations, at which Newton's method takes over.
constexpr double nearDistance = 1e-4;

[[noreturn]] void throwInvalidStart(const Iterate& iterate) {
    const std::optional<double> invalid = iterate.problem.firstInvalidEntry(iterate.values);
    Selection all(iterate.values.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    throw Failure("the function has no usable value" + (invalid ? " at x = " + textOf(*invalid) : std::string()) +
                  " with the start values " + iterate.format(all) + "; give other start values");
}

[[noreturn]] void throwNotConverged(Iterate& iterate, int steps) {
    iterate.linearise();
    const LinearSystem linear = iterate.withoutParametersAtLimits();
    checkNotSingular(iterate.problem, linear.r, iterate.moving);
    Eigen::Index worst = 0;
    linear.q.cwiseAbs().maxCoeff(&worst);
    throw NotConverged(
        "the fit did not converge in " + std::to_string(steps) + " steps" + iterate.lastValues() + "; " +
            velmorak::quoted(iterate.problem.model().names[iterate.moving[static_cast<std::size_t>(worst)]]) +
            " still changes; give other start values, limits or a simpler model",
        iterate.values);
}

}  // namespace

Minimum minimise(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                 const std::vector<Limits>& limits, const std::function<bool()>& isStopping) {
    Iterate iterate{problem, free, limits, std::move(start)};
    iterate.linearise();
    if (!std::isfinite(iterate.system.cost)) {
        throwInvalidStart(iterate);
    }
    LevenbergMarquardt levenbergMarquardt(iterate);
    Newton newton(iterate);
    int steps = 0;
    for (; steps < maxSteps; ++steps) {
        if (isStopping && isStopping()) {
            throw Stopped();
        }
        const LinearSystem linear = iterate.withoutParametersAtLimits();
        if (iterate.moving.empty()) {
            return {iterate.values, iterate.moving, iterate.atLimit, MatrixXd(), steps};
        }
        const bool isNear = linear.q.norm() < nearDistance || levenbergMarquardt.flatSteps() >= 3;
        if (isNear && newton.refine(linear)) {
            return {iterate.values, iterate.moving, iterate.atLimit, newton.covariance(), steps};
        }
        levenbergMarquardt.step(linear);
        if (levenbergMarquardt.flatSteps() > maxFlatSteps) {
            break;
        }
    }
    throwNotConverged(iterate, steps);
}

}  // namespace velmorak::fitting
