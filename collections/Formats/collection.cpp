#include "ColumnarTables.h"
#include "kinds.h"

#include <velmorak/FileFormat.h>

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Formats");
    registry.add(makeArrowTable());
    registry.add(makeFitsTable());
    registry.add(makeHdf5Table());
    registry.add(makeNumpyTable());
    registry.add(makeNumpyWriter());
    registry.add(makeParquetTable());
    registry.add(makeParquetWriter());
    registry.add(makeSqliteTable());
    registry.addFormat(makeArrowFormat());
    registry.addFormat(makeFitsFormat());
    registry.addFormat(makeHdf5Format());
    registry.addFormat(makeNumpyFormat());
    registry.addFormat(makeParquetFormat());
    registry.addFormat(makeSqliteFormat());
}
