#include "fit/Degeneracy.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <Eigen/QR>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak::fitting {

namespace {

/// Directions along which the function changes relatively less than this are lost in rounding.
constexpr double minRelativeChange = 1e-12;
/// The smallest step of a finite difference, relative to the parameter.
constexpr double minRelativeStep = 1e-12;

std::string nameOf(const LeastSquaresProblem& problem, std::size_t parameter) {
    return velmorak::quoted(problem.model().names[parameter]);
}

/// Appends the name of a parameter to a list of them.
void appendName(std::string& names, const LeastSquaresProblem& problem, std::size_t parameter) {
    names += (names.empty() ? "" : ", ") + nameOf(problem, parameter);
}

/// @return the direction along which the function changes least, given a decomposition of the scaled system.
VectorXd weakDirection(const Eigen::ColPivHouseholderQR<MatrixXd>& decomposition) {
    const MatrixXd& rFactor = decomposition.matrixQR();
    const Eigen::Index n = rFactor.cols();
    VectorXd direction = VectorXd::Zero(n);
    direction[n - 1] = 1.0;
    direction.head(n - 1) = rFactor.topLeftCorner(n - 1, n - 1)
                                .triangularView<Eigen::Upper>()
                                .solve(VectorXd(-rFactor.col(n - 1).head(n - 1)));
    return decomposition.colsPermutation() * direction;
}

/// @return how much the curvature in each parameter alone differs on both sides of the point.
VectorXd curvatureErrors(const Iterate& iterate, const LinearSystem& linear) {
    VectorXd errors(linear.q.size());
    const VectorXd slope = iterate.problem.gradient(iterate.values, iterate.moving);
    for (Eigen::Index k = 0; k < errors.size(); ++k) {
        const std::size_t parameter = iterate.moving[static_cast<std::size_t>(k)];
        const double scale = 1.0 / linear.r.col(k).norm();
        const double step = differenceStepOf(iterate.values[parameter], scale);
        const auto slopeAt = [&](double distance) {
            std::vector<double> point = iterate.values;
            point[parameter] += distance * scale;
            return iterate.problem.gradient(point, iterate.moving)[k];
        };
        const double difference = slopeAt(step) + slopeAt(-step) - 2.0 * slope[k];
        const double error = std::fabs(difference) * scale / step;
        errors[k] = std::isfinite(error) ? error : std::numeric_limits<double>::max();
    }
    return errors;
}

}  // namespace

double differenceStepOf(double value, double deviation) {
    const double least = minRelativeStep * std::fabs(value) / deviation;
    return std::isfinite(least) ? std::max(minDifferenceStep, least) : minDifferenceStep;
}

void checkNotSingular(const LeastSquaresProblem& problem, const MatrixXd& r, const Selection& chosen) {
    const Eigen::Index n = r.cols();
    const VectorXd norms = r.colwise().norm();
    for (Eigen::Index k = 0; k < n; ++k) {
        if (!(norms[k] > 0.0)) {
            throw Failure("the function does not depend on " + nameOf(problem, chosen[static_cast<std::size_t>(k)]) +
                          " for the fitted entries; fix it, or give it another start value");
        }
    }
    const MatrixXd scaled = r * norms.cwiseInverse().asDiagonal();
    const Eigen::ColPivHouseholderQR<MatrixXd> decomposition(scaled);
    const MatrixXd& rFactor = decomposition.matrixQR();
    if (std::fabs(rFactor(n - 1, n - 1)) > minRelativeChange * std::fabs(rFactor(0, 0))) {
        return;
    }
    const VectorXd direction = weakDirection(decomposition);
    std::string names;
    for (Eigen::Index k = 0; k < n; ++k) {
        if (!(std::fabs(direction[k]) < 0.01 * direction.cwiseAbs().maxCoeff())) {
            appendName(names, problem, chosen[static_cast<std::size_t>(k)]);
        }
    }
    throw Failure("these entries cannot distinguish the parameters " + names +
                  " (the matrix is singular); fix one of them, or use a simpler model");
}

void throwSaddlePoint(const Iterate& iterate, const MatrixXd& unit, const VectorXd& axis) {
    const VectorXd direction = (unit * axis).cwiseProduct(unit.rowwise().norm().cwiseInverse());
    std::string names;
    for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
        if (!(std::fabs(direction[index(k)]) < 0.1 * direction.cwiseAbs().maxCoeff())) {
            appendName(names, iterate.problem, iterate.moving[k]);
        }
    }
    throw Failure("the fit finds no minimum along " + names + iterate.lastValues() +
                  " (the second derivatives are not positive); give other start values or limits");
}

void throwUndetermined(const Iterate& iterate, const LinearSystem& linear) {
    const VectorXd errors = curvatureErrors(iterate, linear);
    std::string names;
    for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
        if (errors[index(k)] >= std::min(maxCurvatureError, errors.maxCoeff())) {
            appendName(names, iterate.problem, iterate.moving[k]);
        }
    }
    throw Failure("these entries do not determine " + names + iterate.lastValues() +
                  " (rounding would decide about the errors); fix parameters without influence, give limits, or use a "
                  "simpler model");
}

}  // namespace velmorak::fitting
