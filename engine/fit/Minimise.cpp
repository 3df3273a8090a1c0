#include "fit/Minimise.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <Eigen/Eigenvalues>
#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

constexpr int maxSteps = 1000;
/// Distances from the minimum, in standard deviations, at which Newton's method takes over and at which it ends.
constexpr double nearDistance = 1e-4;
constexpr double endDistance = 1e-9;
/// Accepted as a minimum if rounding prevents endDistance.
constexpr double coarseDistance = 1e-5;
/// For the finite differences that give second derivatives, in standard deviations and relative to the parameter.
constexpr double minDifferenceStep = 1e-5;
constexpr double minRelativeStep = 1e-12;
/// Accepted relative error of the second derivatives from rounding and from the finite step.
constexpr double maxCurvatureError = 1e-3;
constexpr double costRounding = 1e-13;

Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

class Minimiser {
public:
    Minimiser(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
              const std::vector<Limits>& limits, const std::function<bool()>& isStopping);

    Minimum run();

private:
    [[noreturn]] void throwInvalidStart() const;

    [[noreturn]] void throwNotConverged();

    /// Sorts the free parameters into moving and atLimit. @return the system of the moving ones.
    LinearSystem withoutParametersAtLimits(LinearSystem linear);

    /// @return the values after a step, clamped to the limits.
    std::vector<double> moved(const VectorXd& step) const;

    /// The least squares solution of R step = q and root(damping) D step = 0.
    VectorXd dampedStep(const LinearSystem& linear, const VectorXd& scales) const;

    /// Largest column norms so far, which scale the damping (Moré).
    VectorXd updateScales(const LinearSystem& linear);

    /// Takes one Levenberg-Marquardt step. @return false if no step lowers the cost.
    bool levenbergStep(const LinearSystem& linear);

    /// @return minus half the gradient, in units of the standard deviations.
    VectorXd descentAt(const std::vector<double>& point, const MatrixXd& unit);

    /// Half the Hessian from finite differences of the gradient, in units of the standard deviations of the linear
    /// system (the columns of unit).
    MatrixXd curvature(const MatrixXd& unit, const VectorXd& descent);

    /// @return how much the second derivatives differ on the other side of the point, in the direction of the sum of
    /// all axes, relative to the curvature. Near 0 unless rounding or a tiny scale of the function spoils them.
    VectorXd curvatureError(const MatrixXd& unit, const VectorXd& descent,
                            const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes);

    /// Converges to a nearby minimum by Newton's method and computes the covariance there.
    /// @return false if the minimum is not near enough.
    bool newtonRefine(const LinearSystem& linear);

    bool newtonIterate(const MatrixXd& unit, const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes, VectorXd descent);

    [[noreturn]] void throwSaddlePoint(const VectorXd& axis, const MatrixXd& unit) const;

    double differenceStepOf(std::size_t parameter, double deviation) const;
    /// @return how much the curvature in each parameter alone differs on both sides of the point.
    VectorXd curvatureErrors(const LinearSystem& linear);

    [[noreturn]] void throwUndetermined(const LinearSystem& linear);

    LeastSquaresProblem& problem;
    std::vector<double> values;
    const Selection& free;
    const std::vector<Limits>& limits;
    const std::function<bool()>& isStopping;
    Selection moving;
    Selection atLimit;
    VectorXd maxNorms;
    MatrixXd covariance;
    LinearSystem latest;  ///< At the current values.
    double cost = 0.0;
    double damping = 1e-3;
    double differenceStep = minDifferenceStep;
    int steps = 0;
    int flatSteps = 0;  ///< Consecutive steps whose gain is lost in rounding.
};

Minimiser::Minimiser(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                     const std::vector<Limits>& limits, const std::function<bool()>& isStopping)
    : problem(problem), values(std::move(start)), free(free), limits(limits), isStopping(isStopping) {}

