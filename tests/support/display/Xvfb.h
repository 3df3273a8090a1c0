#pragma once

#include <sys/types.h>

/// A virtual X server on a free display, to which it sets DISPLAY. The destructor ends it.
class Xvfb {
public:
    /// @throws std::runtime_error if the server does not start.
    Xvfb();
    ~Xvfb();
    Xvfb(const Xvfb&) = delete;
    Xvfb& operator=(const Xvfb&) = delete;

private:
    pid_t server = -1;
};
