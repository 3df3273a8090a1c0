#include "FillKinds.h"
#include "Statistics.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Histogram");
    registry.add(std::make_unique<Histogram1DKind>());
    registry.add(std::make_unique<Histogram2DKind>());
    registry.add(std::make_unique<Profile1DKind>());
    registry.add(std::make_unique<StatisticsKind>());
}
