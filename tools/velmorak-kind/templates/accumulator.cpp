#include <velmorak/ShortKinds.h>

struct Extent {
    void fill(double x) {
        lowest = std::min(lowest, x);
        highest = std::max(highest, x);
    }
    void merge(const Extent& other) {
        lowest = std::min(lowest, other.lowest);
        highest = std::max(highest, other.highest);
    }
    auto finish() const { return std::array{lowest, highest}; }
    auto fields() { return std::tie(lowest, highest); }

    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();
};

VELMORAK_COLLECTION(registry) {
    registry.group("@NAME@");
    velmorak::accumulate<Extent>(
        registry, {"Extent", "Finds the lowest and the highest value of an expression."},
        {{"x", "What to look at, in the columns of the table."}},
        {{"lowest", "Lowest value; Infinity without rows."}, {"highest", "Highest value; -Infinity without rows."}});
}
