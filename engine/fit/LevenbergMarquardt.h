#pragma once

#include "fit/Iterate.h"

namespace velmorak::fitting {

/// Takes damped Gauss-Newton steps.
class LevenbergMarquardt {
public:
    explicit LevenbergMarquardt(Iterate& iterate);

    /// Moves the iterate to a point of lower cost. @return false if no step lowers the cost.
    bool step(const LinearSystem& linear);

    /// Consecutive steps whose gain is lost in rounding.
    int flatSteps() const { return flat; }

private:
    /// The least squares solution of R step = q and root(damping) D step = 0.
    VectorXd dampedStep(const LinearSystem& linear, const VectorXd& scales) const;

    /// Largest column norms so far, which scale the damping (Moré).
    VectorXd updateScales(const LinearSystem& linear);

    /// Moves there if that lowers the cost.
    bool tryPoint(const std::vector<double>& next, const LinearSystem& linear);

    void updateDamping(double gainRatio, bool isInRounding);

    Iterate& iterate;
    VectorXd maxNorms;
    double damping = 1e-3;
    int flat = 0;
};

}  // namespace velmorak::fitting
