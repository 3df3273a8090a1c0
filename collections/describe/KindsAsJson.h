#pragma once

#include <velmorak/Kind.h>

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

struct GroupOfKinds {
    std::string name;
    std::vector<std::unique_ptr<Kind>> kinds;
};

/// Writes a list of kinds with their ports, in the order in which they were registered.
/// @return false if the stream does not take it.
bool writeJson(const std::vector<GroupOfKinds>& groups, std::ostream& stream);

}  // namespace velmorak
