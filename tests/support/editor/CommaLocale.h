#pragma once

#include <locale>

/// During its lifetime, the C library and the C++ library read and write numbers as in German: 1,5.
class CommaLocale {
public:
    /// @throws std::runtime_error if the tests' locale does not exist.
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::locale former;
};
