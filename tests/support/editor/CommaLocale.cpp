#include "CommaLocale.h"

#include <clocale>
#include <cstdlib>
#include <stdexcept>

namespace {

struct GermanNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

// C++ gets a custom facet, because the C library never frees the path of a locale that C++ requests by name.
CommaLocale::CommaLocale() : former(std::locale::global(std::locale(std::locale::classic(), new GermanNumbers))) {
    setenv("LOCPATH", VELMORAK_TEST_LOCALES, 1);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) {
        throw std::runtime_error("no German locale in " VELMORAK_TEST_LOCALES);
    }
}

CommaLocale::~CommaLocale() {
    std::locale::global(former);
    std::setlocale(LC_ALL, "C.UTF-8");
    unsetenv("LOCPATH");
}
