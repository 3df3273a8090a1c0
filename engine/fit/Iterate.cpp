#include "fit/Iterate.h"

#include <velmorak/Value.h>

#include <Eigen/QR>

#include <algorithm>

namespace velmorak::fitting {

LinearSystem Iterate::withoutParametersAtLimits() {
    const VectorXd uphill = -system.r.transpose() * system.q;
    moving.clear();
    atLimit.clear();
    for (std::size_t k = 0; k < free.size(); ++k) {
        const double value = values[free[k]];
        const double slope = uphill[index(k)];
        const bool isStopped =
            (value <= limits[free[k]].low && slope >= 0.0) || (value >= limits[free[k]].high && slope <= 0.0);
        (isStopped ? atLimit : moving).push_back(free[k]);
    }
    if (atLimit.empty()) {
        return system;
    }
    const Eigen::Index n = index(moving.size());
    MatrixXd rest(system.r.rows(), n + 1);
    for (std::size_t k = 0, column = 0; k < free.size(); ++k) {
        if (column < moving.size() && moving[column] == free[k]) {
            rest.col(index(column++)) = system.r.col(index(k));
        }
    }
    rest.col(n) = system.q;
    const MatrixXd rFactor = Eigen::HouseholderQR<MatrixXd>(rest).matrixQR().triangularView<Eigen::Upper>();
    return {rFactor.topLeftCorner(n, n), rFactor.col(n).head(n), system.rest};
}

std::vector<double> Iterate::moved(const VectorXd& step) const {
    std::vector<double> result = values;
    for (std::size_t k = 0; k < moving.size(); ++k) {
        double& value = result[moving[k]];
        value = std::clamp(value + step[index(k)], limits[moving[k]].low, limits[moving[k]].high);
    }
    return result;
}

std::string Iterate::format(const Selection& chosen) const {
    std::string text;
    for (const std::size_t position : chosen) {
        text += (text.empty() ? "" : ", ") + problem.model().names[position] + "=" + textOf(values[position]);
    }
    return text;
}

std::string Iterate::lastValues() const {
    return ", last at " + format(free);
}

}  // namespace velmorak::fitting
