#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Formats");
    registry.add(makeFitsTable());
    registry.addFormat(makeFitsFormat());
    registry.add(makeHdf5Table());
    registry.addFormat(makeHdf5Format());
    registry.add(makeNumpyTable());
    registry.addFormat(makeNumpyFormat());
    registry.add(makeSqliteTable());
    registry.addFormat(makeSqliteFormat());
}
