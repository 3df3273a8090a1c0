#include "Filter.h"
#include "Formula.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Table");
    registry.add(std::make_unique<velmorak::FormulaKind>());
    registry.add(std::make_unique<velmorak::FilterKind>());
}
