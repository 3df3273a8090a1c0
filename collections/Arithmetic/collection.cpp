#include "Arithmetic.h"
#include "FunctionKind.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Arithmetic");
    registry.add(std::make_unique<velmorak::NumberKind>());
    registry.add(std::make_unique<velmorak::TextKind>());
    registry.add(std::make_unique<velmorak::AdderKind>());
    registry.add(std::make_unique<velmorak::SubtractorKind>());
    registry.add(std::make_unique<velmorak::MultiplierKind>());
    registry.add(std::make_unique<velmorak::DividerKind>());
    registry.add(std::make_unique<velmorak::FunctionKind>());
}
