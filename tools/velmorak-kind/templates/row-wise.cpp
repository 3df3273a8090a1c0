#include <velmorak/ElementaryFunctions.h>
#include <velmorak/ShortKinds.h>

namespace elementary = velmorak::elementary;

VELMORAK_COLLECTION(registry) {
    registry.group("@NAME@");
    velmorak::rowWise(registry, {"Polar", "Adds radius and angle of two columns."},
                      {{"x", "First column, in the unit of the radius."}, {"y", "Second column, in the same unit."}},
                      {{"r"}, {"phi", "rad"}}, [](double x, double y) {
                          return std::array{elementary::hypot(x, y), elementary::atan2(y, x)};
                      });
}
