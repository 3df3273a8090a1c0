#include "run/plan/Unconnected.h"

#include "run/messages/Visible.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

using Edges = std::vector<std::vector<std::size_t>>;

/// Marks everything that the edges lead to from marked nodes.
void spread(std::vector<bool>& isMarked, const Edges& edges) {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < isMarked.size(); ++i) {
        if (isMarked[i]) {
            open.push_back(i);
        }
    }
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        for (const std::size_t next : edges[at]) {
            if (!isMarked[next]) {
                isMarked[next] = true;
                open.push_back(next);
            }
        }
    }
}

}  // namespace

std::vector<std::size_t> unconnectedNodes(const Pipeline& pipeline) {
    const std::size_t count = pipeline.nodes.size();
    Edges downstream(count);
    Edges upstream(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (const PipelineInput& input : pipeline.nodes[i].inputs) {
            if (input.wire && input.wire->node < count) {
                downstream[input.wire->node].push_back(i);
                upstream[i].push_back(input.wire->node);
            }
        }
    }
    std::vector<bool> isConnected(count, false);
    if (count > 0) {
        isConnected[0] = true;
    }
    spread(isConnected, downstream);
    spread(isConnected, upstream);
    std::vector<std::size_t> others;
    for (std::size_t i = 0; i < count; ++i) {
        if (!isConnected[i]) {
            others.push_back(i);
        }
    }
    return others;
}

std::string unconnectedText(const Pipeline& pipeline) {
    constexpr std::size_t maxShown = 20;
    const std::vector<std::size_t> others = unconnectedNodes(pipeline);
    if (others.empty()) {
        return {};
    }
    std::string names;
    for (std::size_t i = 0; i < std::min(others.size(), maxShown); ++i) {
        names += (i == 0 ? "\"" : ", \"") + shortened(pipeline.nodes[others[i]].name) + "\"";
    }
    if (others.size() > maxShown) {
        names += fmt::format(" and {} more", others.size() - maxShown);
    }
    return "Not run, because nothing leads to " + std::string(others.size() == 1 ? "it" : "them") + " from \"" +
           shortened(pipeline.nodes.front().name) + "\": " + names;
}

}  // namespace velmorak
