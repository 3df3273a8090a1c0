#include "kinds.h"

VELMORAK_COLLECTION(registry) {
    using namespace velmorak;
    registry.group("Data");
    registry.add(makeAidaTable());
    for (std::unique_ptr<Kind>& kind : makeAidaObjects()) {
        registry.add(std::move(kind));
    }
    registry.add(makeCsvTable(registry.formats()));
    registry.add(makeGeant4Histogram());
    registry.add(makeHepMcTable());
    registry.add(makeRandomTable());
    registry.add(makeRootTable());
    for (std::unique_ptr<Kind>& kind : makeRootObjects()) {
        registry.add(std::move(kind));
    }
    registry.add(makeYodaObjects());
    registry.add(makeAnyTable(registry.formats()));
    registry.addFormat(makeAidaFormat());
    registry.addFormat(makeRootFormat());
    registry.addFormat(makeYodaFormat());
    for (std::unique_ptr<FileFormat>& format : makeEventFormats()) {
        registry.addFormat(std::move(format));
    }
    for (std::unique_ptr<FileFormat>& format : makeGeant4Formats()) {
        registry.addFormat(std::move(format));
    }
    registry.addFormat(makeCsvFormat());
}