Minimum Minimiser::run() {
    latest = problem.linearise(values, free);
    cost = latest.cost;
    if (!std::isfinite(cost)) {
        throwInvalidStart();
    }
    maxNorms = VectorXd::Zero(index(values.size()));
    for (steps = 0; steps < maxSteps; ++steps) {
        if (isStopping && isStopping()) {
            throw Stopped();
        }
        const LinearSystem linear = withoutParametersAtLimits(latest);
        if (moving.empty()) {
            return {values, moving, atLimit, MatrixXd(), steps};
        }
        const double distance = linear.q.norm();
        if ((distance < nearDistance || flatSteps >= 3) && newtonRefine(linear)) {
            return {values, moving, atLimit, covariance, steps};
        }
        if (!levenbergStep(linear)) {
            flatSteps = std::max(flatSteps + 1, 3);
        }
        if (flatSteps > 6) {
            break;
        }
    }
    throwNotConverged();
}

void Minimiser::throwInvalidStart() const {
    const std::optional<double> invalid = problem.firstInvalidEntry(values);
    Selection all(values.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = i;
    }
    throw Failure("the function has no usable value" + (invalid ? " at x = " + textOf(*invalid) : std::string()) +
                  " with the start values " + formatParameters(problem, values, all) + "; give other start values");
}

void Minimiser::throwNotConverged() {
    const LinearSystem linear = withoutParametersAtLimits(problem.linearise(values, free));
    checkNotSingular(problem, linear.r, moving);
    Eigen::Index worst = 0;
    linear.q.cwiseAbs().maxCoeff(&worst);
    throw Failure("the fit did not converge in " + std::to_string(steps) + " steps, last at " +
                  formatParameters(problem, values, free) + "; " +
                  quoted(problem.model().names[moving[static_cast<std::size_t>(worst)]]) +
                  " still changes; give other start values, limits or a simpler model");
}

LinearSystem Minimiser::withoutParametersAtLimits(LinearSystem linear) {
    const VectorXd uphill = -linear.r.transpose() * linear.q;
    moving.clear();
    atLimit.clear();
    for (std::size_t k = 0; k < free.size(); ++k) {
        const double value = values[free[k]];
        const double slope = uphill[index(k)];
        const bool isStopped =
            (value <= limits[free[k]].low && slope >= 0.0) || (value >= limits[free[k]].high && slope <= 0.0);
        (isStopped ? atLimit : moving).push_back(free[k]);
    }
    if (atLimit.empty()) {
        return linear;
    }
    const Eigen::Index n = index(moving.size());
    MatrixXd rest(linear.r.rows(), n + 1);
    for (std::size_t k = 0, column = 0; k < free.size(); ++k) {
        if (column < moving.size() && moving[column] == free[k]) {
            rest.col(index(column++)) = linear.r.col(index(k));
        }
    }
    rest.col(n) = linear.q;
    const MatrixXd rFactor = Eigen::HouseholderQR<MatrixXd>(rest).matrixQR().triangularView<Eigen::Upper>();
    return {rFactor.topLeftCorner(n, n), rFactor.col(n).head(n), linear.rest};
}

std::vector<double> Minimiser::moved(const VectorXd& step) const {
    std::vector<double> result = values;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        double& value = result[moving[k]];
        value = std::clamp(value + step[index(k)], limits[moving[k]].low, limits[moving[k]].high);
    }
    return result;
}

VectorXd Minimiser::dampedStep(const LinearSystem& linear, const VectorXd& scales) const {
    const Eigen::Index n = linear.q.size();
    MatrixXd rFactor = MatrixXd::Zero(n + 1, n + 1);
    rFactor.topLeftCorner(n, n) = linear.r;
    rFactor.col(n).head(n) = linear.q;
    MatrixXd rows = MatrixXd::Zero(n + index(rowsPerUpdate), n + 1);
    rows.topLeftCorner(n, n) = (std::sqrt(damping) * scales).asDiagonal();
    bestKernels().householderUpdate(rFactor.data(), static_cast<std::size_t>(n + 1), rows.data(),
                                    static_cast<std::size_t>(rows.rows()), static_cast<std::size_t>(n));
    return rFactor.topLeftCorner(n, n).triangularView<Eigen::Upper>().solve(VectorXd(rFactor.col(n).head(n)));
}

