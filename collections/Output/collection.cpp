#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Output");
    registry.add(makePlot());
    registry.add(makeAidaWriter());
    registry.add(makeCsvWriter());
    registry.add(makeRootWriter());
    registry.add(makePrint());
    registry.add(makeReport());
}
