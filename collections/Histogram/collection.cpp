#include "FillKinds.h"
#include "HistogramKinds.h"
#include "Statistics.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Histogram");
    registry.add(std::make_unique<Histogram1DKind>());
    registry.add(std::make_unique<Histogram2DKind>());
    registry.add(std::make_unique<Profile1DKind>());
    registry.add(std::make_unique<RebinKind>());
    registry.add(std::make_unique<ScaleKind>());
    registry.add(std::make_unique<CombineKind>());
    registry.add(std::make_unique<ProjectKind>());
    registry.add(std::make_unique<CumulativeKind>());
    registry.add(std::make_unique<CompareKind>());
    registry.add(std::make_unique<StatisticsKind>());
}
