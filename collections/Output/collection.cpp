#include "AidaWriter.h"
#include "Plot.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Output");
    registry.add(std::make_unique<velmorak::PlotKind>());
    registry.add(std::make_unique<velmorak::AidaWriterKind>());
}
