#include "fit/Newton.h"

#include "fit/Degeneracy.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak::fitting {

namespace {

/// Distance from the minimum, in standard deviations, at which the iteration ends.
constexpr double endDistance = 1e-9;
/// Accepted as a minimum if rounding prevents endDistance.
constexpr double coarseDistance = 1e-5;

}  // namespace

bool Newton::refine(const LinearSystem& linear) {
    checkNotSingular(iterate.problem, linear.r, iterate.moving);
    const Eigen::Index n = linear.q.size();
    const MatrixXd unit = linear.r.triangularView<Eigen::Upper>().solve(MatrixXd::Identity(n, n));
    const std::vector<double> before = iterate.values;
    const double costBefore = iterate.system.cost;
    chooseStep(unit);
    MatrixXd hessian = curvature(unit, linear.q);
    if (!hessian.allFinite()) {
        hessian.setIdentity();
    }
    const Axes axes(hessian);
    const bool isDetermined = (curvatureError(unit, linear.q, axes).array().abs() < maxCurvatureError).all();
    if (!(axes.eigenvalues().minCoeff() > 1e-9)) {
        isDetermined ? throwSaddlePoint(iterate, unit, axes.eigenvectors().col(0)) : throwUndetermined(iterate, linear);
    }
    if (!converge(unit, axes, linear.q)) {
        iterate.linearise();
        if (!std::isfinite(iterate.system.cost) || iterate.system.cost > costBefore) {
            iterate.values = before;
            iterate.linearise();
        }
        return false;
    }
    if (!isDetermined) {
        throwUndetermined(iterate, linear);
    }
    const MatrixXd spread = unit * axes.eigenvectors() * axes.eigenvalues().cwiseSqrt().cwiseInverse().asDiagonal();
    covarianceMatrix = spread * spread.transpose();
    return true;
}

void Newton::chooseStep(const MatrixXd& unit) {
    differenceStep = minDifferenceStep;
    for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
        differenceStep =
            std::max(differenceStep, differenceStepOf(iterate.values[iterate.moving[k]], unit.row(index(k)).norm()));
    }
}

VectorXd Newton::descentAt(const std::vector<double>& point, const MatrixXd& unit) {
    return -unit.transpose() * iterate.problem.gradient(point, iterate.moving);
}

MatrixXd Newton::curvature(const MatrixXd& unit, const VectorXd& descent) {
    MatrixXd result(unit.rows(), unit.cols());
    for (Eigen::Index k = 0; k < unit.cols(); ++k) {
        std::vector<double> above = iterate.values;
        for (std::size_t i = 0; i < iterate.moving.size(); ++i) {
            above[iterate.moving[i]] += differenceStep * unit(index(i), k);
        }
        result.col(k) = (descent - descentAt(above, unit)) / differenceStep;
    }
    return 0.5 * (result + result.transpose());
}

VectorXd Newton::curvatureError(const MatrixXd& unit, const VectorXd& descent, const Axes& axes) {
    const VectorXd sum = VectorXd::Ones(unit.cols());
    const VectorXd move = unit * sum;
    std::vector<double> below = iterate.values;
    for (std::size_t i = 0; i < iterate.moving.size(); ++i) {
        below[iterate.moving[i]] -= differenceStep * move[index(i)];
    }
    const VectorXd slope = (descentAt(below, unit) - descent) / differenceStep;
    const VectorXd along = axes.eigenvectors().transpose() * slope;
    return axes.eigenvectors() * along.cwiseQuotient(axes.eigenvalues()) - sum;
}

bool Newton::converge(const MatrixXd& unit, const Axes& axes, VectorXd descent) {
    double last = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 20; ++i) {
        const VectorXd along = axes.eigenvectors().transpose() * descent;
        const VectorXd step = axes.eigenvectors() * along.cwiseQuotient(axes.eigenvalues());
        const double distance = step.norm();
        if (!(distance >= endDistance)) {
            return distance < endDistance;
        }
        if (distance > 0.5 * last) {
            return last < coarseDistance;
        }
        last = distance;
        const VectorXd move = unit * step;
        std::vector<double> next = iterate.moved(move);
        for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
            if (next[iterate.moving[k]] != iterate.values[iterate.moving[k]] + move[index(k)]) {
                return false;
            }
        }
        iterate.values = std::move(next);
        descent = descentAt(iterate.values, unit);
    }
    return last < coarseDistance;
}

}  // namespace velmorak::fitting
