#pragma once

#include <string>

/// Intercepts the system calls that save a file, using the linker's --wrap. A test can end the process before any of
/// them, or in the middle of a write, and simulate read-only folders and full disks.
namespace steps {

struct Plan {
    int killAt = 0;              ///< The step, counted from 1, before which the process ends; 0: none.
    std::string readOnlyFolder;  ///< No file can be created there.
    std::string fullFolder;      ///< There is no room for a new file there.
    bool refusesAttributes = false;
    int failingWrites = 0;  ///< Number of writes to existing files that fail half way.
};

/// Starts counting and failing.
void follow(const Plan& plan);

}  // namespace steps
