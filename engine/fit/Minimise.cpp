#include "fit/Minimise.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <Eigen/Eigenvalues>
#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

constexpr int maxSteps = 1000;
/// Distances from the minimum, in standard deviations: at which Newton's method takes over, and at which it ends.
constexpr double nearDistance = 1e-4;
constexpr double endDistance = 1e-9;
/// Where rounding does not let it come so far, this still counts as a minimum.
constexpr double coarseDistance = 1e-5;
/// In standard deviations, for the differences that give second derivatives.
constexpr double differenceStep = 1e-5;
constexpr double costRounding = 1e-13;

Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

class Minimiser {
public:
    Minimiser(LeastSquaresProblem& fitted, std::vector<double> start, const Selection& freeOnes,
              const std::vector<Limits>& bounds, const std::function<bool()>& stopping);

    Minimum run();

private:
    [[noreturn]] void refuseStart() const;

    [[noreturn]] void refuseEnd();

    /// Freezes the parameters that a limit stops, and leaves the problem of the others.
    Linear reduced(Linear linear);

    std::vector<double> moved(const VectorXd& step) const;

    /// The least squares solution of R step = q and root(damping) D step = 0.
    VectorXd damped(const Linear& linear, const VectorXd& scales) const;

    VectorXd scalesOf(const Linear& linear);

    /// Takes one step downhill. @return false where there is none.
    bool levenbergStep(const Linear& linear);

    VectorXd pullAt(const std::vector<double>& place, const MatrixXd& unit);

    /// Half the second derivatives in units of the standard deviations of the linear problem, the columns of unit, from
    /// differences of the gradient.
    MatrixXd curvature(const MatrixXd& unit, const VectorXd& pull);

    /// Goes to the minimum that is near, and finds the covariance there.
    /// @return false when it is not near after all.
    bool newtonRefine(const Linear& linear);

    bool newtonIterate(const MatrixXd& unit, const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes, VectorXd pull);

    [[noreturn]] void refuseSaddle(const VectorXd& axis, const MatrixXd& unit) const;

    LeastSquaresProblem& problem;
    std::vector<double> values;
    const Selection& free;
    const std::vector<Limits>& limits;
    const std::function<bool()>& isStopping;
    Selection moving;
    Selection frozen;
    VectorXd largest;
    MatrixXd covariance;
    Linear latest;  ///< At values.
    double cost = 0.0;
    double damping = 1e-3;
    int steps = 0;
    int isFlat = 0;
};

Minimiser::Minimiser(LeastSquaresProblem& fitted, std::vector<double> start, const Selection& freeOnes,
                     const std::vector<Limits>& bounds, const std::function<bool()>& stopping)
    : problem(fitted), values(std::move(start)), free(freeOnes), limits(bounds), isStopping(stopping) {}

Minimum Minimiser::run() {
    latest = problem.linearise(values, free);
    cost = latest.cost;
    if (!std::isfinite(cost)) {
        refuseStart();
    }
    largest = VectorXd::Zero(index(values.size()));
    for (steps = 0; steps < maxSteps; ++steps) {
        if (isStopping && isStopping()) {
            throw Stopped();
        }
        const Linear linear = reduced(latest);
        if (moving.empty()) {
            return {values, moving, frozen, MatrixXd(), steps};
        }
        const double distance = linear.q.norm();
        if ((distance < nearDistance || isFlat >= 3) && newtonRefine(linear)) {
            return {values, moving, frozen, covariance, steps};
        }
        if (!levenbergStep(linear)) {
            isFlat = std::max(isFlat + 1, 3);
        }
        if (isFlat > 6) {
            break;
        }
    }
    refuseEnd();
}

void Minimiser::refuseStart() const {
    const std::optional<double> place = problem.firstInvalidEntry(values);
    Selection all(values.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = i;
    }
    throw Failure("the function has no usable value" + (place ? " at x = " + textOf(*place) : std::string()) +
                  " with the start values " + listed(problem, values, all) + "; give others");
}

void Minimiser::refuseEnd() {
    const Linear linear = reduced(problem.linearise(values, free));
    refuseSingular(problem, linear.r, moving);
    Eigen::Index worst = 0;
    linear.q.cwiseAbs().maxCoeff(&worst);
    throw Failure("the fit does not converge in " + textOf(steps) + " steps, last at " + listed(problem, values, free) +
                  "; \"" + problem.model().names[moving[static_cast<std::size_t>(worst)]] +
                  "\" still moves; give other start values, limits or a simpler model");
}

Linear Minimiser::reduced(Linear linear) {
    const VectorXd uphill = -linear.r.transpose() * linear.q;
    moving.clear();
    frozen.clear();
    for (std::size_t k = 0; k < free.size(); ++k) {
        const double value = values[free[k]];
        const double slope = uphill[index(k)];
        const bool isStopped =
            (value <= limits[free[k]].low && slope >= 0.0) || (value >= limits[free[k]].high && slope <= 0.0);
        (isStopped ? frozen : moving).push_back(free[k]);
    }
    if (frozen.empty()) {
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
    std::vector<double> made = values;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        double& value = made[moving[k]];
        value = std::clamp(value + step[index(k)], limits[moving[k]].low, limits[moving[k]].high);
    }
    return made;
}

