#include "fit/LeastSquaresProblem.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

Eigen::Index index(std::size_t position) {
    return static_cast<Eigen::Index>(position);
}

}  // namespace

LeastSquaresProblem::LeastSquaresProblem(const Model& model, FitEntries entries, FitOptions::Method method)
    : fitModel(model),
      data(std::move(entries)),
      isLikelihood(method == FitOptions::Method::Likelihood),
      space(model.program.workspace(std::min(blockPoints, data.targets.size()))),
      f(space.stride),
      rows(alignedValues(space.stride * (model.parameters.size() + 1))) {}

void LeastSquaresProblem::compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count,
                                  const Selection* chosen) {
    for (std::size_t point = 0; point < data.abscissae.size(); ++point) {
        const double* const weight = data.weights[point].data() + begin;
        const double* const values =
            fitModel.program.evaluate(data.abscissae[point].data() + begin, count, parameters.data(), space);
        space.kernels->addScaled(weight, values, count, point == 0, f.data());
        if (!chosen) {
            continue;
        }
        fitModel.program.backward(count, space);
        double* column = rows.get();
        for (const std::size_t parameter : *chosen) {
            space.kernels->addScaled(weight, fitModel.program.derivative(parameter, space), count, point == 0, column);
            column += space.stride;
        }
    }
}

double LeastSquaresProblem::likelihoodTerm(std::size_t entry, double value) const {
    const double y = data.targets[entry];
    if (y == 0.0) {
        return value < 0.0 ? std::numeric_limits<double>::infinity() : 2.0 * value;
    }
    return value > 0.0 ? 2.0 * (value - y + y * elementary::log(y / value)) : std::numeric_limits<double>::infinity();
}

double LeastSquaresProblem::inverseDeviation(std::size_t entry, double value) const {
    if (!isLikelihood) {
        return 1.0;
    }
    if (isEstimating) {
        return 1.0 / std::sqrt(std::max(data.targets[entry], 1.0));
    }
    // Where the function has underflowed to 0, as far away from a peak, the entry carries no information.
    return value == 0.0 && data.targets[entry] == 0.0 ? 0.0 : 1.0 / std::sqrt(value);
}

double LeastSquaresProblem::residuals(std::size_t begin, std::size_t count, double* out) const {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = data.targets[begin + i] - f[i];
    }
    if (!isLikelihood) {
        return space.kernels->product(out, out, count);
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += likelihoodTerm(begin + i, f[i]);
    }
    return sum;
}

double LeastSquaresProblem::cost(const std::vector<double>& parameters) {
    double sum = 0.0;
    for (std::size_t begin = 0; begin < size(); begin += blockPoints) {
        const std::size_t count = std::min(blockPoints, size() - begin);
        compute(parameters, begin, count, nullptr);
        sum += residuals(begin, count, rows.get());
    }
    return sum;
}

LinearSystem LeastSquaresProblem::linearise(const std::vector<double>& parameters, const Selection& chosen) {
    const std::size_t n = chosen.size();
    LinearSystem system;
    rFactor.setZero(index(n + 1), index(n + 1));
    double* const residual = rows.get() + n * space.stride;
    for (std::size_t begin = 0; begin < size(); begin += blockPoints) {
        const std::size_t count = std::min(blockPoints, size() - begin);
        compute(parameters, begin, count, &chosen);
        system.cost += residuals(begin, count, residual);
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = inverseDeviation(begin + i, f[i]);
            for (std::size_t k = 0; k <= n; ++k) {
                rows[k * space.stride + i] *= scale;
            }
        }
        space.kernels->householderUpdate(rFactor.data(), n + 1, rows.get(), space.stride, count);
    }
    system.r = rFactor.topLeftCorner(index(n), index(n));
    system.q = rFactor.col(index(n)).head(index(n));
    system.rest = rFactor(index(n), index(n));
    return system;
}

VectorXd LeastSquaresProblem::gradient(const std::vector<double>& parameters, const Selection& chosen) {
    VectorXd sum = VectorXd::Zero(index(chosen.size()));
    double* const scaled = rows.get() + chosen.size() * space.stride;
    for (std::size_t begin = 0; begin < size(); begin += blockPoints) {
        const std::size_t count = std::min(blockPoints, size() - begin);
        compute(parameters, begin, count, &chosen);
        for (std::size_t i = 0; i < count; ++i) {
            scaled[i] = data.targets[begin + i] - f[i];
        }
        for (std::size_t i = 0; isLikelihood && i < count; ++i) {
            const double scale = inverseDeviation(begin + i, f[i]);
            scaled[i] *= scale * scale;
        }
        for (std::size_t k = 0; k < chosen.size(); ++k) {
            sum[index(k)] -= space.kernels->product(rows.get() + k * space.stride, scaled, count);
        }
    }
    return sum;
}

std::optional<double> LeastSquaresProblem::firstInvalidEntry(const std::vector<double>& parameters) {
    for (std::size_t begin = 0; begin < size(); begin += blockPoints) {
        const std::size_t count = std::min(blockPoints, size() - begin);
        compute(parameters, begin, count, nullptr);
        for (std::size_t i = 0; i < count; ++i) {
            const double residual = data.targets[begin + i] - f[i];
            if (!std::isfinite(isLikelihood ? likelihoodTerm(begin + i, f[i]) : residual * residual)) {
                return data.centers[begin + i];
            }
        }
    }
    return std::nullopt;
}

}  // namespace velmorak::fitting
