#include "parquet/ListWalk.h"

#include <velmorak/Failure.h>

#include <utility>

namespace velmorak::parquet {

ListWalk::ListWalk(const columnar::NestedColumn& column, const Leaf& leaf)
    : isCounting(column.part == columnar::NestedColumn::Part::Counts),
      level(static_cast<unsigned>(column.list) + 1),
      listDefinition(leaf.elementDefinitions[column.list - 1]),
      elementDefinition(leaf.elementDefinitions[column.list]) {}

/// A list that is missing, or in a structure that is, has no elements.
void ListWalk::step(unsigned repetition, unsigned definition) {
    if (repetition == 0) {
        offsets.push_back(values.size());
        lists = 0;
    }
    if (repetition < level && definition >= listDefinition) {
        ++lists;
        if (isCounting) {
            values.push_back(0);
        }
    }
    if (repetition > level || definition < elementDefinition) {
        return;
    }
    if (lists == 0) {
        throw Failure("the levels of a page contradict each other");
    }
    if (isCounting) {
        ++values.back();
    } else {
        values.push_back(lists - 1);
    }
}

Column ListWalk::take() {
    offsets.push_back(values.size());
    return {.values = std::move(values), .offsets = std::move(offsets)};
}

}  // namespace velmorak::parquet
