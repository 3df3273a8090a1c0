#pragma once

#include "fit/FitEntries.h"
#include "fit/Model.h"

#include <Eigen/Core>

#include <vector>

namespace velmorak::fitting {

using Eigen::MatrixXd;
using Eigen::VectorXd;

/// Positions of parameters, ascending.
using Selection = std::vector<std::size_t>;

/// The problem linearised at one point and transformed by QR decomposition: R is upper triangular, and
/// |r - J step|² = |q - R step|² + rest². Half the gradient of the cost is -R^T q.
struct LinearSystem {
    MatrixXd r;
    VectorXd q;
    double rest = 0.0;
    double cost = 0.0;  ///< At the point of linearisation.
};

/// A model and its data: the cost function of a fit, with derivatives.
/// Chi square: sum of (y - f)² / error². Likelihood: 2 sum of f - y + y log(y / f) (S. Baker, R. Cousins, Nuclear
/// Instruments and Methods 221 (1984) 437), with f as the variance of a bin.
class LeastSquaresProblem {
public:
    LeastSquaresProblem(const Model& model, FitEntries entries, FitOptions::Method method);

    const FitEntries& entries() const { return data; }
    std::size_t size() const { return data.targets.size(); }
    const Model& model() const { return fitModel; }

    /// @return NaN or Infinity for parameters outside of the domain of the model.
    double cost(const std::vector<double>& parameters);
    /// Linearises in the chosen parameters. Not finite for parameters outside of the domain of the model.
    LinearSystem linearise(const std::vector<double>& parameters, const Selection& chosen);
    /// @return half the gradient of the cost.
    VectorXd gradient(const std::vector<double>& parameters, const Selection& chosen);
    /// @return the centre of the first entry at which the function is not finite, or for the likelihood not positive.
    std::optional<double> firstInvalidEntry(const std::vector<double>& parameters);

    /// While estimating start values, variances are taken from the data, so that negative model values are allowed.
    void setEstimating(bool isOn) { isEstimating = isOn; }

private:
    /// Computes f and, unless chosen is null, the derivatives with respect to the chosen parameters in rows.
    void compute(const std::vector<double>& parameters, std::size_t begin, std::size_t count, const Selection* chosen);
    /// @param out receives target - f for each entry of the block. @return the contribution of the block to the cost.
    double residuals(std::size_t begin, std::size_t count, double* out) const;
    /// @return the contribution of an entry to the cost of the likelihood.
    double likelihoodTerm(std::size_t entry, double value) const;
    /// @return 1 / the standard deviation of an entry, apart from the errors that its weights contain already.
    double inverseDeviation(std::size_t entry, double value) const;

    const Model& fitModel;
    FitEntries data;
    bool isLikelihood;
    bool isEstimating = false;
    Workspace space;
    std::vector<double> f;  ///< Model values of the current block.
    AlignedValues rows;     ///< A column for each chosen parameter, and one for the residuals.
    MatrixXd rFactor;
};

}  // namespace velmorak::fitting
