#include "ColumnarTables.h"

#include <velmorak/FileFormat.h>

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Formats");
    registry.add(makeArrowTable());
    registry.add(makeParquetTable());
    registry.add(makeParquetWriter());
    registry.addFormat(makeArrowFormat());
    registry.addFormat(makeParquetFormat());
}
