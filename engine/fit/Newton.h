#pragma once

#include "fit/Iterate.h"

#include <Eigen/Eigenvalues>

namespace velmorak::fitting {

/// Converges to a nearby minimum by Newton's method, with second derivatives from finite differences of the gradient,
/// and computes the covariance there.
class Newton {
public:
    explicit Newton(Iterate& iterate) : iterate(iterate) {}

    /// @return false if the minimum is not near enough.
    /// @throws Failure if the data do not determine the parameters, or at a saddle point.
    bool refine(const LinearSystem& linear);

    /// Of the moving parameters, after a successful refine().
    const MatrixXd& covariance() const { return covarianceMatrix; }

private:
    using Axes = Eigen::SelfAdjointEigenSolver<MatrixXd>;

    /// The finite step, in standard deviations (the columns of unit).
    void chooseStep(const MatrixXd& unit);

    /// @return minus half the gradient, in units of the standard deviations.
    VectorXd descentAt(const std::vector<double>& point, const MatrixXd& unit);

    /// Half the Hessian, in units of the standard deviations of the linear system.
    MatrixXd curvature(const MatrixXd& unit, const VectorXd& descent);

    /// @return how much the second derivatives differ on the other side of the point, in the direction of the sum of
    /// all axes, relative to the curvature. Near 0 unless rounding or a tiny scale of the function spoils them.
    VectorXd curvatureError(const MatrixXd& unit, const VectorXd& descent, const Axes& axes);

    bool converge(const MatrixXd& unit, const Axes& axes, VectorXd descent);

    Iterate& iterate;
    MatrixXd covarianceMatrix;
    double differenceStep = 0.0;
};

}  // namespace velmorak::fitting
