#pragma once

#include "root/objects/Object.h"
#include "root/write/WrittenClasses.h"

#include <set>
#include <string>

namespace velmorak::root {

/// @return the list with the descriptions of classes that a file contains, by which any program can read its objects.
Object classList(const WrittenClasses& classes, const std::set<std::string>& names);

}  // namespace velmorak::root
