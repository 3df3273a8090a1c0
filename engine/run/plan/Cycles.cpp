#include "run/plan/Cycles.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velmorak {
namespace {

class CycleSearch {
public:
    CycleSearch(const std::vector<std::vector<std::size_t>>& next, const std::vector<bool>& isIncluded, StopPoll& poll);

    std::vector<std::vector<std::size_t>> cycles();

private:
    static constexpr std::size_t none = SIZE_MAX;
    struct Visit {
        std::size_t node;
        std::size_t edge;  ///< The next one to follow.
    };

    void enter(std::size_t node);
    /// Follows the next edge of the last visit.
    void follow();
    void leave(std::size_t node);
    /// The open nodes from this one on are a component.
    void close(std::size_t node);

    const std::vector<std::vector<std::size_t>>& next;
    const std::vector<bool>& isIncluded;
    StopPoll& poll;
    std::vector<std::size_t> number;  ///< In the order of entering.
    std::vector<std::size_t> lowest;  ///< Number that can be reached from the node.
    std::vector<bool> isOpen;         ///< Entered, and in no component yet.
    std::vector<std::size_t> open;
    std::vector<Visit> visits;
    std::size_t numbers = 0;
    std::vector<std::vector<std::size_t>> found;
};

CycleSearch::CycleSearch(const std::vector<std::vector<std::size_t>>& next, const std::vector<bool>& isIncluded,
                         StopPoll& poll)
    : next(next),
      isIncluded(isIncluded),
      poll(poll),
      number(next.size(), none),
      lowest(next.size(), none),
      isOpen(next.size()) {}

std::vector<std::vector<std::size_t>> CycleSearch::cycles() {
    for (std::size_t node = 0; node < next.size(); ++node) {
        if (isIncluded[node] && number[node] == none) {
            enter(node);
            while (!visits.empty()) {
                poll.step();
                follow();
            }
        }
    }
    return std::move(found);
}

void CycleSearch::enter(std::size_t node) {
    number[node] = lowest[node] = numbers++;
    isOpen[node] = true;
    open.push_back(node);
    visits.push_back({node, 0});
}

void CycleSearch::follow() {
    Visit& visit = visits.back();
    if (visit.edge == next[visit.node].size()) {
        leave(visit.node);
        return;
    }
    const std::size_t from = visit.node;
    const std::size_t to = next[from][visit.edge++];
    if (isIncluded[to] && number[to] == none) {
        enter(to);
    } else if (isOpen[to]) {
        lowest[from] = std::min(lowest[from], number[to]);
    }
}

void CycleSearch::leave(std::size_t node) {
    visits.pop_back();
    if (!visits.empty()) {
        std::size_t& before = lowest[visits.back().node];
        before = std::min(before, lowest[node]);
    }
    if (lowest[node] == number[node]) {
        close(node);
    }
}

void CycleSearch::close(std::size_t node) {
    const auto begin = std::find(open.rbegin(), open.rend(), node).base() - 1;
    std::vector<std::size_t> members(begin, open.end());
    open.erase(begin, open.end());
    for (const std::size_t member : members) {
        isOpen[member] = false;
    }
    const bool feedsItself = std::find(next[node].begin(), next[node].end(), node) != next[node].end();
    if (members.size() > 1 || feedsItself) {
        std::sort(members.begin(), members.end());
        found.push_back(std::move(members));
    }
}

}  // namespace

std::vector<std::vector<std::size_t>> findCycles(const std::vector<std::vector<std::size_t>>& next,
                                                 const std::vector<bool>& isIncluded, StopPoll& poll) {
    return CycleSearch(next, isIncluded, poll).cycles();
}

}  // namespace velmorak
