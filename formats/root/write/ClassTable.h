#pragma once

#include <string_view>

namespace velmorak::root {

/// The classes that we write, in the versions of ROOT 6.22, as lines of text: "class", its name, version and bases;
/// then its members, with the member that counts a list in brackets, "->" for an object that is never missing, and the
/// value of a member that is not set unless that is 0.
std::string_view classTable();

}  // namespace velmorak::root
