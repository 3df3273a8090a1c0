#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Fit");
    registry.add(makeFit());
}
