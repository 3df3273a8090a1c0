#include "run/KindConfig.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace velmorak {
namespace {

/// Of cells and seconds; each whole number up to it is a double.
constexpr double maxNumber = 0x1p53;
constexpr auto maxCount = static_cast<std::uint64_t>(maxNumber);

/// The values that are allowed, and how a warning describes them.
template <typename Number>
struct Range {
    Number least;
    Number most;
    const char* description;
};

/// @return the setting; nothing without one, or with a warning if it cannot be used.
template <typename Number>
std::optional<Number> numberIn(const char* variable, const Range<Number>& range, std::string& warning) {
    const char* const setting = std::getenv(variable);
    const std::string_view text(setting ? setting : "");
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && number >= range.least && number <= range.most) {  // False for NaN, too.
        return number;
    }
    if (!text.empty()) {
        warning += (warning.empty() ? "" : "; ") + std::string(variable) + "=" + std::string(text) + " is not " +
                   range.description;
    }
    return std::nullopt;
}

}  // namespace

KindConfig kindConfigFromEnvironment() {
    KindConfig config;
    const Range<double> cells{1.0, maxNumber, "a number of cells; using 16777216"};
    const Range<std::uint64_t> combinations{1, maxCount, "a number of combinations, from 1 on; using 10000000"};
    const Range<double> seconds{-maxNumber, maxNumber, "a number of seconds since 1970; using the time of writing"};
    config.maxCells = numberIn("VELMORAK_MOST_CELLS", cells, config.warning).value_or(config.maxCells);
    config.maxCombinations =
        numberIn("VELMORAK_COMBINATIONS", combinations, config.warning).value_or(config.maxCombinations);
    config.fixedDate = numberIn("SOURCE_DATE_EPOCH", seconds, config.warning);
    return config;
}

}  // namespace velmorak
