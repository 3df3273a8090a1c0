#pragma once

#include "root/Tree.h"

namespace velmorak::root {

/// @return nothing for a type that is made of anything but numbers, texts and the containers of the standard library.
std::optional<ValueType> valueTypeNamed(std::string_view name);

/// @return what a list of lists holds in the end; of a map its values.
const ValueType& innermost(const ValueType& type);

}  // namespace velmorak::root
