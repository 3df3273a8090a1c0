#include "fit/Minimise.h"

#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

/// Estimates start values. Several candidates are tried for locations, widths and slopes that are not given, each with
/// the best heights, which follow from a linear problem.
class Estimator {
public:
    Estimator(LeastSquaresProblem& problem, const FitParameters& given);

    std::vector<double> run();

private:
    double defaultStart(std::size_t i) const;

    double clamped(std::size_t i, double value) const;

    void clampAll();

    /// @return the linear parameters outside of shapes and of the shapes up to this one. Switches later shapes off.
    Selection linearUpTo(std::size_t shape);

    /// Finds the best linear parameters. @return the remaining sum of squares.
    double solve(const Selection& chosen, bool isKept);

    std::vector<double> candidates(std::size_t parameter) const;

    void fitShape(std::size_t shape);

    /// Tries all combinations of candidates; shapes have at most two such parameters.
    void tryAll(const Selection& open, std::size_t position, const Selection& chosen);

    /// Replaces heights that make the function negative, which the likelihood does not allow.
    void makePositive();

    LeastSquaresProblem& problem;
    const Model& model;
    const FitParameters& given;
    std::vector<double> values;
    std::vector<bool> isOpen;
    std::vector<bool> isLinear;
    bool hasOpen = false;
    std::vector<double> bestValues;
    double best = 0.0;
    double lowest = 0.0;
    double span = 1.0;
};

Estimator::Estimator(LeastSquaresProblem& problem, const FitParameters& given)
    : problem(problem), model(problem.model()), given(given) {
    const std::size_t n = model.parameters.size();
    values.resize(n);
    isOpen.resize(n);
    std::vector<bool> wanted(n);
    const auto [low, high] = std::minmax_element(problem.entries().centers.begin(), problem.entries().centers.end());
    lowest = *low;
    span = *high > *low ? *high - *low : std::max(std::fabs(*low), 1.0);
    for (std::size_t i = 0; i < n; ++i) {
        const auto found = given.find(model.names[i]);
        isOpen[i] = found == given.end() || !found->second.start;
        values[i] = isOpen[i] ? defaultStart(i) : *found->second.start;
        wanted[i] = isOpen[i];
    }
    hasOpen = std::find(isOpen.begin(), isOpen.end(), true) != isOpen.end();
    if (hasOpen) {
        isLinear = linearAmong(model.program, wanted);
    }
}

std::vector<double> Estimator::run() {
    if (!hasOpen) {
        return values;
    }
    problem.setEstimating(true);
    for (std::size_t shape = 1; shape <= model.shapes; ++shape) {
        fitShape(shape);
    }
    solve(linearUpTo(model.shapes), true);
    problem.setEstimating(false);
    clampAll();
    if (!std::isfinite(problem.cost(values))) {
        makePositive();
    }
    return values;
}

double Estimator::defaultStart(std::size_t i) const {
    const ModelParameter& parameter = model.parameters[i];
    double value = parameter.defaultStart;
    if (parameter.role == Role::Location) {
        value = lowest + 0.5 * span;
    } else if (parameter.role == Role::Width) {
        value = 0.1 * span;
    } else if (parameter.role == Role::Slope) {
        value = -1.0 / span;
    }
    return clamped(i, value);
}

double Estimator::clamped(std::size_t i, double value) const {
    const auto found = given.find(model.names[i]);
    if (found == given.end() || (value >= found->second.low && value <= found->second.high)) {
        return value;
    }
    const double low = found->second.low;
    const double high = found->second.high;
    if (std::isfinite(low) && std::isfinite(high)) {
        return 0.5 * (low + high);
    }
    return std::isfinite(low) ? low + std::max(1.0, std::fabs(low)) * 0.1 : high - std::max(1.0, std::fabs(high)) * 0.1;
}

void Estimator::clampAll() {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (isOpen[i]) {
            values[i] = clamped(i, values[i]);
        }
    }
}

