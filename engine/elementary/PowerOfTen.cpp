#include <velmorak/ElementaryFunctions.h>

#include <charconv>
#include <iterator>
#include <limits>

namespace velmorak::elementary {

double powerOfTen(int exponent) {
    if (exponent > std::numeric_limits<double>::max_exponent10) {
        return std::numeric_limits<double>::infinity();
    }
    if (exponent < std::numeric_limits<double>::min_exponent10 - std::numeric_limits<double>::digits10 - 1) {
        return 0.0;
    }
    char text[16] = "1e";
    char* const end = std::to_chars(text + 2, std::end(text), exponent).ptr;
    double power = 0.0;
    std::from_chars(text, end, power);
    return power;
}

}  // namespace velmorak::elementary
