#include "Concat.h"
#include "CutFlow.h"
#include "Explode.h"
#include "Filter.h"
#include "Formula.h"
#include "Range.h"
#include "Select.h"

VELMORAK_COLLECTION(registry) {
    registry.group("Table");
    registry.add(std::make_unique<velmorak::FormulaKind>());
    registry.add(std::make_unique<velmorak::FilterKind>());
    registry.add(std::make_unique<velmorak::SelectKind>());
    registry.add(std::make_unique<velmorak::RangeKind>());
    registry.add(std::make_unique<velmorak::ConcatKind>());
    registry.add(std::make_unique<velmorak::CutFlowKind>());
    registry.add(std::make_unique<velmorak::ExplodeKind>());
}
