#include <velmorak/Failure.h>
#include <velmorak/Value.h>
#include "fit/Problem.h"

#include <array>
#include <cmath>

namespace velmorak::fitting {

namespace {

using Entry = FitData::Entry;
using Method = FitOptions::Method;
using Compare = FitOptions::Compare;

/// Gauss-Legendre rule of 5 points on [-1, 1], exact up to the ninth power (M. Abramowitz, I. Stegun, Handbook of
/// Mathematical Functions, 25.4.30); the weights are halved, so that they form a mean.
struct RulePoint {
    double place;
    double weight;
};
constexpr std::array<RulePoint, 5> legendre{{{-0.906179845938663992797626878299, 0.118463442528094543757132020360},
                                             {-0.538469310105683091036314420700, 0.239314335249683234020645757418},
                                             {0.0, 0.284444444444444444444444444444},
                                             {0.538469310105683091036314420700, 0.239314335249683234020645757418},
                                             {0.906179845938663992797626878299, 0.118463442528094543757132020360}}};
constexpr std::array<RulePoint, 1> middle{{{0.0, 1.0}}};

double center(const Entry& entry) {
    return 0.5 * (entry.low + entry.high);
}

std::string counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + (number == 1 ? " entry " : " entries ") + what +
           (number == 1 ? " is left out" : " are left out");
}

class Selector {
public:
    Selector(const FitData& given, const FitOptions& wanted);

    Selected select();

private:
    bool isWanted(const Entry& entry);

    /// Sum of weights / sum of squared weights: what makes counts of weighted bins.
    double usualScale() const;

    double scaleOf(const Entry& entry, double defaultStart) const;

    template <typename Rule>
    void addAll(const Rule& rule, double defaultStart) {
        made.places.resize(rule.size());
        made.factors.resize(rule.size());
        for (std::size_t i = 0; i < rule.size(); ++i) {
            made.places[i].reserve(kept.size());
            made.factors[i].reserve(kept.size());
        }
        made.targets.reserve(kept.size());
        made.centers.reserve(kept.size());
        for (const Entry* const each : kept) {
            const Entry& entry = *each;
            // The root of a number of counts, squared, is that number but for rounding.
            const double scale = scaleOf(entry, defaultStart);
            const double exact = isLikelihood && std::fabs(scale - 1.0) < 1e-12 ? 1.0 : scale;
            const double width = options.compare == Compare::Integral ? entry.high - entry.low : 1.0;
            for (std::size_t i = 0; i < rule.size(); ++i) {
                made.places[i].push_back(center(entry) + 0.5 * (entry.high - entry.low) * rule[i].place);
                made.factors[i].push_back(exact * width * rule[i].weight);
            }
            made.targets.push_back(exact * entry.y);
            made.centers.push_back(center(entry));
        }
    }

    const FitOptions& options;
    bool isLikelihood;
    std::vector<const Entry*> kept;
    std::size_t unreadable = 0;
    std::size_t withoutError = 0;
    Selected made;
};

Selector::Selector(const FitData& given, const FitOptions& wanted)
    : options(wanted), isLikelihood(wanted.method == Method::Likelihood) {
    kept.reserve(given.entries.size());
    for (const Entry& entry : given.entries) {
        if (isWanted(entry)) {
            kept.push_back(&entry);
        }
    }
    if (unreadable > 0) {
        made.warnings.push_back(counted(unreadable, "that hold NaN or Infinity"));
    }
    if (withoutError > 0) {
        made.warnings.push_back(counted(withoutError, "without an error, such as empty bins,"));
    }
}

Selected Selector::select() {
    if (kept.empty()) {
        throw Failure("no entry is left to fit between " + textOf(options.low) + " and " + textOf(options.high) +
                      (made.warnings.empty() ? "" : ": " + made.warnings.back()));
    }
    const double defaultStart = isLikelihood ? usualScale() : 1.0;
    if (options.compare == Compare::Centre) {
        addAll(middle, defaultStart);
    } else {
        addAll(legendre, defaultStart);
    }
    return std::move(made);
}

bool Selector::isWanted(const Entry& entry) {
    const double x = center(entry);
    if (x < options.low || x > options.high) {
        return false;
    }
    if (!std::isfinite(x) || !std::isfinite(entry.y) || std::isnan(entry.error) || std::isinf(entry.error)) {
        ++unreadable;
        return false;
    }
    if (!isLikelihood && !(entry.error > 0.0)) {
        ++withoutError;
        return false;
    }
    if (isLikelihood && entry.y < 0.0) {
        throw Failure("the likelihood needs counts, but the bin at " + textOf(x) + " holds " + textOf(entry.y));
    }
    if (options.compare == Compare::Integral && !(entry.low < entry.high)) {
        throw Failure("only bins have an integral; the entry at " + textOf(x) + " is a point");
    }
    return true;
}

double Selector::usualScale() const {
    double weights = 0.0;
    double squares = 0.0;
    for (const Entry* const entry : kept) {
        weights += entry->y;
        squares += entry->error * entry->error;
    }
    if (weights == 0.0) {
        throw Failure("the likelihood needs counts, but all bins are empty");
    }
    return squares > 0.0 ? weights / squares : 1.0;
}

double Selector::scaleOf(const Entry& entry, double defaultStart) const {
    if (!isLikelihood) {
        return 1.0 / entry.error;
    }
    return entry.y > 0.0 && entry.error > 0.0 ? entry.y / (entry.error * entry.error) : defaultStart;
}

}  // namespace

Selected select(const FitData& data, const FitOptions& options) {
    return Selector(data, options).select();
}

}  // namespace velmorak::fitting
