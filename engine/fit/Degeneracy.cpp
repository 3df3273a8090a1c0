#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>
#include "fit/Minimise.h"

#include <Eigen/QR>

namespace velmorak::fitting {

namespace {

/// Directions along which the function changes relatively less than this are lost in rounding.
constexpr double minRelativeChange = 1e-12;

std::string nameOf(const LeastSquaresProblem& problem, std::size_t parameter) {
    return quoted(problem.model().names[parameter]);
}

}  // namespace

void checkNotSingular(const LeastSquaresProblem& problem, const MatrixXd& r, const Selection& chosen) {
    const Eigen::Index n = r.cols();
    VectorXd norms = r.colwise().norm();
    for (Eigen::Index k = 0; k < n; ++k) {
        if (!(norms[k] > 0.0)) {
            throw Failure("the function does not depend on " + nameOf(problem, chosen[static_cast<std::size_t>(k)]) +
                          " for the fitted entries; fix it, or give it another start value");
        }
    }
    const MatrixXd scaled = r * norms.cwiseInverse().asDiagonal();
    const Eigen::ColPivHouseholderQR<MatrixXd> rotation(scaled);
    const MatrixXd& rFactor = rotation.matrixQR();
    if (std::fabs(rFactor(n - 1, n - 1)) > minRelativeChange * std::fabs(rFactor(0, 0))) {
        return;
    }
    VectorXd direction = VectorXd::Zero(n);
    direction[n - 1] = 1.0;
    direction.head(n - 1) = rFactor.topLeftCorner(n - 1, n - 1)
                                .triangularView<Eigen::Upper>()
                                .solve(VectorXd(-rFactor.col(n - 1).head(n - 1)));
    direction = rotation.colsPermutation() * direction;
    std::string names;
    for (Eigen::Index k = 0; k < n; ++k) {
        if (!(std::fabs(direction[k]) < 0.01 * direction.cwiseAbs().maxCoeff())) {
            names += (names.empty() ? "" : ", ") + nameOf(problem, chosen[static_cast<std::size_t>(k)]);
        }
    }
    throw Failure("these entries cannot distinguish the parameters " + names +
                  " (the matrix is singular); fix one of them, or use a simpler model");
}

std::string formatParameters(const LeastSquaresProblem& problem, const std::vector<double>& values,
                             const Selection& chosen) {
    std::string text;
    for (const std::size_t position : chosen) {
        text += (text.empty() ? "" : ", ") + problem.model().names[position] + "=" + textOf(values[position]);
    }
    return text;
}

}  // namespace velmorak::fitting
