#include "shared/KeyBins.h"

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace velmorak {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

ColumnPtr lowerEdges(const Axis& bins, const Column& values) {
    Column::Reals edges;
    edges.reserve(values.reals().size());
    for (const double value : values.reals()) {
        const std::size_t cell = std::isnan(value) ? 0 : bins.cell(value);
        edges.push_back(std::isnan(value) ? value : cell == 0 ? -infinity : bins.edge(cell - 1));
    }
    return std::make_shared<const Column>(Column{std::move(edges), {}});
}

ColumnPtr upperEdges(const Axis& bins, const Column& lower) {
    Column::Reals edges;
    for (const double low : lower.reals()) {
        const std::size_t cell = std::isfinite(low) ? bins.cell(low) : 0;
        edges.push_back(std::isnan(low) ? low : cell > bins.bins() ? infinity : bins.edge(cell));
    }
    return std::make_shared<const Column>(Column{std::move(edges), {}});
}

}  // namespace velmorak