VectorXd Minimiser::damped(const Linear& linear, const VectorXd& scales) const {
    const Eigen::Index n = linear.q.size();
    MatrixXd rFactor = MatrixXd::Zero(n + 1, n + 1);
    rFactor.topLeftCorner(n, n) = linear.r;
    rFactor.col(n).head(n) = linear.q;
    MatrixXd rows = MatrixXd::Zero(n + index(foldedRows), n + 1);
    rows.topLeftCorner(n, n) = (std::sqrt(damping) * scales).asDiagonal();
    bestLoops().householderUpdate(rFactor.data(), static_cast<std::size_t>(n + 1), rows.data(),
                                  static_cast<std::size_t>(rows.rows()), static_cast<std::size_t>(n));
    return rFactor.topLeftCorner(n, n).triangularView<Eigen::Upper>().solve(VectorXd(rFactor.col(n).head(n)));
}

VectorXd Minimiser::scalesOf(const Linear& linear) {
    VectorXd scales(linear.q.size());
    for (std::size_t k = 0; k < moving.size(); ++k) {
        double& most = largest[index(moving[k])];
        most = std::max(most, linear.r.col(index(k)).norm());
        scales[index(k)] = most > 0.0 ? most : 1.0;
    }
    return scales;
}

bool Minimiser::levenbergStep(const Linear& linear) {
    const VectorXd scales = scalesOf(linear);
    for (; damping < 1e40; damping = std::max(10.0 * damping, 1e-6)) {
        const VectorXd step = damped(linear, scales);
        const std::vector<double> next = moved(step);
        if (next == values) {
            return false;
        }
        Linear there = problem.linearise(next, free);
        const double nextCost = there.cost;
        VectorXd taken(step.size());
        for (std::size_t k = 0; k < moving.size(); ++k) {
            taken[index(k)] = next[moving[k]] - values[moving[k]];
        }
        const double promised = linear.q.squaredNorm() - (linear.q - linear.r * taken).squaredNorm();
        const bool isInRounding = promised < costRounding * cost;
        const bool isAllowed = isInRounding && nextCost <= cost * (1.0 + costRounding);
        if (!(nextCost < cost) && !isAllowed) {
            continue;
        }
        const double kept = (cost - nextCost) / promised;
        if (kept > 0.75 || isInRounding) {
            damping *= 0.05;
        } else if (kept < 0.25) {
            damping *= 5.0;
        }
        isFlat = isInRounding ? isFlat + 1 : 0;
        values = next;
        cost = nextCost;
        latest = std::move(there);
        return true;
    }
    damping = 1.0;
    return false;
}

VectorXd Minimiser::pullAt(const std::vector<double>& place, const MatrixXd& unit) {
    return -unit.transpose() * problem.gradient(place, moving);
}

MatrixXd Minimiser::curvature(const MatrixXd& unit, const VectorXd& pull) {
    MatrixXd made(unit.rows(), unit.cols());
    for (Eigen::Index k = 0; k < unit.cols(); ++k) {
        std::vector<double> above = values;
        for (std::size_t i = 0; i < moving.size(); ++i) {
            above[moving[i]] += differenceStep * unit(index(i), k);
        }
        made.col(k) = (pull - pullAt(above, unit)) / differenceStep;
    }
    return 0.5 * (made + made.transpose());
}

bool Minimiser::newtonRefine(const Linear& linear) {
    refuseSingular(problem, linear.r, moving);
    const Eigen::Index n = linear.q.size();
    const MatrixXd unit = linear.r.triangularView<Eigen::Upper>().solve(MatrixXd::Identity(n, n));
    const std::vector<double> before = values;
    const double costBefore = cost;
    MatrixXd shape = curvature(unit, linear.q);
    if (!shape.allFinite()) {
        shape.setIdentity();
    }
    const Eigen::SelfAdjointEigenSolver<MatrixXd> axes(shape);
    if (!(axes.eigenvalues().minCoeff() > 1e-9)) {
        refuseSaddle(axes.eigenvectors().col(0), unit);
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
    const MatrixXd spread = unit * axes.eigenvectors() * axes.eigenvalues().cwiseSqrt().cwiseInverse().asDiagonal();
    covariance = spread * spread.transpose();
    return true;
}

bool Minimiser::newtonIterate(const MatrixXd& unit, const Eigen::SelfAdjointEigenSolver<MatrixXd>& axes,
                              VectorXd pull) {
    double last = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 20; ++i) {
        const VectorXd along = axes.eigenvectors().transpose() * pull;
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
        pull = pullAt(values, unit);
    }
    return last < coarseDistance;
}

void Minimiser::refuseSaddle(const VectorXd& axis, const MatrixXd& unit) const {
    const VectorXd direction = (unit * axis).cwiseProduct(unit.rowwise().norm().cwiseInverse());
    std::string names;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        if (!(std::fabs(direction[index(k)]) < 0.1 * direction.cwiseAbs().maxCoeff())) {
            names += (names.empty() ? "\"" : ", \"") + problem.model().names[moving[k]] + "\"";
        }
    }
    throw Failure("the fit finds no minimum along " + names + ", last at " + listed(problem, values, free) +
                  " (the second derivatives are not positive); give other start values or limits");
}

}  // namespace

Minimum minimise(LeastSquaresProblem& problem, std::vector<double> start, const Selection& free,
                 const std::vector<Limits>& limits, const std::function<bool()>& isStopping) {
    return Minimiser(problem, std::move(start), free, limits, isStopping).run();
}

}  // namespace velmorak::fitting
