#include "Arithmetic.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Arithmetic");
    registry.add(std::make_unique<velmorak::NumberKind>());
    registry.add(std::make_unique<velmorak::AdderKind>());
    registry.add(std::make_unique<velmorak::MultiplierKind>());
}
