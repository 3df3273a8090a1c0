#include "AidaTable.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Data");
    registry.add(std::make_unique<velmorak::AidaTableKind>());
}
