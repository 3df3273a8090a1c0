#include <velmorak/Fit.h>

#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>
#include "fit/Minimise.h"

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

using fitting::LeastSquaresProblem;
using fitting::Minimum;
using fitting::Selection;

void checkParameterNames(const FitModel& model, const FitParameters& given) {
    const std::vector<std::string>& names = model.parameters();
    for (const auto& [name, parameter] : given) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            throw Failure("the model has no parameter " + velmorak::quoted(name) + suggestion(name, names));
        }
    }
}

/// Most shapes depend on the square of a width only: of the two equally good solutions, takes the positive one.
void makeWidthsPositive(LeastSquaresProblem& problem, Minimum& minimum, const FitParameters& given) {
    for (std::size_t k = 0; k < minimum.moving.size(); ++k) {
        const std::size_t i = minimum.moving[k];
        const auto& parameter = problem.model().parameters[i];
        if (parameter.role != fitting::Role::Width || minimum.values[i] >= 0.0 || given.contains(parameter.name)) {
            continue;
        }
        std::vector<double> flipped = minimum.values;
        flipped[i] = -flipped[i];
        if (problem.cost(flipped) != problem.cost(minimum.values)) {
            continue;
        }
        minimum.values = flipped;
        minimum.covariance.row(static_cast<Eigen::Index>(k)) *= -1.0;
        minimum.covariance.col(static_cast<Eigen::Index>(k)) *= -1.0;
    }
}

void checkEntryCount(const LeastSquaresProblem& problem, const Selection& free) {
    if (problem.size() >= free.size()) {
        return;
    }
    std::string names;
    for (const std::size_t i : free) {
        names += (names.empty() ? "" : ", ") + problem.model().names[i];
    }
    throw Failure(std::to_string(problem.size()) + " entries are too few to fit " + std::to_string(free.size()) +
                  " parameters (" + names + ")");
}

FitResult resultOf(LeastSquaresProblem& problem, const Minimum& minimum, std::size_t freeCount) {
    FitResult result;
    const std::size_t n = minimum.values.size();
    result.values = minimum.values;
    result.errors.assign(n, 0.0);
    result.covariance.assign(n, std::vector<double>(n, 0.0));
    for (std::size_t a = 0; a < minimum.moving.size(); ++a) {
        for (std::size_t b = 0; b < minimum.moving.size(); ++b) {
            result.covariance[minimum.moving[a]][minimum.moving[b]] =
                minimum.covariance(static_cast<Eigen::Index>(a), static_cast<Eigen::Index>(b));
        }
    }
    for (const std::size_t i : minimum.moving) {
        result.errors[i] = std::sqrt(result.covariance[i][i]);
    }
    result.chi2 = problem.cost(minimum.values);
    result.entriesUsed = problem.size();
    result.ndf = static_cast<double>(problem.size() - freeCount);
    result.pValue = chiSquareProbability(result.chi2, result.ndf);
    result.steps = minimum.steps;
    result.warnings = problem.entries().warnings;
    result.status = freeCount == 0 ? "nothing to fit: every parameter is fixed" : "converged";
    for (const std::size_t i : minimum.atLimit) {
        result.status += "; " + problem.model().names[i] + " is at its limit " + textOf(minimum.values[i]);
    }
    return result;
}

}  // namespace

FitResult fit(const FitModel& model, const FitData& data, const FitOptions& options) {
    checkParameterNames(model, options.parameters);
    LeastSquaresProblem problem(model.compiled(), fitting::selectEntries(data, options), options.method);
    Selection free;
    std::vector<fitting::Limits> limits;
    for (std::size_t i = 0; i < model.parameters().size(); ++i) {
        const auto found = options.parameters.find(model.parameters()[i]);
        const FitParameter parameter = found == options.parameters.end() ? FitParameter{} : found->second;
        limits.push_back({parameter.low, parameter.high});
        if (!parameter.isFixed) {
            free.push_back(i);
        }
    }
    checkEntryCount(problem, free);
    Minimum minimum =
        fitting::minimise(problem, fitting::startValues(problem, options.parameters), free, limits, options.isStopping);
    makeWidthsPositive(problem, minimum, options.parameters);
    return resultOf(problem, minimum, free.size());
}

}  // namespace velmorak
