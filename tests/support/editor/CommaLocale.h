#pragma once

#include <locale>

/// While it lives, the C library and the C++ library write and read numbers as in German: 1,5.
class CommaLocale {
public:
    /// @throws std::runtime_error when the locale made for the tests is not there.
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::locale former;
};
