#include "Distribution.h"

#include "shared/Philox.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

namespace velmorak {

namespace {

/// Uniform random numbers of one row and column, two at a time.
class Draws {
public:
    Draws(std::uint64_t row, std::uint32_t column, std::uint64_t seed) : row(row), column(column), seed(seed) {}

    struct Pair {
        double first, second;  ///< Above 0 and below 1.
    };

    Pair next();

private:
    static double uniform(std::uint32_t high, std::uint32_t low);

    std::uint64_t row;
    std::uint32_t column;
    std::uint64_t seed;
    std::uint32_t count = 0;
};

Draws::Pair Draws::next() {
    const Philox::Block block =
        Philox::at({static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(row >> 32U), column, count++}, seed);
    return {uniform(block[0], block[1]), uniform(block[2], block[3])};
}

double Draws::uniform(std::uint32_t high, std::uint32_t low) {
    const std::uint64_t bits = (static_cast<std::uint64_t>(high) << 32U | low) >> 12U;
    return (static_cast<double>(bits) + 0.5) * 0x1p-52;
}

/// Adds up probabilities until they exceed a random number; for small means.
double smallPoisson(double mean, Draws& draws) {
    const double u = draws.next().first;
    double probability = elementary::exp(-mean);
    double sum = probability;
    double k = 0.0;
    while (u > sum && probability > 0.0) {
        k += 1.0;
        probability *= mean / k;
        sum += probability;
    }
    return k;
}

/// Transformed rejection: W. Hoermann, Insurance: Mathematics and Economics 12 (1993) 39.
double largePoisson(double mean, Draws& draws) {
    const double b = 0.931 + 2.53 * std::sqrt(mean);
    const double a = -0.059 + 0.02483 * b;
    const double inverseAlpha = 1.1239 + 1.1328 / (b - 3.4);
    const double fastLimit = 0.9277 - 3.6224 / (b - 2.0);
    for (;;) {
        const Draws::Pair pair = draws.next();
        const double u = pair.first - 0.5;
        const double v = pair.second;
        const double margin = 0.5 - std::fabs(u);
        const double k = std::floor((2.0 * a / margin + b) * u + mean + 0.43);
        if (margin >= 0.07 && v <= fastLimit) {
            return k;
        }
        if (k < 0.0 || (margin < 0.013 && v > margin)) {
            continue;
        }
        const double logProbability = k * elementary::log(mean) - mean - elementary::lgamma(k + 1.0);
        if (elementary::log(v * inverseAlpha / (a / (margin * margin) + b)) <= logProbability) {
            return k;
        }
    }
}

struct FormName {
    const char* name;
    Distribution::Form form;
    std::size_t parameters;
};

constexpr FormName forms[] = {
    {"uniform", Distribution::Form::Uniform, 2},         {"gauss", Distribution::Form::Gauss, 2},
    {"exponential", Distribution::Form::Exponential, 1}, {"breitwigner", Distribution::Form::BreitWigner, 2},
    {"poisson", Distribution::Form::Poisson, 1},
};

std::vector<std::string> splitAt(std::string_view text, const char* signs) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string_view::npos; begin = end + 1) {
        end = text.find_first_of(signs, begin);
        parts.emplace_back(trimmed(text.substr(begin, end == std::string_view::npos ? end : end - begin)));
    }
    return parts;
}

const FormName& formNamed(const std::string& name) {
    std::string known;
    for (const FormName& form : forms) {
        if (name == form.name) {
            return form;
        }
        known += (known.empty() ? "" : ", ") + std::string(form.name);
    }
    throw Failure("columns", "unknown distribution \"" + name + "\"; the known ones are " + known);
}

