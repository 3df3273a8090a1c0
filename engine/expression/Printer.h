#pragma once

#include "expression/Program.h"

#include <string>
#include <vector>

namespace velmorak::expression {

/// Writes a program as an expression that compiles to the same steps.
/// @param code with Buffers::Kept, of scalars.
/// @param columns how the expression refers to each column.
/// @throws Failure if it is longer than an expression may be.
std::string printed(const Code& code, const std::vector<std::string>& columns);

/// Takes much less time than printing.
/// @return at least the number of characters that printed writes.
std::size_t printedLengthBound(const Code& code, const std::vector<std::string>& columns);

}  // namespace velmorak::expression
