#include "Histogram1D.h"
#include "Statistics.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Histogram");
    registry.add(std::make_unique<velmorak::Histogram1DKind>());
    registry.add(std::make_unique<velmorak::StatisticsKind>());
}
