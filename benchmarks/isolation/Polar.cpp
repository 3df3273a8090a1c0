#include <velmorak/ElementaryFunctions.h>
#include <velmorak/ShortKinds.h>

#include <array>

/// Row-wise work and a sum over doubles, as a user's own collection has them.
namespace {

struct Sum {
    void fill(double x) { sum += x; }
    void merge(const Sum& other) { sum += other.sum; }
    double finish() const { return sum; }
    auto fields() { return std::tie(sum); }

    double sum = 0.0;
};

}  // namespace

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Own");
    rowWise(registry, {"Polar", "Adds radius and angle of two columns."},
            {{"x", "First column."}, {"y", "Second column."}}, {{"r"}, {"phi", "rad"}}, [](double x, double y) {
                return std::array{elementary::hypot(x, y), elementary::atan2(y, x)};
            });
    accumulate<Sum>(registry, {"OwnSum", "Adds a column."}, {{"x", "Column."}}, {{"sum", "The sum."}});
}
