#pragma once

#include <string>
#include <vector>

namespace velmorak::bench {

/// Time and memory that a program used.
struct ProcessRun {
    double wallMs = 0.0;
    double processorMs = 0.0;
    double peakMegabytes = 0.0;
    std::string output;  ///< What it wrote to standard output.
};

/// Runs a program, which inherits the environment. Ends this one when it fails.
/// @param command the program's path and its arguments.
ProcessRun run(const std::vector<std::string>& command);

}  // namespace velmorak::bench
