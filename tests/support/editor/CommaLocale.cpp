#include "CommaLocale.h"

#include <clocale>
#include <cstdlib>

CommaLocale::CommaLocale() {
    setenv("LOCPATH", VELMORAK_TEST_LOCALES, 1);
    former = std::locale::global(std::locale("de_DE.UTF-8"));  // sets that of the C library, too
}

CommaLocale::~CommaLocale() {
    std::locale::global(former);
    std::setlocale(LC_ALL, "C.UTF-8");
    unsetenv("LOCPATH");
}
