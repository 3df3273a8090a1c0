#include "fit/LevenbergMarquardt.h"

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

constexpr double costRounding = 1e-13;

}  // namespace

LevenbergMarquardt::LevenbergMarquardt(Iterate& iterate)
    : iterate(iterate), maxNorms(VectorXd::Zero(index(iterate.values.size()))) {}

bool LevenbergMarquardt::step(const LinearSystem& linear) {
    const VectorXd scales = updateScales(linear);
    for (; damping < 1e40; damping = std::max(10.0 * damping, 1e-6)) {
        const std::vector<double> next = iterate.moved(dampedStep(linear, scales));
        if (next == iterate.values) {
            flat = std::max(flat + 1, 3);
            return false;
        }
        if (tryPoint(next, linear)) {
            return true;
        }
    }
    damping = 1.0;
    flat = std::max(flat + 1, 3);
    return false;
}

VectorXd LevenbergMarquardt::dampedStep(const LinearSystem& linear, const VectorXd& scales) const {
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

VectorXd LevenbergMarquardt::updateScales(const LinearSystem& linear) {
    VectorXd scales(linear.q.size());
    for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
        double& most = maxNorms[index(iterate.moving[k])];
        most = std::max(most, linear.r.col(index(k)).norm());
        scales[index(k)] = most > 0.0 ? most : 1.0;
    }
    return scales;
}

bool LevenbergMarquardt::tryPoint(const std::vector<double>& next, const LinearSystem& linear) {
    LinearSystem system = iterate.problem.linearise(next, iterate.free);
    const double cost = iterate.system.cost;
    VectorXd taken(linear.q.size());
    for (std::size_t k = 0; k < iterate.moving.size(); ++k) {
        taken[index(k)] = next[iterate.moving[k]] - iterate.values[iterate.moving[k]];
    }
    const double predicted = linear.q.squaredNorm() - (linear.q - linear.r * taken).squaredNorm();
    const bool isInRounding = predicted < costRounding * cost;
    const bool isAllowed = isInRounding && system.cost <= cost * (1.0 + costRounding);
    if (!(system.cost < cost) && !isAllowed) {
        return false;
    }
    updateDamping((cost - system.cost) / predicted, isInRounding);
    flat = isInRounding ? flat + 1 : 0;
    iterate.values = next;
    iterate.system = std::move(system);
    return true;
}

void LevenbergMarquardt::updateDamping(double gainRatio, bool isInRounding) {
    if (gainRatio > 0.75 || isInRounding) {
        damping *= 0.05;
    } else if (gainRatio < 0.25) {
        damping *= 5.0;
    }
}

}  // namespace velmorak::fitting
