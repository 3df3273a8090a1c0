#pragma once

#include <velmorak/Failure.h>
#include <velmorak/FunctionObject.h>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmorak {

namespace fitting {
struct Model;
}

/// Names that no parameter may have, because a kind has outputs with these names.
struct ReservedNames {
    std::vector<std::string> names;
    std::string suffix;  ///< Nor may a parameter have the name of another one with this suffix; empty: none.
};

/// A function of x with named parameters, compiled from a text: an expression (docs/expressions.md) in which every
/// other name is a parameter and the names of shapes stand for their formulas, for example "gauss + pol1" or
/// "n*exp(-x/tau) + gauss(x)".
/// Threads: may be used by several threads at once.
class FitModel {
public:
    /// @throws Failure whose message shows the text with a caret under the mistake.
    explicit FitModel(std::string_view text, const ReservedNames& reserved = {});

    /// Names of the parameters, each once, in order of appearance.
    const std::vector<std::string>& parameters() const;
    /// Sentences about parameters whose names resemble shapes, such as "gaus".
    const std::vector<std::string>& warnings() const;
    /// @param values one for each parameter.
    /// @return the function with these values; its codelet holds the formula that FunctionValues evaluates.
    FunctionObject function(const std::vector<double>& values) const;
    /// @return the rows of a Markdown table of the shapes and their parameters, for the documentation.
    static std::string shapes();

    const fitting::Model& compiled() const { return *model; }

private:
    std::shared_ptr<const fitting::Model> model;
};

/// The user's settings for one parameter.
struct FitParameter {
    std::optional<double> start;
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    bool isFixed = false;

    bool operator==(const FitParameter&) const = default;
};
using FitParameters = std::map<std::string, FitParameter>;

/// Parses settings such as "mean=91.2 [80,100], width=2.5 fixed, slope [,0]": for each parameter an optional start
/// value, limits of which either may be missing, and the word "fixed"; commas separate the parameters.
/// @throws Failure whose message shows the text with a caret under the mistake.
FitParameters readFitParameters(std::string_view text);

/// The data of a fit. An entry belongs to a point or an interval of x.
struct FitData {
    struct Entry {
        double low = 0.0;  ///< Edges of a bin; equal for a point.
        double high = 0.0;
        double y = 0.0;
        double error = 0.0;  ///< Of y; for a histogram the square root of the sum of squared weights.
    };
    std::vector<Entry> entries;

    double center(std::size_t entry) const { return 0.5 * (entries[entry].low + entries[entry].high); }
};

struct FitOptions {
    enum class Method { ChiSquare, Likelihood };
    /// The model value that is compared with the content of a bin: the function at the bin centre, its mean over the
    /// bin, or its integral over the bin.
    enum class Compare { Centre, Mean, Integral };

    Method method = Method::ChiSquare;
    Compare compare = Compare::Centre;
    /// Fit range: entries whose centres lie outside are ignored.
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    FitParameters parameters;
    std::function<bool()> isStopping;  ///< Polled in each iteration; may be empty.
};

/// The fitted parameters, in the model's order.
struct FitResult {
    std::vector<double> values;
    std::vector<double> errors;                   ///< 0 for a fixed parameter and for one at a limit.
    std::vector<std::vector<double>> covariance;  ///< Likewise.
    double chi2 = 0.0;    ///< For the likelihood: -2 ln of its ratio to the likelihood of a perfect fit.
    double ndf = 0.0;     ///< Entries minus free parameters.
    double pValue = 0.0;  ///< NaN without degrees of freedom.
    std::string status;   ///< "converged", with remarks such as parameters at their limits.
    int steps = 0;
    std::size_t entriesUsed = 0;
    std::vector<std::string> warnings;  ///< Sentences about ignored entries and settings.
};

/// The minimisation ended before it reached a minimum.
class NotConverged : public Failure {
public:
    NotConverged(const std::string& sentence, std::vector<double> values)
        : Failure(sentence), last(std::move(values)) {}

    /// Parameters of the last step, in the model's order.
    const std::vector<double>& values() const { return last; }

private:
    std::vector<double> last;
};

/// Minimises chi square or the negative logarithm of the Poisson likelihood. The same input yields the same bits.
/// @throws Failure with the reason and the names of the parameters involved; NotConverged; Stopped.
FitResult fit(const FitModel& model, const FitData& data, const FitOptions& options);

/// @return the p-value of a fit: the probability of a larger chi square at ndf degrees of freedom; NaN unless chi2 >= 0
///         and ndf > 0.
double chiSquareProbability(double chi2, double ndf);

}  // namespace velmorak
