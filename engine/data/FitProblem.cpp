#include "FitProblem.h"

#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

}  // namespace

Problem::Problem(const Model& model, Selected selected, FitOptions::Method method)
    : fitted(model),
      data(std::move(selected)),
      isLikelihood(method == FitOptions::Method::Likelihood),
      space(model.program.workspace()),
      f(blockPlaces) {}

void Problem::compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count,
                      const Selection* chosen) {
    std::fill_n(f.begin(), count, 0.0);
    if (chosen != nullptr)
        slopes.setZero(index(blockPlaces), index(chosen->size()));
    for (std::size_t rule = 0; rule < data.places.size(); ++rule) {
        const double* const factor = data.factors[rule].data() + begin;
        const double* const values =
            fitted.program.values(data.places[rule].data() + begin, count, parameters.data(), space);
        for (std::size_t i = 0; i < count; ++i)
            f[i] += factor[i] * values[i];
        if (chosen == nullptr)
            continue;
        fitted.program.derive(count, space);
        for (std::size_t k = 0; k < chosen->size(); ++k) {
            const double* const slope = fitted.program.derivative((*chosen)[k], space);
            double* const column = slopes.col(index(k)).data();
            for (std::size_t i = 0; i < count; ++i)
                column[i] += factor[i] * slope[i];
        }
    }
}

double Problem::costOf(std::size_t entry, double value) const {
    const double y = data.targets[entry];
    if (!isLikelihood)
        return (y - value) * (y - value);
    if (y == 0.0)
        return value < 0.0 ? std::numeric_limits<double>::infinity() : 2.0 * value;
    return value > 0.0 ? 2.0 * (value - y + y * std::log(y / value)) : std::numeric_limits<double>::infinity();
}

double Problem::scaleOf(std::size_t entry, double value) const {
    if (!isLikelihood)
        return 1.0;
    if (isEstimating)
        return 1.0 / std::sqrt(std::max(data.targets[entry], 1.0));
    // A function that has vanished, as far from a peak, tells nothing of the parameters.
    return value == 0.0 && data.targets[entry] == 0.0 ? 0.0 : 1.0 / std::sqrt(value);
}

double Problem::cost(const std::vector<double>& parameters) {
    double sum = 0.0;
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, nullptr);
        for (std::size_t i = 0; i < count; ++i)
            sum += costOf(begin + i, f[i]);
    }
    return sum;
}

Linear Problem::linearise(const std::vector<double>& parameters, const Selection& chosen) {
    const Eigen::Index n = index(chosen.size());
    // The triangle so far stands on top of the next block (G. Golub, C. Van Loan, Matrix Computations, 5.2).
    MatrixXd stack = MatrixXd::Zero(n + 1 + index(std::min(size(), blockPlaces)), n + 1);
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, &chosen);
        for (std::size_t i = 0; i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            const Eigen::Index row = n + 1 + index(i);
            for (Eigen::Index k = 0; k < n; ++k)
                stack(row, k) = scale * slopes(index(i), k);
            stack(row, n) = scale * (data.targets[begin + i] - f[i]);
        }
        Eigen::Ref<MatrixXd> filled = stack.topRows(n + 1 + index(count));
        const Eigen::HouseholderQR<Eigen::Ref<MatrixXd>> rotation(filled);
        stack.topRows(n + 1).triangularView<Eigen::StrictlyLower>().setZero();
    }
    return {stack.topLeftCorner(n, n), stack.col(n).head(n), stack(n, n)};
}

VectorXd Problem::gradient(const std::vector<double>& parameters, const Selection& chosen) {
    VectorXd sum = VectorXd::Zero(index(chosen.size()));
    VectorXd pull(index(blockPlaces));
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, &chosen);
        for (std::size_t i = 0; i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            pull[index(i)] = scale * scale * (data.targets[begin + i] - f[i]);
        }
        sum.noalias() -= slopes.topRows(index(count)).transpose() * pull.head(index(count));
    }
    return sum;
}

std::optional<double> Problem::trouble(const std::vector<double>& parameters) {
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, nullptr);
        for (std::size_t i = 0; i < count; ++i)
            if (!std::isfinite(costOf(begin + i, f[i])))
                return data.centers[begin + i];
    }
    return std::nullopt;
}

}  // namespace velmorak::fitting
