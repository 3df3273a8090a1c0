#include "fit/Minimise.h"

#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

/// Finds start values: where a shape has a place or width that is not given, several are tried, each with the best
/// heights, which are a linear problem.
class Estimator {
public:
    Estimator(LeastSquaresProblem& fitted, const FitParameters& known);

    std::vector<double> run();

private:
    double defaultStart(std::size_t i) const;

    double clamped(std::size_t i, double value) const;

    void clampAll();

    /// Linear parameters of the shapes up to one, and of no shape; those of later shapes are switched off.
    Selection chosenUpTo(std::size_t shape);

    /// @return the sum of squares that the best linear parameters leave.
    double solve(const Selection& chosen, bool isKept);

    std::vector<double> candidates(std::size_t parameter) const;

    void placeShape(std::size_t shape);

    /// Shapes have at most two parameters to try.
    void tryAll(const Selection& open, std::size_t position, const Selection& chosen);

    /// Where the best heights make the function negative, the likelihood begins with positive ones.
    void makePositive();

    LeastSquaresProblem& problem;
    const Model& model;
    const FitParameters& given;
    std::vector<double> values;
    std::vector<bool> isOpen;
    std::vector<bool> isLinear;
    bool isAnyOpen = false;
    std::vector<double> bestValues;
    double best = 0.0;
    double lowest = 0.0;
    double span = 1.0;
};

Estimator::Estimator(LeastSquaresProblem& fitted, const FitParameters& known)
    : problem(fitted), model(fitted.model()), given(known) {
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
    isAnyOpen = std::find(isOpen.begin(), isOpen.end(), true) != isOpen.end();
    if (isAnyOpen) {
        isLinear = linearAmong(model.program, wanted);
    }
}

std::vector<double> Estimator::run() {
    if (!isAnyOpen) {
        return values;
    }
    problem.setEstimating(true);
    for (std::size_t shape = 1; shape <= model.shapes; ++shape) {
        placeShape(shape);
    }
    solve(chosenUpTo(model.shapes), true);
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

Selection Estimator::chosenUpTo(std::size_t shape) {
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
    const Linear linear = problem.linearise(values, chosen);
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
        const Selected& entries = problem.entries();
        const auto top = std::max_element(entries.targets.begin(), entries.targets.end());
        all.push_back(entries.centers[static_cast<std::size_t>(top - entries.targets.begin())]);
        constexpr int places = 16;
        for (int i = 0; i < places; ++i) {
            all.push_back(lowest + span * (i + 0.5) / places);
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

void Estimator::placeShape(std::size_t shape) {
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
    const Selection chosen = chosenUpTo(shape);
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
