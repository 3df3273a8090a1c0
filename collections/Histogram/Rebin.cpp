#include "Binning.h"
#include "HistogramKinds.h"
#include "Objects.h"
#include "ScatterAdd.h"

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

/// An axis of fewer bins, and where the old cells go.
struct Joined {
    Axis axis;
    std::vector<std::size_t> target;
};

/// The old edge that a written number means; the last decimal places of an edge are not written down.
double matchingEdge(const Axis& axis, double written, const std::string& input) {
    const auto& edges = axis.edges();
    const auto above = std::lower_bound(edges.begin(), edges.end(), written);
    const double tolerance = 1e-6 * (axis.high() - axis.low()) / static_cast<double>(axis.bins());
    for (const auto place : {above, above == edges.begin() ? above : above - 1}) {
        if (place != edges.end() && std::abs(*place - written) <= tolerance) {
            return *place;
        }
    }
    throw Failure(input, "no bin of the histogram begins or ends at " + textOf(written));
}

Joined atEdges(const Axis& axis, const std::string& text, const std::string& input) {
    std::vector<double> edges = edgesIn(text, input);
    for (double& edge : edges) {
        edge = matchingEdge(axis, edge, input);
    }
    Joined joined{.axis = Axis(std::move(edges)), .target = {0}};
    for (std::size_t bin = 0; bin < axis.bins(); ++bin) {
        joined.target.push_back(joined.axis.cell(axis.edges()[bin]));
    }
    joined.target.push_back(joined.axis.bins() + 1);
    return joined;
}

Joined byFactor(const Axis& axis, std::int64_t factor, const std::string& input) {
    const auto step = static_cast<std::size_t>(factor);
    if (axis.bins() % step != 0) {
        throw Failure(input,
                      std::to_string(axis.bins()) + " bins cannot be joined in groups of " + std::to_string(factor));
    }
    Joined joined{.axis = axis, .target = {0}};
    if (step > 1) {
        std::vector<double> edges;
        for (std::size_t i = 0; i <= axis.bins(); i += step) {
            edges.push_back(axis.edges()[i]);
        }
        joined.axis = Axis(std::move(edges));
    }
    for (std::size_t bin = 0; bin < axis.bins(); ++bin) {
        joined.target.push_back(bin / step + 1);
    }
    joined.target.push_back(joined.axis.bins() + 1);
    return joined;
}

Joined joined(const Axis& axis, const Arguments& arguments, const std::string& prefix) {
    const std::string& edges = arguments.text(prefix + "edges");
    Joined result = isBlank(edges) ? byFactor(axis, arguments.integer(prefix + "factor"), prefix + "factor")
                                   : atEdges(axis, edges, prefix + "edges");
    result.axis.title = axis.title;
    return result;
}

Histogram1D rebinned(const Histogram1D& histogram, const Arguments& arguments) {
    const Joined x = joined(histogram.axis(), arguments, "");
    return {x.axis, gathered(histogram.cells(), x.target, x.axis.bins() + 2), histogram.nanEntries()};
}

Histogram2D rebinned(const Histogram2D& histogram, const Arguments& arguments) {
    const Joined x = joined(histogram.grid().axis(0), arguments, "");
    const Joined y = joined(histogram.grid().axis(1), arguments, "y");
    const Grid<2> grid({x.axis, y.axis});
    std::vector<std::size_t> target;
    for (std::size_t cell = 0; cell < histogram.cells().size(); ++cell) {
        const Grid<2>::Cells cells = histogram.grid().alongAxes(cell);
        target.push_back(grid.cell({x.target[cells[0]], y.target[cells[1]]}));
    }
    return {grid, gathered(histogram.cells(), target, grid.cellCount()), histogram.nanEntries()};
}

std::vector<InputSpec> joiningInputs(const std::string& prefix, const std::string& axis) {
    return {{.name = prefix + "factor",
             .description = "How many neighbouring bins of the " + axis + " become one; it divides their number.",
             .value = prefix.empty() ? "2" : "1",
             .minimum = 1,
             .maximum = maxBins,
             .isInteger = true},
            {.name = prefix + "edges",
             .description = "Edges of the new bins of the " + axis +
                            ", in its unit, separated by blanks or commas; each is an edge already. Not empty: they "
                            "hold instead of " +
                            prefix + "factor.",
             .type = ValueType::Text}};
}

}  // namespace

std::string RebinKind::summary() const {
    return "Joins neighbouring bins of a histogram to wider ones.";
}

std::string RebinKind::notes() const {
    return R"(The sums of a new bin are those of its old bins added up, so nothing is lost: entries, sums of w, w², w x and w x².
Given edges may leave out bins at both ends; these go into underflow and overflow. A written edge means the bin edge that
is less than a millionth of a mean bin width away.)";
}

Ports RebinKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {histogramInput("histogram", "Histogram of one or two dimensions.")};
    for (const auto& [prefix, axis] : {std::pair<std::string, std::string>{"", "horizontal axis"},
                                       std::pair<std::string, std::string>{"y", "vertical axis of a plane"}}) {
        for (InputSpec& input : joiningInputs(prefix, axis)) {
            ports.inputs.push_back(std::move(input));
        }
    }
    ports.inputs.push_back(derivedTitleInput());
    ports.outputs = {
        {.name = "histogram", .description = "The same fills in wider bins.", .type = ValueType::Histogram}};
    return ports;
}

std::string RebinKind::refusal(const std::string& input, const std::string& value) const {
    return input == "edges" || input == "yedges" ? edgesRefusal(value) : std::string();
}

void RebinKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    std::visit(
        [&](const auto& histogram) {
            deliver(rebinned(*histogram, arguments), *histogram, arguments, context, results);
        },
        histogramOf1Or2(arguments, "histogram"));
}

}  // namespace velmorak
