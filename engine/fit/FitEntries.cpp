#include "fit/FitEntries.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <array>
#include <cmath>

namespace velmorak::fitting {

namespace {

using Entry = FitData::Entry;
using Method = FitOptions::Method;
using Compare = FitOptions::Compare;

/// Five-point Gauss-Legendre rule on [-1, 1], exact for polynomials up to degree 9 (M. Abramowitz, I. Stegun, Handbook
/// of Mathematical Functions, 25.4.30); the weights are halved, so that they yield a mean.
struct QuadraturePoint {
    double abscissa;
    double weight;
};
constexpr std::array<QuadraturePoint, 5> legendre{
    {{-0.906179845938663992797626878299, 0.118463442528094543757132020360},
     {-0.538469310105683091036314420700, 0.239314335249683234020645757418},
     {0.0, 0.284444444444444444444444444444},
     {0.538469310105683091036314420700, 0.239314335249683234020645757418},
     {0.906179845938663992797626878299, 0.118463442528094543757132020360}}};
constexpr std::array<QuadraturePoint, 1> midpoint{{{0.0, 1.0}}};

double center(const Entry& entry) {
    return 0.5 * (entry.low + entry.high);
}

std::string counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + (number == 1 ? " entry " : " entries ") + what +
           (number == 1 ? " is left out" : " are left out");
}

class EntrySelector {
public:
    EntrySelector(const FitData& data, const FitOptions& options);

    FitEntries select();

private:
    bool isWanted(const Entry& entry);

    /// Sum of weights / sum of squared weights: converts the contents of weighted bins to effective counts.
    double meanScale() const;

    double scaleOf(const Entry& entry, double emptyBinScale) const;

    template <typename Rule>
    void addAll(const Rule& rule, double emptyBinScale) {
        result.abscissae.resize(rule.size());
        result.weights.resize(rule.size());
        for (std::size_t i = 0; i < rule.size(); ++i) {
            result.abscissae[i].reserve(kept.size());
            result.weights[i].reserve(kept.size());
        }
        result.targets.reserve(kept.size());
        result.centers.reserve(kept.size());
        for (const Entry* const pointer : kept) {
            const Entry& entry = *pointer;
            // For unweighted counts, y / error² differs from 1 by rounding only.
            const double scale = scaleOf(entry, emptyBinScale);
            const double exact = isLikelihood && std::fabs(scale - 1.0) < 1e-12 ? 1.0 : scale;
            const double width = options.compare == Compare::Integral ? entry.high - entry.low : 1.0;
            for (std::size_t i = 0; i < rule.size(); ++i) {
                result.abscissae[i].push_back(center(entry) + 0.5 * (entry.high - entry.low) * rule[i].abscissa);
                result.weights[i].push_back(exact * width * rule[i].weight);
            }
            result.targets.push_back(exact * entry.y);
            result.centers.push_back(center(entry));
        }
    }

    const FitOptions& options;
    bool isLikelihood;
    std::vector<const Entry*> kept;
    std::size_t unreadable = 0;
    std::size_t withoutError = 0;
    FitEntries result;
};

EntrySelector::EntrySelector(const FitData& data, const FitOptions& options)
    : options(options), isLikelihood(options.method == Method::Likelihood) {
    kept.reserve(data.entries.size());
    for (const Entry& entry : data.entries) {
        if (isWanted(entry)) {
            kept.push_back(&entry);
        }
    }
    if (unreadable > 0) {
        result.warnings.push_back(counted(unreadable, "that hold NaN or Infinity"));
    }
    if (withoutError > 0) {
        result.warnings.push_back(counted(withoutError, "without an error, such as empty bins,"));
    }
}

FitEntries EntrySelector::select() {
    if (kept.empty()) {
        throw Failure("no entry to fit between " + textOf(options.low) + " and " + textOf(options.high) +
                      (result.warnings.empty() ? "" : ": " + result.warnings.back()));
    }
    const double emptyBinScale = isLikelihood ? meanScale() : 1.0;
    if (options.compare == Compare::Centre) {
        addAll(midpoint, emptyBinScale);
    } else {
        addAll(legendre, emptyBinScale);
    }
    return std::move(result);
}

bool EntrySelector::isWanted(const Entry& entry) {
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

double EntrySelector::meanScale() const {
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

double EntrySelector::scaleOf(const Entry& entry, double emptyBinScale) const {
    if (!isLikelihood) {
        return 1.0 / entry.error;
    }
    return entry.y > 0.0 && entry.error > 0.0 ? entry.y / (entry.error * entry.error) : emptyBinScale;
}

}  // namespace

FitEntries selectEntries(const FitData& data, const FitOptions& options) {
    return EntrySelector(data, options).select();
}

}  // namespace velmorak::fitting