/// Upper bound of the absolute value of the numbers.
double maxOf(const Distribution& distribution) {
    switch (distribution.form) {
        case Distribution::Form::Uniform:
            return std::max(std::fabs(distribution.first), std::fabs(distribution.second));
        case Distribution::Form::Gauss:  // sqrt(-2 log(2^-53)) deviations.
            return std::fabs(distribution.first) + 9.0 * distribution.second;
        case Distribution::Form::Exponential:  // -log(2^-53) means.
            return 37.0 * distribution.first;
        case Distribution::Form::BreitWigner:  // Half of tan(pi (1/2 - 2^-53)) widths.
            return std::fabs(distribution.first) + 2e15 * distribution.second;
        default:
            return distribution.first;
    }
}

/// @throws Failure if the parameters are not allowed.
void check(const Distribution& distribution, const std::string& text) {
    using Form = Distribution::Form;
    const Form form = distribution.form;
    const bool isFinite = std::isfinite(distribution.first) && std::isfinite(distribution.second);
    const bool isUsable = form == Form::Uniform       ? distribution.first < distribution.second
                          : form == Form::Exponential ? distribution.first > 0.0
                          : form == Form::Poisson     ? distribution.first >= 0.0 && distribution.first <= 1e15
                                                      : distribution.second > 0.0;
    if (!isFinite || !isUsable) {
        throw Failure("columns", "\"" + text + "\" has parameters outside the range allowed for this distribution");
    }
    if (!std::isfinite(maxOf(distribution))) {
        throw Failure("columns", "\"" + text + "\" gives numbers beyond 1.8e308, the largest that a column can hold");
    }
}

Distribution distributionOf(const std::string& text) {
    const std::size_t open = text.find('(');
    if (open == std::string::npos || text.back() != ')') {
        throw Failure("columns", "\"" + text + "\" is not a distribution such as gauss(0, 1)");
    }
    const std::string name(trimmed(std::string_view(text).substr(0, open)));
    const FormName& form = formNamed(name);
    const std::vector<std::string> parameters = splitAt(text.substr(open + 1, text.size() - open - 2), ",");
    Distribution distribution{.form = form.form};
    bool isRead = parameters.size() == form.parameters && readNumber(parameters[0], distribution.first);
    isRead = isRead && (parameters.size() == 1 || readNumber(parameters[1], distribution.second));
    if (!isRead) {
        throw Failure("columns", "\"" + text + "\" needs " + (form.parameters == 1 ? "one number" : "two numbers") +
                                     " in parentheses");
    }
    check(distribution, text);
    return distribution;
}

}  // namespace

double Distribution::valueAt(std::uint64_t row, std::uint32_t column, std::uint64_t seed) const {
    Draws draws(row, column, seed);
    if (form == Form::Poisson) {
        return first < 30.0 ? smallPoisson(first, draws) : largePoisson(first, draws);
    }
    const Draws::Pair pair = draws.next();
    switch (form) {
        case Form::Uniform:
            return std::isfinite(second - first) ? first + (second - first) * pair.first
                                                 : first * (1.0 - pair.first) + second * pair.first;
        case Form::Gauss:  // Box and Muller.
            return first + second * std::sqrt(-2.0 * elementary::log(pair.first)) *
                               elementary::cos(2.0 * std::numbers::pi * pair.second);
        case Form::Exponential:
            return -first * elementary::log(pair.first);
        default:
            return first + 0.5 * second * elementary::tan(std::numbers::pi * (pair.first - 0.5));
    }
}

std::vector<RandomColumn> randomColumnsIn(const std::string& text) {
    std::vector<RandomColumn> columns;
    std::set<std::string> names;
    for (const std::string& line : splitAt(text, "\n;")) {
        if (line.empty()) {
            continue;
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || trimmed(std::string_view(line).substr(0, colon)).empty()) {
            throw Failure("columns", "\"" + line + "\" is not of the form name: distribution");
        }
        const std::string name(trimmed(std::string_view(line).substr(0, colon)));
        if (!names.insert(name).second) {
            throw Failure("columns", "there are two columns \"" + name + "\"");
        }
        columns.push_back({name, distributionOf(std::string(trimmed(std::string_view(line).substr(colon + 1))))});
    }
    return columns;
}

}  // namespace velmorak
