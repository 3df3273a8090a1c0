#include "FitKind.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Fit");
    registry.add(std::make_unique<velmorak::FitKind>());
}
