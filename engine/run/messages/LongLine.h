#pragma once

#include <string>
#include <string_view>

namespace velmorak {

/// Leaves out the middle of each line that is longer than 4000 bytes. Both ends stay: a message begins with the place
/// and ends with the reason.
std::string withoutLongLines(std::string_view text);

}  // namespace velmorak
