#include "FitProblem.h"

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
      space(model.program.workspace(std::min(blockPlaces, data.targets.size()))),
      f(space.stride) {}

void Problem::compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count,
                      const Slopes& slopes) {
    for (std::size_t rule = 0; rule < data.places.size(); ++rule) {
        const double* const factor = data.factors[rule].data() + begin;
        const double* const values =
            fitted.program.values(data.places[rule].data() + begin, count, parameters.data(), space);
        space.loops->addScaled(factor, values, count, rule == 0, f.data());
        if (slopes.chosen == nullptr)
            continue;
        fitted.program.derive(count, space);
        double* column = slopes.first;
        for (const std::size_t parameter : *slopes.chosen) {
            space.loops->addScaled(factor, fitted.program.derivative(parameter, space), count, rule == 0, column);
            column += slopes.stride;
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
        compute(parameters, begin, count, {});
        for (std::size_t i = 0; i < count; ++i)
            sum += costOf(begin + i, f[i]);
    }
    return sum;
}

Linear Problem::linearise(const std::vector<double>& parameters, const Selection& chosen) {
    const std::size_t n = chosen.size();
    Linear made;
    // The triangle so far stands on top of the next block (G. Golub, C. Van Loan, Matrix Computations, 5.2).
    stack.resize(index(n + 1 + space.stride + rowsBehind), index(n + 1));
    stack.topRows(index(n + 1)).setZero();
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        double* const block = stack.data() + n + 1;
        const std::size_t stride = static_cast<std::size_t>(stack.rows());
        double* const right = block + n * stride;
        compute(parameters, begin, count, {&chosen, block, stride});
        for (std::size_t i = 0; i < count; ++i) {
            right[i] = data.targets[begin + i] - f[i];
            made.cost += costOf(begin + i, f[i]);
        }
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            for (std::size_t k = 0; k <= n; ++k)
                block[k * stride + i] *= scale;
        }
        stack.middleRows(index(n + 1 + count), index(rowsBehind)).setZero();
        space.loops->rotate(stack.data(), n + 1 + count, n + 1, static_cast<std::size_t>(stack.rows()));
    }
    made.r = stack.topLeftCorner(index(n), index(n)).triangularView<Eigen::Upper>();
    made.q = stack.col(index(n)).head(index(n));
    made.rest = stack(index(n), index(n));
    return made;
}

VectorXd Problem::gradient(const std::vector<double>& parameters, const Selection& chosen) {
    VectorXd sum = VectorXd::Zero(index(chosen.size()));
    stack.resize(index(chosen.size() + 1 + space.stride + rowsBehind), index(chosen.size() + 1));
    const auto stride = static_cast<std::size_t>(stack.rows());
    double* const pull = stack.col(index(chosen.size())).data();
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, {&chosen, stack.data(), stride});
        for (std::size_t i = 0; i < count; ++i)
            pull[i] = data.targets[begin + i] - f[i];
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            pull[i] *= scale * scale;
        }
        for (std::size_t k = 0; k < chosen.size(); ++k)
            sum[index(k)] -= space.loops->product(stack.col(index(k)).data(), pull, count);
    }
    return sum;
}

std::optional<double> Problem::trouble(const std::vector<double>& parameters) {
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, {});
        for (std::size_t i = 0; i < count; ++i)
            if (!std::isfinite(costOf(begin + i, f[i])))
                return data.centers[begin + i];
    }
    return std::nullopt;
}

}  // namespace velmorak::fitting
