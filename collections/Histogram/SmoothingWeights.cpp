#include "SmoothingWeights.h"

#include <velmorak/ElementaryFunctions.h>

#include <cmath>

namespace velmorak {

namespace {

/// Values at x of the Gram polynomials of degrees 0 to degree, which are orthogonal on the whole numbers from -m to m.
std::vector<double> gramPolynomials(double m, std::size_t degree, double x) {
    std::vector<double> values{1.0};
    double before = 0.0;
    for (std::size_t i = 1; i <= degree; ++i) {
        const auto k = static_cast<double>(i);
        const double divisor = k * (2.0 * m - k + 1.0);
        const double next =
            (4.0 * k - 2.0) / divisor * x * values.back() - (k - 1.0) * (2.0 * m + k) / divisor * before;
        before = values.back();
        values.push_back(next);
    }
    return values;
}

/// The inverse of the sum of the squares of the Gram polynomial of degree k: (2k + 1) (2m)! (2m)! / ((2m - k)! (2m + k
/// + 1)!).
double inverseNorm(double m, std::size_t degree) {
    const auto k = static_cast<double>(degree);
    double ratio = (2.0 * k + 1.0) / (2.0 * m + k + 1.0);
    for (std::size_t i = 0; i < degree; ++i) {
        const auto step = static_cast<double>(i);
        ratio *= (2.0 * m - step) / (2.0 * m + k - step);
    }
    return ratio;
}

}  // namespace

std::vector<double> normalised(std::vector<double> weights) {
    double sum = 0.0;
    for (const double weight : weights) {
        sum += weight;
    }
    for (double& weight : weights) {
        weight /= sum;
    }
    return weights;
}

double gaussianWeight(double distance, double sigma) {
    const double pull = distance / sigma;
    return elementary::exp(-0.5 * pull * pull);
}

std::size_t reachOf(double sigma) {
    return static_cast<std::size_t>(std::lround(4.0 * sigma));
}

std::vector<double> polynomialWeights(std::size_t reach, std::size_t degree, double place) {
    const auto m = static_cast<double>(reach);
    const std::vector<double> there = gramPolynomials(m, degree, place);
    std::vector<double> weights;
    for (std::size_t i = 0; i <= 2 * reach; ++i) {
        const std::vector<double> here = gramPolynomials(m, degree, static_cast<double>(i) - m);
        double weight = 0.0;
        for (std::size_t k = 0; k <= degree; ++k) {
            weight += inverseNorm(m, k) * here[k] * there[k];
        }
        weights.push_back(weight);
    }
    return weights;
}

}  // namespace velmorak
