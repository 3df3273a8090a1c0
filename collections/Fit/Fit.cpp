#include "kinds.h"

#include "Entries.h"

#include <utility>

namespace velmorak {

namespace {

constexpr const char* firstModel = "gauss";

std::vector<InputSpec> fixedInputs() {
    return {
        {.name = "data",
         .description = "Data to fit: a one-dimensional histogram or profile, or points with x and y.",
         .type = ValueType::Any},
        {.name = "model",
         .description = "Function of x: shapes such as gauss + pol1, or an expression, in which every other name is a "
                        "parameter.",
         .type = ValueType::Text,
         .value = firstModel},
        {.name = "start",
         .description = "Start values, limits and fixed parameters, in their units, for example mean=91.2 [80,100], "
                        "sigma=2.5 fixed. Start values that are not given are estimated from the data.",
         .type = ValueType::Text},
        {.name = "method",
         .description = "Quantity to minimise: chi2, the sum of squared deviations over errors, or likelihood, the "
                        "Poisson likelihood of counts.",
         .type = ValueType::Choice,
         .value = "chi2",
         .choices = {"chi2", "likelihood"}},
        {.name = "compare",
         .description = "Value of the function in a bin: at its centre, its mean over the "
                        "bin, or its integral over the bin.",
         .type = ValueType::Choice,
         .value = "centre",
         .choices = {"centre", "mean", "integral"}},
        {.name = "low",
         .description = "Bins and points below this are left out, in the unit of x; the centre of a bin decides.",
         .value = "-Infinity"},
        {.name = "high",
         .description = "Bins and points above this are left out, in the unit of x.",
         .value = "Infinity"},
        {.name = "title",
         .description = "Title of the function, shown in the legend of a plot. Empty: the name of this plug-in.",
         .type = ValueType::Text},
    };
}

std::vector<OutputSpec> fixedOutputs() {
    return {
        {.name = "function",
         .description = "The function with the fitted parameters; their errors and the quality of the fit are in its "
                        "annotation.",
         .type = ValueType::Function},
        {.name = "chi2",
         .description = "Chi square at the minimum; for the likelihood twice the logarithm of its ratio to that of a "
                        "perfect fit."},
        {.name = "ndf", .description = "Number of degrees of freedom: entries minus free parameters."},
        {.name = "reduced",
         .description = "Chi square divided by the number of degrees of freedom; NaN if there are none."},
        {.name = "p_value",
         .description =
             "Probability of a larger chi square if the function is true (p-value); NaN without degrees of freedom."},
        {.name = "entries", .description = "Number of bins or points in the fit."},
        {.name = "status",
         .description = "The word converged, and the parameters that end at a limit.",
         .type = ValueType::Text},
        {.name = "covariance",
         .description = "Covariance of the parameters in their units, as a table of text: a line of names, then a line "
                        "for each parameter with its name; separated by commas.",
         .type = ValueType::Text},
    };
}

constexpr const char* errorSuffix = "_error";

/// @throws Failure, also when a parameter has the name of another output.
FitModel modelFrom(const std::string& text) {
    ReservedNames reserved{{}, errorSuffix};
    for (const OutputSpec& output : fixedOutputs()) {
        reserved.names.push_back(output.name);
    }
    return FitModel(text, reserved);
}

FitOptions optionsFrom(const Arguments& arguments, const RunContext& context) {
    FitOptions options;
    options.method =
        arguments.text("method") == "likelihood" ? FitOptions::Method::Likelihood : FitOptions::Method::ChiSquare;
    const std::string& compare = arguments.text("compare");
    options.compare = compare == "mean"       ? FitOptions::Compare::Mean
                      : compare == "integral" ? FitOptions::Compare::Integral
                                              : FitOptions::Compare::Centre;
    options.low = arguments.number("low");
    options.high = arguments.number("high");
    if (!(options.low < options.high)) {
        throw Failure("low", "the range from " + textOf(options.low) + " to " + textOf(options.high) + " is empty");
    }
    options.parameters = readFitParameters(arguments.text("start"));
    options.isStopping = [&context] { return context.isStopping(); };
    return options;
}

std::string covarianceText(const std::vector<std::string>& names, const FitResult& result) {
    std::string text = "parameter";
    for (const std::string& name : names) {
        text += "," + name;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += "\n" + names[i];
        for (const double value : result.covariance[i]) {
            text += "," + textOf(value);
        }
    }
    return text;
}

CovarianceMatrix covarianceMatrix(const std::vector<std::string>& names, const FitResult& result,
                                  const RunContext& context) {
    CovarianceMatrix covariance{.origin = context.pluginName(), .names = names, .elements = {}};
    for (const std::vector<double>& row : result.covariance) {
        covariance.elements.insert(covariance.elements.end(), row.begin(), row.end());
    }
    return covariance;
}

void setParameters(const std::vector<std::string>& names, const FitResult& result, Results& results,
                   const RunContext& context) {
    const std::vector<NumberWithError> numbers =
        numbersWithErrors(result.values, covarianceMatrix(names, result, context));
    for (std::size_t i = 0; i < names.size(); ++i) {
        // A fixed parameter, or one at its limit, is a number without an error.
        const bool hasError = result.errors[i] != 0.0;
        results.set(names[i], hasError ? Value(numbers[i]) : Value(result.values[i]));
        results.set(names[i] + errorSuffix, result.errors[i]);
    }
}

double reduced(const FitResult& result) {
    return result.ndf > 0.0 ? result.chi2 / result.ndf : std::numeric_limits<double>::quiet_NaN();
}

std::shared_ptr<FunctionObject> curveOf(const FitModel& model, const std::vector<double>& values,
                                        const Arguments& arguments, const RunContext& context) {
    auto function = std::make_shared<FunctionObject>(model.function(values));
    function->name = context.pluginName();
    function->title = arguments.text("title").empty() ? context.pluginName() : arguments.text("title");
    return function;
}

/// What remains of a fit that does not converge.
DataObjectPtr lastCurve(const FitModel& model, const NotConverged& end, const Arguments& arguments,
                        const RunContext& context) {
    const auto function = curveOf(model, end.values(), arguments, context);
    function->annotation = {{"model", arguments.text("model"), false},
                            {"method", arguments.text("method"), false},
                            {"status", "not converged", false}};
    return function;
}

DataObjectPtr functionOf(const FitModel& model, const FitResult& result, const Arguments& arguments,
                         const RunContext& context) {
    const auto function = curveOf(model, result.values, arguments, context);
    const auto note = [&](const std::string& key, const std::string& value) {
        function->annotation.push_back({key, value, false});
    };
    note("model", arguments.text("model"));
    note("method", arguments.text("method"));
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        note(model.parameters()[i] + errorSuffix, textOf(result.errors[i]));
    }
    note("chi2", textOf(result.chi2));
    note("ndf", textOf(result.ndf));
    note("p_value", textOf(result.pValue));
    note("status", result.status);
    return function;
}

/// Fits a function to a histogram, profile or points. The parameters of the model become outputs.
class FitKind : public Function {
public:
    std::string name() const override { return "Fit"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string FitKind::summary() const {
    return "Fits a function with parameters to a histogram, a profile or points, by chi square or likelihood.";
}

std::string FitKind::notes() const {
    return R"(**Model.** An [expression](../expressions.md) of `x`, in which every other name is a parameter, for example
`n*exp(-x/tau) + b`. A shape is an abbreviation of its formula:

| shape | parameters | formula |
|---|---|---|
)" + FitModel::shapes() +
           R"(
`pol0` to `pol9` are polynomials of that degree. `gauss + pol1` and `gauss(x) + pol1(x)` are the same. A parameter whose name
is already used gets the next number: `gauss + gauss` has `mean` and `mean_2`. The parameters of a shape can also be given, as shared
parameters or expressions: `gauss(x, n, m, s) + gauss(x, k, m, 3*s)`. The amplitude is the height of the peak, `gamma` the full
width at half of it, `alpha` where the tail begins, in sigmas below the mean (J. E. Gaiser, SLAC-R-255 (1982), appendix F).
Each parameter has two outputs: its fitted value, and its error under the name with `_error`. The value carries its error
and its covariance with the other parameters along the wire: `Print` and `Report` show it as `91.21 ± 0.04`, and a `Function` of
several parameters has the right error. The model determines the outputs and therefore cannot be wired.

**Start.** `mean=91.2 [80,100], sigma=2.5 fixed, n [0,]`: start value, limits, and whether the parameter is fixed. Other start
values are estimated: positions and widths of shapes by a scan over the range, one shape after the other, with the heights
that solve the linear least-squares problem at each step. Any other parameter starts at 1.

**Chi square** is the sum of (y - f)² / error². The error of a histogram bin is the root of its sum of squared weights, that of
a profile bin the error of its height, that of a point the mean of its two errors; errors of x are not used. Entries without
an error, among them all empty bins, are left out, as are entries with NaN or Infinity; a warning reports their number.

**Likelihood** is the extended likelihood of independent Poisson counts: 2 times the sum of f - y + y log(y / f) is minimised
(S. Baker, R. Cousins, Nuclear Instruments and Methods 221 (1984) 437). Empty bins are included. Only histograms can be fitted. In a
weighted histogram, content and function are both multiplied by the sum of weights over the sum of squared weights of the
bin (G. Bohm, G. Zech, Nuclear Instruments and Methods A 748 (2014) 1), in an empty bin by that of all bins. A negative
bin is an error.

**Bins.** `centre` compares the content with the function at the centre of the bin, `mean` with its mean over the bin, by
a five-point Gauss-Legendre rule. With `integral`, the function is a density, in entries per unit of x: use it for bins of
unequal width.

**Minimisation.** Levenberg-Marquardt steps with exact derivatives of the model (J. Moré, Lecture Notes in Mathematics 630
(1978) 105), which stop at limits, then Newton steps until the minimum is closer than 1e-9 standard deviations. The
covariance is the inverse of half the matrix of second derivatives at the minimum, including all its terms. A fixed
parameter, or one that ends at a limit, has an error of 0 and no covariance; the status names the latter.

A fit that does not converge in 1000 steps fails; a `Plot` or `Report` still draws its last curve, marked "not converged". It
also fails, with the names of the parameters, when there are fewer entries than
free parameters, and when the data do not determine the parameters, so that rounding would decide about them or their
errors. The p-value is the probability of a larger chi square for this number of degrees of freedom; for the likelihood it
is valid if the bins have more than a few entries.)";
}

Ports FitKind::ports(const ValueTexts& values) const {
    Ports ports{fixedInputs(), fixedOutputs()};
    const auto found = values.find("model");
    const std::string text = found == values.end() ? firstModel : found->second;
    if (!refusal("model", text).empty()) {
        return ports;
    }
    const FitModel model = modelFrom(text);
    for (const std::string& name : model.parameters()) {
        ports.outputs.push_back(
            {.name = name, .description = "Fitted value of the parameter, in its unit, with its error."});
        ports.outputs.push_back({.name = name + errorSuffix,
                                 .description = "Standard deviation of the parameter, in its unit; 0 if fixed."});
    }
    return ports;
}

std::string FitKind::refusal(const std::string& input, const std::string& value) const {
    try {
        if (input == "model") {
            modelFrom(value);
        }
        if (input == "start") {
            readFitParameters(value);
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

void FitKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    if (arguments.isWired("model")) {
        throw Failure("model", "the model cannot be wired, because it determines the outputs; enter it as a value");
    }
    const FitModel model = modelFrom(arguments.text("model"));
    for (const std::string& warning : model.warnings()) {
        context.warn(warning);
    }
    const FitOptions options = optionsFrom(arguments, context);
    const FitData data = entriesOf(arguments.value("data"), options.method == FitOptions::Method::Likelihood);
    const FitResult result = [&] {
        try {
            return fit(model, data, options);
        } catch (const NotConverged& end) {
            results.leave("function", lastCurve(model, end, arguments, context));
            throw;
        }
    }();
    for (const std::string& warning : result.warnings) {
        context.warn(warning);
    }
    results.set("function", functionOf(model, result, arguments, context));
    results.set("chi2", result.chi2);
    results.set("ndf", result.ndf);
    results.set("reduced", reduced(result));
    results.set("p_value", result.pValue);
    results.set("entries", static_cast<double>(result.entriesUsed));
    results.set("status", result.status);
    results.set("covariance", covarianceText(model.parameters(), result));
    setParameters(model.parameters(), result, results, context);
}

std::unique_ptr<Kind> makeFit() {
    return std::make_unique<FitKind>();
}

}  // namespace velmorak
