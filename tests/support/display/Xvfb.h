#pragma once

#include <sys/types.h>

/// An X server without a screen, on a free display, which DISPLAY then names. Ends with this object.
class Xvfb {
public:
    /// @throws std::runtime_error when the server does not start.
    Xvfb();
    ~Xvfb();
    Xvfb(const Xvfb&) = delete;
    Xvfb& operator=(const Xvfb&) = delete;

private:
    pid_t server = -1;
};
