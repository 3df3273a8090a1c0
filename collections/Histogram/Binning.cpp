#include "Binning.h"

#include <velmorak/Failure.h>
#include <velmorak/FormatMeasurement.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmorak {

namespace {

/// An automatic range keeps up to a hundred times as many cells until it is known.
constexpr double maxAutomaticBins = 10000;

double edgeFrom(const std::string& word, const std::string& input) {
    double edge = 0.0;
    if (!readNumber(word, edge) || !std::isfinite(edge)) {
        throw Failure(input, "\"" + word + "\" is not a finite number");
    }
    return edge;
}

}  // namespace

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" ,\t\n") == std::string::npos;
}

std::vector<double> edgesIn(const std::string& text, const std::string& input) {
    std::vector<double> edges;
    std::size_t begin = 0;
    while ((begin = text.find_first_not_of(" ,\t\n", begin)) != std::string::npos) {
        const std::size_t end = std::min(text.find_first_of(" ,\t\n", begin), text.size());
        edges.push_back(edgeFrom(text.substr(begin, end - begin), input));
        if (edges.size() > 1 && edges[edges.size() - 2] >= edges.back()) {
            throw Failure(input, "the edges must ascend, but " + textOf(edges.back()) + " follows " +
                                     textOf(edges[edges.size() - 2]));
        }
        begin = end;
    }
    if (edges.size() < 2) {
        throw Failure(input, "at least two edges are needed");
    }
    if (static_cast<double>(edges.size() - 1) > maxBins) {
        throw Failure(input, "there are more than " + formatNumber(maxBins) + " bins");
    }
    return edges;
}

Axis axisFrom(const Arguments& arguments, const std::string& prefix) {
    if (const std::string& edges = arguments.text(prefix + "edges"); !isBlank(edges)) {
        return Axis(edgesIn(edges, prefix + "edges"));
    }
    const double low = arguments.number(prefix + "low");
    const double high = arguments.number(prefix + "high");
    if (!std::isfinite(low) || !std::isfinite(high) || low >= high) {
        throw Failure(prefix + "high", "the axis from " + textOf(low) + " to " + textOf(high) +
                                           " has no bins: low must be less than high, and both finite");
    }
    try {
        return {static_cast<std::size_t>(arguments.integer(prefix + "bins")), low, high};
    } catch (const std::invalid_argument& reason) {
        throw Failure(prefix + "bins", reason.what());
    }
}

std::vector<InputSpec> axisInputs(const std::string& expression, const std::string& prefix) {
    const std::string unit = "in the unit of " + expression;
    return {
        {.name = prefix + "bins",
         .description = "Number of equal bins between low and high, 1 to 1000000.",
         .value = "50",
         .minimum = 1,
         .maximum = maxBins,
         .isInteger = true},
        {.name = prefix + "low", .description = "Lower edge of the first bin, " + unit + ".", .value = "0"},
        {.name = prefix + "high",
         .description = "Upper edge of the last bin, " + unit + "; a value equal to it is overflow.",
         .value = "100"},
        {.name = prefix + "edges",
         .description = "Ascending edges of bins of any width, separated by blanks or commas, " + unit +
                        ". If not empty, they replace " + prefix + "bins, " + prefix + "low and " + prefix + "high.",
         .type = ValueType::Text},
    };
}

InputSpec rangeInput() {
    return {.name = "range",
            .description =
                "Given: from low to high. Automatic: between round numbers around all finite values, "
                "found in the same pass over the table.",
            .type = ValueType::Choice,
            .value = "given",
            .choices = {"given", "automatic"}};
}

bool isRangeAutomatic(const Arguments& arguments) {
    if (arguments.text("range") != "automatic" || !isBlank(arguments.text("edges"))) {
        return false;
    }
    if (arguments.number("bins") > maxAutomaticBins) {
        throw Failure("bins", "an automatic range has at most " + formatNumber(maxAutomaticBins) + " bins");
    }
    return true;
}

std::string edgesRefusal(const std::string& text) {
    if (isBlank(text)) {
        return {};
    }
    try {
        edgesIn(text);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

InputSpec titleInput() {
    return {.name = "title",
            .description = "Title shown above a plot. Empty: the name of this plug-in.",
            .type = ValueType::Text};
}

InputSpec axisTitleInput(const std::string& name, const std::string& expression) {
    return {.name = name,
            .description = "Title of the axis with its unit, for example mass [GeV]. Empty: " + expression +
                           ", with the unit of the column where it is known.",
            .type = ValueType::Text};
}

}  // namespace velmorak
