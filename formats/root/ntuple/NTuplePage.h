#pragma once

#include "root/ntuple/NTupleSchema.h"

#include <variant>

namespace velmorak::root {

/// Elements of a column: reals, or integers for everything else. Indices count from the beginning of the cluster.
using Elements = std::variant<std::vector<double>, std::vector<std::int64_t>>;

/// Elements of that type become reals.
bool isRealColumn(int type);

/// Decompresses and decodes a page and appends its elements.
/// @throws Failure if the page is damaged, its checksum is wrong, or its type cannot be read.
void appendPage(const File& file, const NTupleColumn& column, const NTuplePage& page, Elements& elements);

}  // namespace velmorak::root
