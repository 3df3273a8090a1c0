#pragma once

#include <velmorak/FunctionObject.h>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

namespace fitting {
struct Model;
}

/// A function of x with named parameters, as a text says it: an expression (docs/expressions.md) in which every other
/// name is a parameter, and shapes stand for their formulas, for example "gauss + pol1" or "n*exp(-x/tau) + gauss(x)".
/// Threads: may be used by several threads at once.
class FitModel {
public:
    /// @throws Failure with the text and a caret under the place.
    explicit FitModel(std::string_view text);

    /// Each once, in order of appearance.
    const std::vector<std::string>& parameters() const;
    /// Sentences on parameters whose names look like those of shapes, such as "gaus".
    const std::vector<std::string>& warnings() const;
    /// @param values one for each parameter.
    /// @return a function whose codelet holds its formula, which FunctionValues computes.
    FunctionObject function(const std::vector<double>& values) const;
    /// @return names of the shapes that a text may use, each with its parameters, for a page.
    static std::string shapes();

    const fitting::Model& parts() const { return *model; }

private:
    std::shared_ptr<const fitting::Model> model;
};

/// What the user says of one parameter.
struct FitParameter {
    std::optional<double> start;
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    bool isFixed = false;

    bool operator==(const FitParameter&) const = default;
};
using FitParameters = std::map<std::string, FitParameter>;

/// Reads "mean=91.2 [80,100], width=2.5 fixed, slope [,0]": start value, limits, either of which may be missing, and
/// whether the value is kept; parameters are separated by commas.
/// @throws Failure with the text and a caret under the place.
FitParameters readFitParameters(std::string_view text);

/// What a function is fitted to. Each entry has a place or an interval.
struct FitData {
    struct Entry {
        double low = 0.0;  ///< Edges of a bin; both the same for a point.
        double high = 0.0;
        double y = 0.0;
        double error = 0.0;  ///< Of y; for counts the square root of the sum of squared weights.
    };
    std::vector<Entry> entries;

    double center(std::size_t entry) const { return 0.5 * (entries[entry].low + entries[entry].high); }
};

struct FitOptions {
    enum class Method { ChiSquare, Likelihood };
    /// What is compared with the content of a bin: the function at the centre, its mean over the bin, or its integral
    /// over the bin.
    enum class Compare { Centre, Mean, Integral };

    Method method = Method::ChiSquare;
    Compare compare = Compare::Centre;
    /// Entries whose centre lies outside are left out.
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    FitParameters parameters;
    std::function<bool()> isStopping;  ///< Polled in each step; may be empty.
};

/// The best values of all parameters, in the model's order.
struct FitResult {
    std::vector<double> values;
    std::vector<double> errors;                   ///< 0 for a fixed parameter, and for one at its limit.
    std::vector<std::vector<double>> covariance;  ///< Likewise.
    double chi2 = 0.0;    ///< For the likelihood: twice the logarithm of its ratio to the likelihood of a perfect fit.
    double ndf = 0.0;     ///< Entries less free parameters.
    double pValue = 0.0;  ///< NaN without degrees of freedom.
    std::string status;   ///< "converged", and what else there is to know.
    int steps = 0;
    std::size_t entriesUsed = 0;
    std::vector<std::string> warnings;  ///< Sentences on what was left out.
};

/// Finds the parameters for which chi square, or minus the logarithm of the Poisson likelihood, is least. The same data
/// give the same bits.
/// @throws Failure with the reason and the names of the parameters; Stopped.
FitResult fit(const FitModel& model, const FitData& data, const FitOptions& options);

/// @return probability that chi square with ndf degrees of freedom is larger; NaN unless chi2 >= 0 and ndf > 0.
double chiSquareProbability(double chi2, double ndf);

}  // namespace velmorak
