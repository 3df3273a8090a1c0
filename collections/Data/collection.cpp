#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Data");
    registry.add(makeAidaTable());
    for (std::unique_ptr<Kind>& kind : makeAidaObjects()) {
        registry.add(std::move(kind));
    }
    registry.add(makeCsvTable());
    registry.add(makeGeant4Histogram());
    registry.add(makeHepMcTable());
    registry.add(makeRandomTable());
    registry.add(makeRootTable());
    registry.add(makeYodaObjects());
}
