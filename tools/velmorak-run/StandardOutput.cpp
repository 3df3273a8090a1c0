#include "StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

namespace {

/// Moves standard output to a private descriptor and points the public one to standard error.
int takeOver() {
    std::cout.flush();
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return own;
}

}  // namespace

StandardOutput::StandardOutput() : buffer(takeOver(), std::ios::out | std::ios::binary), output(&buffer) {}

bool StandardOutput::isComplete() {
    // A standard output that was closed from the beginning is complete as long as nothing is written.
    return !buffer.is_open() ? output.good() : output.flush().good();
}
