#pragma once

#include <ext/stdio_filebuf.h>

#include <ostream>

/// The standard output of the program, for what the program itself has to write there. Whatever else is written to
/// standard output from then on, by a kind or by a library that it calls, goes to standard error.
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