Selection Estimator::linearUpTo(std::size_t shape) {
    Selection chosen;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!isLinear[i]) {
            continue;
        }
        values[i] = 0.0;
        const bool isPolynomial = model.parameters[i].defaultStart == 0.0 && model.parameters[i].role == Role::Height;
        if (model.parameters[i].shape <= shape || isPolynomial) {
            chosen.push_back(i);
        }
    }
    return chosen;
}

double Estimator::solve(const Selection& chosen, bool isKept) {
    for (const std::size_t position : chosen) {
        values[position] = 0.0;
    }
    const LinearSystem linear = problem.linearise(values, chosen);
    if (isKept && !chosen.empty() && linear.r.allFinite() && linear.q.allFinite()) {
        // Columns that vanish or repeat are given 0.
        const VectorXd best = linear.r.colPivHouseholderQr().solve(linear.q);
        for (std::size_t k = 0; k < chosen.size(); ++k) {
            if (const double value = best[static_cast<Eigen::Index>(k)]; std::isfinite(value)) {
                values[chosen[k]] = value;
            }
        }
    }
    return linear.rest * linear.rest;
}

std::vector<double> Estimator::candidates(std::size_t parameter) const {
    const Role role = model.parameters[parameter].role;
    std::vector<double> all;
    if (role == Role::Location) {
        const FitEntries& entries = problem.entries();
        const auto top = std::max_element(entries.targets.begin(), entries.targets.end());
        all.push_back(entries.centers[static_cast<std::size_t>(top - entries.targets.begin())]);
        constexpr int locations = 16;
        for (int i = 0; i < locations; ++i) {
            all.push_back(lowest + span * (i + 0.5) / locations);
        }
    } else if (role == Role::Width) {
        for (const double part : {0.01, 0.03, 0.08, 0.2, 0.5}) {
            all.push_back(part * span);
        }
    } else if (role == Role::Slope) {
        for (const double turns : {-0.3, -1.0, -3.0, -10.0, -30.0, 0.3, 1.0, 3.0, 10.0, 30.0}) {
            all.push_back(turns / span);
        }
    }
    const auto found = given.find(model.names[parameter]);
    if (found != given.end()) {
        std::erase_if(all, [&](double value) { return value < found->second.low || value > found->second.high; });
    }
    if (all.empty()) {
        all.push_back(values[parameter]);
    }
    return all;
}

void Estimator::fitShape(std::size_t shape) {
    Selection open;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Role role = model.parameters[i].role;
        if (isOpen[i] && model.parameters[i].shape == shape &&
            (role == Role::Location || role == Role::Width || role == Role::Slope)) {
            open.push_back(i);
        }
    }
    if (open.empty()) {
        return;
    }
    const Selection chosen = linearUpTo(shape);
    best = std::numeric_limits<double>::infinity();
    bestValues = values;
    tryAll(open, 0, chosen);
    values = bestValues;
}

void Estimator::tryAll(const Selection& open, std::size_t position, const Selection& chosen) {
    if (position == open.size()) {
        const double left = solve(chosen, false);
        if (left < best) {
            best = left;
            bestValues = values;
        }
        return;
    }
    for (const double candidate : candidates(open[position])) {
        values[open[position]] = candidate;
        tryAll(open, position + 1, chosen);
    }
}

void Estimator::makePositive() {
    double mean = 0.0;
    for (const double target : problem.entries().targets) {
        mean += target / static_cast<double>(problem.size());
    }
    std::size_t last = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const ModelParameter& parameter = model.parameters[i];
        if (!isLinear[i] || parameter.role != Role::Height) {
            continue;
        }
        values[i] = parameter.shape == last ? 0.0 : clamped(i, values[i] > 0.0 ? values[i] : std::max(mean, 1e-3));
        last = parameter.shape;
    }
}

}  // namespace

std::vector<double> startValues(LeastSquaresProblem& problem, const FitParameters& given) {
    return Estimator(problem, given).run();
}

}  // namespace velmorak::fitting
