#include "aida/text/Decimal.h"

#include <charconv>

namespace velmorak::io {

/// The standard library's way. Its algorithm reads no further behind a number than ours, whatever end it is given.
const char* scanDecimal(const char* text, double& value) {
    constexpr std::ptrdiff_t maxLength = 64;
    const auto [end, error] = std::from_chars(text, text + maxLength, value);
    return error == std::errc() ? end : nullptr;
}

}  // namespace velmorak::io
