#include "kinds.h"

#include "Binning.h"
#include "Objects.h"
#include "ScatterAdd.h"
#include "shared/AppendInputs.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmorak {

namespace {

/// An axis with fewer bins, and the new cell of each old one.
struct Joined {
    Axis axis;
    std::vector<std::size_t> target;
};

/// The old edge closest to an entered number: the last decimal places of an edge may be missing.
double matchingEdge(const Axis& axis, double written, const std::string& input) {
    const auto& edges = axis.edges();
    const auto above = std::lower_bound(edges.begin(), edges.end(), written);
    const double tolerance = 1e-6 * (axis.high() - axis.low()) / static_cast<double>(axis.bins());
    for (const auto place : {above, above == edges.begin() ? above : above - 1}) {
        if (place != edges.end() && std::abs(*place - written) <= tolerance) {
            return *place;
        }
    }
    throw Failure(input, "no bin of the histogram has an edge at " + textOf(written));
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

constexpr std::array<const char*, 3> prefixes{"", "y", "z"};

template <std::size_t axes>
Histogram<axes> rebinned(const Histogram<axes>& histogram, const Arguments& arguments) {
    std::vector<Joined> all;
    for (std::size_t direction = 0; direction < axes; ++direction) {
        all.push_back(joined(histogram.grid().axis(direction), arguments, prefixes[direction]));
    }
    const Grid<axes> grid = gridOf<axes>([&](std::size_t direction) { return all[direction].axis; });
    std::vector<std::size_t> target;
    target.reserve(histogram.cells().size());
    for (std::size_t cell = 0; cell < histogram.cells().size(); ++cell) {
        auto cells = histogram.grid().alongAxes(cell);
        for (std::size_t direction = 0; direction < axes; ++direction) {
            cells[direction] = all[direction].target[cells[direction]];
        }
        target.push_back(grid.cell(cells));
    }
    return {grid, scatterAdd(histogram.cells(), target, grid.cellCount()), histogram.nanEntries()};
}

std::vector<InputSpec> joiningInputs(const std::string& prefix, const std::string& axis) {
    return {{.name = prefix + "factor",
             .description =
                 "Number of neighbouring bins of the " + axis + " to join into one; a divisor of the number of bins.",
             .value = prefix.empty() ? "2" : "1",
             .minimum = 1,
             .maximum = maxBins,
             .isInteger = true},
            {.name = prefix + "edges",
             .description =
                 "Edges of the new bins of the " + axis +
                 ", in its unit, separated by blanks or commas; each must be an edge already. If not empty, they "
                 "replace " +
                 prefix + "factor.",
             .type = ValueType::Text}};
}

/// Joins neighbouring bins.
class RebinKind : public Function {
public:
    std::string name() const override { return "Rebin"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string RebinKind::summary() const {
    return "Joins neighbouring bins of a histogram into wider ones.";
}

std::string RebinKind::notes() const {
    return R"(The sums of a new bin are the sums over its old bins, so that nothing is lost: entries and all sums of weights and moments.
Edges may exclude bins at both ends; these go into underflow and overflow. An entered edge matches a bin edge within a
millionth of the mean bin width.)";
}

Ports RebinKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {histogramInput("histogram", "Histogram of one to three dimensions.")};
    for (const auto& [prefix, axis] :
         {std::pair<std::string, std::string>{"", "horizontal axis"},
          std::pair<std::string, std::string>{"y", "vertical axis of a histogram of more dimensions"},
          std::pair<std::string, std::string>{"z", "third axis of a three-dimensional histogram"}}) {
        appendInputs(ports.inputs, joiningInputs(prefix, axis));
    }
    ports.inputs.push_back(derivedTitleInput());
    ports.outputs = {
        {.name = "histogram", .description = "The same fills in wider bins.", .type = ValueType::Histogram}};
    return ports;
}

std::string RebinKind::refusal(const std::string& input, const std::string& value) const {
    return input == "edges" || input == "yedges" || input == "zedges" ? edgesRefusal(value) : std::string();
}

void RebinKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    std::visit(
        [&](const auto& histogram) {
            deliver(rebinned(*histogram, arguments), *histogram, arguments, context, results);
        },
        anyHistogram(arguments, "histogram"));
}

std::unique_ptr<Kind> makeRebin() {
    return std::make_unique<RebinKind>();
}

}  // namespace velmorak
