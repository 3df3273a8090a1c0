#pragma once

#include <string>

/// The calls by which a file is saved lead through here, by the linker's --wrap. A test ends the process before any of
/// them, or in the middle of a write, and makes folders and disks refuse.
namespace steps {

struct Plan {
    int killAt = 0;              ///< The step, counted from 1, that is not reached; 0: none.
    std::string readOnlyFolder;  ///< In which no file can be made.
    std::string fullFolder;      ///< In which a new file finds no room.
    bool refusesAttributes = false;
    int failingWrites = 0;  ///< So many writes to files that were there stop half way, with an error.
};

/// Begins to count, and to refuse.
void follow(const Plan& plan);

}  // namespace steps
