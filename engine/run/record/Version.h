#pragma once

#include <string_view>

namespace velmorak {

/// Version of the library, as in "0.2.0".
std::string_view version();

}  // namespace velmorak
