#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

/// The output and exit status of a program that has ended.
struct Ended {
    int status = -1;  ///< Exit status; -1 when a signal ended it.
    std::string output;
    std::string errors;
    long peakKilobytes = 0;  ///< Most memory that it held at a time.
};

/// Runs a program and waits for its end.
/// @param onError called for everything that has come on standard error so far, whenever there is more.
/// @throws std::runtime_error when it cannot be started.
Ended runProgram(const std::vector<std::string>& command,
                 const std::function<void(pid_t, const std::string&)>& onError = nullptr);
