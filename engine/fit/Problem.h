#pragma once

#include <velmorak/Fit.h>
#include "fit/ModelParts.h"

#include <Eigen/Core>

#include <vector>

namespace velmorak::fitting {

using Eigen::MatrixXd;
using Eigen::VectorXd;

/// Positions of parameters, ascending.
using Selection = std::vector<std::size_t>;

/// The entries that a fit uses. What is compared with target is the sum of the function at places, each times its
/// factor; errors are divided out.
struct Selected {
    std::vector<std::vector<double>> places;   ///< For each point of the rule that integrates over a bin, one an entry.
    std::vector<std::vector<double>> factors;  ///< Likewise.
    std::vector<double> targets;
    std::vector<double> centers;
    std::vector<std::string> warnings;
};

/// @throws Failure if nothing is left, or an entry does not go with the method.
Selected select(const FitData& data, const FitOptions& options);

/// The least squares problem at one place, after a rotation that leaves squares alone: R is upper triangular, and
/// |r - J step|² = |q - R step|² + rest². Half the gradient of the cost is -R^T q.
struct Linear {
    MatrixXd r;
    VectorXd q;
    double rest = 0.0;
    double cost = 0.0;  ///< At the place itself.
};

/// A model and its data: what is minimised, with derivatives.
/// Chi square: sum of (y - f)² / error². Likelihood: 2 sum of f - y + y log(y / f) (S. Baker, R. Cousins, Nuclear
/// Instruments and Methods 221 (1984) 437), with f as the variance of a bin.
class LeastSquaresProblem {
public:
    LeastSquaresProblem(const Model& model, Selected selected, FitOptions::Method method);

    const Selected& entries() const { return data; }
    std::size_t size() const { return data.targets.size(); }
    const Model& model() const { return fitted; }

    /// @return NaN or Infinity where the parameters are not allowed.
    double cost(const std::vector<double>& parameters);
    /// Of the parameters chosen; the others are kept. Not finite where the parameters are not allowed.
    Linear linearise(const std::vector<double>& parameters, const Selection& chosen);
    /// Half the gradient of the cost.
    VectorXd gradient(const std::vector<double>& parameters, const Selection& chosen);
    /// Where the function is no finite number, or for the likelihood not above 0: the centre of the entry.
    std::optional<double> firstInvalidEntry(const std::vector<double>& parameters);

    /// While estimating, linearise takes the targets for the variances, so that no function is forbidden.
    void setEstimating(bool isOn) { isEstimating = isOn; }

private:
    /// Computes f, and rows of derivatives for the parameters chosen unless that is null.
    void compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count, const Selection* chosen);
    /// @param out gets the differences of targets and function. @return the block's part of the cost.
    double residuals(std::size_t begin, std::size_t count, double* out) const;
    /// An entry's part of the cost of the likelihood.
    double termOf(std::size_t entry, double value) const;
    /// 1 / the standard deviation of an entry, as far as it is not divided out.
    double scaleOf(std::size_t entry, double value) const;

    const Model& fitted;
    Selected data;
    bool isLikelihood;
    bool isEstimating = false;
    Workspace space;
    std::vector<double> f;  ///< Of the block computed last.
    AlignedValues rows;     ///< A column for each chosen parameter, and one for the residuals.
    MatrixXd rFactor;
};

}  // namespace velmorak::fitting
