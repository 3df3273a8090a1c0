#include "Binning.h"

#include <velmorak/Failure.h>

#include <cmath>
#include <utility>

namespace velmorak {

namespace {

double edgeFrom(const std::string& word) {
    double edge = 0.0;
    if (!readNumber(word, edge) || !std::isfinite(edge))
        throw Failure("edges", "\"" + word + "\" is no number that could be the edge of a bin");
    return edge;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" ,\t\n") == std::string::npos;
}

}  // namespace

Axis axisFromEdges(const std::string& text) {
    std::vector<double> edges;
    std::size_t begin = 0;
    while ((begin = text.find_first_not_of(" ,\t\n", begin)) != std::string::npos) {
        const std::size_t end = std::min(text.find_first_of(" ,\t\n", begin), text.size());
        edges.push_back(edgeFrom(text.substr(begin, end - begin)));
        if (edges.size() > 1 && edges[edges.size() - 2] >= edges.back())
            throw Failure("edges", "the edges must ascend, and " + textOf(edges.back()) + " follows " +
                                       textOf(edges[edges.size() - 2]));
        begin = end;
    }
    if (edges.size() < 2)
        throw Failure("edges", "a bin needs two edges");
    if (static_cast<double>(edges.size() - 1) > maxBins)
        throw Failure("edges", "there are more than " + textOf(maxBins) + " bins");
    return Axis(std::move(edges));
}

Axis axisFrom(const Arguments& arguments) {
    if (const std::string& edges = arguments.text("edges"); !isBlank(edges))
        return axisFromEdges(edges);
    const double low = arguments.number("low");
    const double high = arguments.number("high");
    if (!std::isfinite(low) || !std::isfinite(high) || low >= high)
        throw Failure("high", "the axis from " + textOf(low) + " to " + textOf(high) +
                                  " has no bins: low must be below high, and both finite");
    return {static_cast<std::size_t>(arguments.integer("bins")), low, high};
}

std::string edgesRefusal(const std::string& text) {
    if (isBlank(text))
        return {};
    try {
        axisFromEdges(text);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
