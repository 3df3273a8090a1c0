#pragma once

#include "root/Tree.h"

namespace velmorak::root {

/// @return empty for a type that contains anything but numbers, texts and standard containers.
std::optional<ValueType> valueTypeNamed(std::string_view name);

/// @return the innermost type of nested lists; of a map the type of its values.
const ValueType& innermost(const ValueType& type);

}  // namespace velmorak::root
