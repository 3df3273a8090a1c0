#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Histogram");
    registry.add(makeHistogram1D());
    registry.add(makeHistogram2D());
    registry.add(makeHistogram3D());
    registry.add(makeProfile1D());
    registry.add(makeProfile2D());
    registry.add(makeCategoryHistogram());
    registry.add(makeGroupedHistogram());
    registry.add(makePickHistogram());
    registry.add(makeRebin());
    registry.add(makeScale());
    registry.add(makeSmooth());
    registry.add(makeCombine());
    registry.add(makeProject());
    registry.add(makeCumulative());
    registry.add(makeCompare());
    registry.add(makeStatistics());
    registry.add(makeQuantileEdges());
}
