#pragma once

#include <ext/stdio_filebuf.h>

#include <ostream>

/// Reserves standard output for the program itself. From then on, text that a kind or a library writes to standard
/// output goes to standard error.
class StandardOutput {
public:
    StandardOutput();

    std::ostream& stream() { return output; }
    /// @return false when something could not be written.
    bool isComplete();

private:
    __gnu_cxx::stdio_filebuf<char> buffer;
    std::ostream output;
};