VectorXd Minimiser::updateScales(const LinearSystem& linear) {
    VectorXd scales(linear.q.size());
    for (std::size_t k = 0; k < moving.size(); ++k) {
        double& most = maxNorms[index(moving[k])];
        most = std::max(most, linear.r.col(index(k)).norm());
        scales[index(k)] = most > 0.0 ? most : 1.0;
    }
    return scales;
}

bool Minimiser::levenbergStep(const LinearSystem& linear) {
    const VectorXd scales = updateScales(linear);
    for (; damping < 1e40; damping = std::max(10.0 * damping, 1e-6)) {
        const VectorXd step = dampedStep(linear, scales);
        const std::vector<double> next = moved(step);
        if (next == values) {
            return false;
        }
        LinearSystem nextSystem = problem.linearise(next, free);
        const double nextCost = nextSystem.cost;
        VectorXd taken(step.size());
        for (std::size_t k = 0; k < moving.size(); ++k) {
            taken[index(k)] = next[moving[k]] - values[moving[k]];
        }
        const double predicted = linear.q.squaredNorm() - (linear.q - linear.r * taken).squaredNorm();
        const bool isInRounding = predicted < costRounding * cost;
        const bool isAllowed = isInRounding && nextCost <= cost * (1.0 + costRounding);
        if (!(nextCost < cost) && !isAllowed) {
            continue;
        }
        const double gainRatio = (cost - nextCost) / predicted;
        if (gainRatio > 0.75 || isInRounding) {
            damping *= 0.05;
        } else if (gainRatio < 0.25) {
            damping *= 5.0;
        }
        flatSteps = isInRounding ? flatSteps + 1 : 0;
        values = next;
        cost = nextCost;
        latest = std::move(nextSystem);
        return true;
    }
    damping = 1.0;
    return false;
}

VectorXd Minimiser::descentAt(const std::vector<double>& point, const MatrixXd& unit) {
    return -unit.transpose() * problem.gradient(point, moving);
}

MatrixXd Minimiser::curvature(const MatrixXd& unit, const VectorXd& descent) {
    MatrixXd result(unit.rows(), unit.cols());
    for (Eigen::Index k = 0; k < unit.cols(); ++k) {
        std::vector<double> above = values;
        for (std::size_t i = 0; i < moving.size(); ++i) {
            above[moving[i]] += differenceStep * unit(index(i), k);
        }
        result.col(k) = (descent - descentAt(above, unit)) / differenceStep;
    }
    return 0.5 * (result + result.transpose());
}

VectorXd Minimiser::curvatureError(const MatrixXd& unit, const VectorXd& descent,
                                   const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes) {
    const VectorXd sum = VectorXd::Ones(unit.cols());
    const VectorXd move = unit * sum;
    std::vector<double> below = values;
    for (std::size_t i = 0; i < moving.size(); ++i) {
        below[moving[i]] -= differenceStep * move[index(i)];
    }
    const VectorXd slope = (descentAt(below, unit) - descent) / differenceStep;
    const VectorXd along = axes.eigenvectors().transpose() * slope;
    return axes.eigenvectors() * along.cwiseQuotient(axes.eigenvalues()) - sum;
}

