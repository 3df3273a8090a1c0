#include "ColumnarTables.h"
#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Formats");
    registry.add(makeArrowTable());
    registry.addFormat(makeArrowFormat());
    registry.add(makeHdf5Table());
    registry.addFormat(makeHdf5Format());
    registry.add(makeNumpyTable());
    registry.addFormat(makeNumpyFormat());
    registry.add(makeParquetTable());
    registry.add(makeParquetWriter());
    registry.addFormat(makeParquetFormat());
    registry.add(makeSqliteTable());
    registry.addFormat(makeSqliteFormat());
}
