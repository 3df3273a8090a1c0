#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Table");
    registry.add(makeFormula());
    registry.add(makeFilter());
    registry.add(makeSelect());
    registry.add(makeRange());
    registry.add(makeConcat());
    registry.add(makeCutFlow());
    registry.add(makeExplode());
    registry.add(makeGroupBy());
    registry.add(makeJoin());
    registry.add(makeSort());
    registry.add(makeUnique());
    registry.add(makeSample());
    registry.add(makeTail());
    registry.add(makeRename());
    registry.add(makeWindow());
    registry.add(makeResample());
    registry.add(makePowerSpectrum());
}
