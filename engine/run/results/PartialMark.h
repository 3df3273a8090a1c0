#pragma once

#include <velmorak/Value.h>

#include <string>

namespace velmorak {

/// Annotates an object with "partial" and a sentence, so that whoever finds it in a file, or draws it, sees that rows
/// are missing. Other values stay as they are.
Value withPartialMark(const Value& value, const std::string& sentence);

}  // namespace velmorak