bool Minimiser::newtonRefine(const LinearSystem& linear) {
    checkNotSingular(problem, linear.r, moving);
    const Eigen::Index n = linear.q.size();
    const MatrixXd unit = linear.r.triangularView<Eigen::Upper>().solve(MatrixXd::Identity(n, n));
    const std::vector<double> before = values;
    const double costBefore = cost;
    differenceStep = minDifferenceStep;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        differenceStep = std::max(differenceStep, differenceStepOf(moving[k], unit.row(index(k)).norm()));
    }
    MatrixXd hessian = curvature(unit, linear.q);
    if (!hessian.allFinite()) {
        hessian.setIdentity();
    }
    const Eigen::SelfAdjointEigenSolver<MatrixXd> axes(hessian);
    const bool isDetermined = (curvatureError(unit, linear.q, axes).array().abs() < maxCurvatureError).all();
    if (!(axes.eigenvalues().minCoeff() > 1e-9)) {
        isDetermined ? throwSaddlePoint(axes.eigenvectors().col(0), unit) : throwUndetermined(linear);
    }
    if (!newtonIterate(unit, axes, linear.q)) {
        latest = problem.linearise(values, free);
        cost = latest.cost;
        if (!std::isfinite(cost) || cost > costBefore) {
            values = before;
            latest = problem.linearise(values, free);
            cost = latest.cost;
        }
        return false;
    }
    if (!isDetermined) {
        throwUndetermined(linear);
    }
    const MatrixXd spread = unit * axes.eigenvectors() * axes.eigenvalues().cwiseSqrt().cwiseInverse().asDiagonal();
    covariance = spread * spread.transpose();
    return true;
}

bool Minimiser::newtonIterate(const MatrixXd& unit, const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes,
                              VectorXd descent) {
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
        std::vector<double> next = moved(move);
        for (std::size_t k = 0; k < moving.size(); ++k) {
            if (next[moving[k]] != values[moving[k]] + move[index(k)]) {
                return false;
            }
        }
        values = std::move(next);
        descent = descentAt(values, unit);
    }
    return last < coarseDistance;
}

void Minimiser::throwSaddlePoint(const VectorXd& axis, const MatrixXd& unit) const {
    const VectorXd direction = (unit * axis).cwiseProduct(unit.rowwise().norm().cwiseInverse());
    std::string names;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        if (!(std::fabs(direction[index(k)]) < 0.1 * direction.cwiseAbs().maxCoeff())) {
            names += (names.empty() ? "" : ", ") + quoted(problem.model().names[moving[k]]);
        }
    }
    throw Failure("the fit finds no minimum along " + names + ", last at " + formatParameters(problem, values, free) +
                  " (the second derivatives are not positive); give other start values or limits");
}

/// @return a step that survives the rounding of its sum with the parameter, in units of the deviation.
double Minimiser::differenceStepOf(std::size_t parameter, double deviation) const {
    const double least = minRelativeStep * std::fabs(values[parameter]) / deviation;
    return std::isfinite(least) ? std::max(minDifferenceStep, least) : minDifferenceStep;
}

VectorXd Minimiser::curvatureErrors(const LinearSystem& linear) {
    VectorXd errors(linear.q.size());
    const VectorXd slope = problem.gradient(values, moving);
    for (Eigen::Index k = 0; k < errors.size(); ++k) {
        const std::size_t parameter = moving[static_cast<std::size_t>(k)];
        const double scale = 1.0 / linear.r.col(k).norm();
        const double ownStep = differenceStepOf(parameter, scale);
        const auto slopeAt = [&](double step) {
            std::vector<double> point = values;
            point[parameter] += step * scale;
            return problem.gradient(point, moving)[k];
        };
        const double difference = slopeAt(ownStep) + slopeAt(-ownStep) - 2.0 * slope[k];
        const double error = std::fabs(difference) * scale / ownStep;
        errors[k] = std::isfinite(error) ? error : std::numeric_limits<double>::max();
    }
    return errors;
}

void Minimiser::throwUndetermined(const LinearSystem& linear) {
    const VectorXd errors = curvatureErrors(linear);
    std::string names;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        if (errors[index(k)] >= std::min(maxCurvatureError, errors.maxCoeff())) {
            names += (names.empty() ? "" : ", ") + quoted(problem.model().names[moving[k]]);
        }
    }
    throw Failure("these entries do not determine " + names + ", last at " + formatParameters(problem, values, free) +
                  " (rounding would decide about the errors); fix parameters without influence, give limits, or use a "
                  "simpler model");
}

}  // namespace

Minimum minimise(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                 const std::vector<Limits>& limits, const std::function<bool()>& isStopping) {
    return Minimiser(problem, std::move(start), free, limits, isStopping).run();
}

}  // namespace velmorak::fitting
