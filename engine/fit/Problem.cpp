#include "fit/Problem.h"

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

}  // namespace

LeastSquaresProblem::LeastSquaresProblem(const Model& model, Selected selected, FitOptions::Method method)
    : fitted(model),
      data(std::move(selected)),
      isLikelihood(method == FitOptions::Method::Likelihood),
      space(model.program.workspace(std::min(blockPlaces, data.targets.size()))),
      f(space.stride),
      rows(alignedValues(space.stride * (model.parameters.size() + 1))) {}

void LeastSquaresProblem::compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count,
                                  const Selection* chosen) {
    for (std::size_t rule = 0; rule < data.places.size(); ++rule) {
        const double* const factor = data.factors[rule].data() + begin;
        const double* const values =
            fitted.program.values(data.places[rule].data() + begin, count, parameters.data(), space);
        space.loops->addScaled(factor, values, count, rule == 0, f.data());
        if (!chosen) {
            continue;
        }
        fitted.program.backward(count, space);
        double* column = rows.get();
        for (const std::size_t parameter : *chosen) {
            space.loops->addScaled(factor, fitted.program.derivative(parameter, space), count, rule == 0, column);
            column += space.stride;
        }
    }
}

double LeastSquaresProblem::termOf(std::size_t entry, double value) const {
    const double y = data.targets[entry];
    if (y == 0.0) {
        return value < 0.0 ? std::numeric_limits<double>::infinity() : 2.0 * value;
    }
    return value > 0.0 ? 2.0 * (value - y + y * std::log(y / value)) : std::numeric_limits<double>::infinity();
}

double LeastSquaresProblem::scaleOf(std::size_t entry, double value) const {
    if (!isLikelihood) {
        return 1.0;
    }
    if (isEstimating) {
        return 1.0 / std::sqrt(std::max(data.targets[entry], 1.0));
    }
    // A function that has vanished, as far from a peak, tells nothing of the parameters.
    return value == 0.0 && data.targets[entry] == 0.0 ? 0.0 : 1.0 / std::sqrt(value);
}

double LeastSquaresProblem::residuals(std::size_t begin, std::size_t count, double* out) const {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = data.targets[begin + i] - f[i];
    }
    if (!isLikelihood) {
        return space.loops->product(out, out, count);
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += termOf(begin + i, f[i]);
    }
    return sum;
}

double LeastSquaresProblem::cost(const std::vector<double>& parameters) {
    double sum = 0.0;
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, nullptr);
        sum += residuals(begin, count, rows.get());
    }
    return sum;
}

Linear LeastSquaresProblem::linearise(const std::vector<double>& parameters, const Selection& chosen) {
    const std::size_t n = chosen.size();
    Linear made;
    rFactor.setZero(index(n + 1), index(n + 1));
    double* const right = rows.get() + n * space.stride;
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, &chosen);
        made.cost += residuals(begin, count, right);
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            for (std::size_t k = 0; k <= n; ++k) {
                rows[k * space.stride + i] *= scale;
            }
        }
        space.loops->householderUpdate(rFactor.data(), n + 1, rows.get(), space.stride, count);
    }
    made.r = rFactor.topLeftCorner(index(n), index(n));
    made.q = rFactor.col(index(n)).head(index(n));
    made.rest = rFactor(index(n), index(n));
    return made;
}

VectorXd LeastSquaresProblem::gradient(const std::vector<double>& parameters, const Selection& chosen) {
    VectorXd sum = VectorXd::Zero(index(chosen.size()));
    double* const pull = rows.get() + chosen.size() * space.stride;
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, &chosen);
        for (std::size_t i = 0; i < count; ++i) {
            pull[i] = data.targets[begin + i] - f[i];
        }
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = scaleOf(begin + i, f[i]);
            pull[i] *= scale * scale;
        }
        for (std::size_t k = 0; k < chosen.size(); ++k) {
            sum[index(k)] -= space.loops->product(rows.get() + k * space.stride, pull, count);
        }
    }
    return sum;
}

std::optional<double> LeastSquaresProblem::firstInvalidEntry(const std::vector<double>& parameters) {
    for (std::size_t begin = 0; begin < size(); begin += blockPlaces) {
        const std::size_t count = std::min(blockPlaces, size() - begin);
        compute(parameters, begin, count, nullptr);
        for (std::size_t i = 0; i < count; ++i) {
            const double residual = data.targets[begin + i] - f[i];
            if (!std::isfinite(isLikelihood ? termOf(begin + i, f[i]) : residual * residual)) {
                return data.centers[begin + i];
            }
        }
    }
    return std::nullopt;
}

}  // namespace velmorak::fitting
