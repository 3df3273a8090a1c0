#include "AidaObjectKind.h"
#include "AidaTable.h"
#include "CsvTable.h"
#include "RandomTable.h"
#include "RootTable.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Data");
    registry.add(std::make_unique<velmorak::AidaTableKind>());
    for (velmorak::AidaObjectKind::About& about : velmorak::aidaObjectKinds()) {
        registry.add(std::make_unique<velmorak::AidaObjectKind>(std::move(about)));
    }
    registry.add(std::make_unique<velmorak::CsvTableKind>());
    registry.add(std::make_unique<velmorak::RandomTableKind>());
    registry.add(std::make_unique<velmorak::RootTableKind>());
}
