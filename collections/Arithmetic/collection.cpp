#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Arithmetic");
    registry.add(makeNumber());
    registry.add(makeText());
    registry.add(makeAdder());
    registry.add(makeSubtractor());
    registry.add(makeMultiplier());
    registry.add(makeDivider());
    registry.add(makeFunction());
    registry.add(makeMeasurement());
}
