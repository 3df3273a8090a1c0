#include "run/MemoryConfig.h"

#include <velmorak/Text.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

namespace velmorak {
namespace {

/// Less would not hold the chunks that a merge of sorted rows reads at the same time.
constexpr double minBytes = 0x1p24;
constexpr double maxBytes = 0x1p60;

std::optional<double> factorOf(std::string_view unit) {
    constexpr std::array<std::pair<char, double>, 4> factors{
        {{'K', 0x1p10}, {'M', 0x1p20}, {'G', 0x1p30}, {'T', 0x1p40}}};
    if (unit.empty() || unit == "B" || unit == "b") {
        return 1.0;
    }
    const auto letter = static_cast<char>(std::toupper(static_cast<unsigned char>(unit.front())));
    const std::string_view rest = unit.substr(1);
    const bool isUnit = rest.empty() || rest == "B" || rest == "b" || rest == "iB";
    const auto* const found =
        std::find_if(factors.begin(), factors.end(), [letter](const auto& entry) { return entry.first == letter; });
    return isUnit && found != factors.end() ? std::optional(found->second) : std::nullopt;
}

/// The limit of the control group, as containers and batch systems set it.
std::optional<std::size_t> memoryOfGroup() {
    std::ifstream file("/sys/fs/cgroup/memory.max");
    std::size_t bytes = 0;
    return file >> bytes ? std::optional(bytes) : std::nullopt;
}

}  // namespace

std::optional<std::size_t> sizeIn(std::string_view setting) {
    const std::string_view text = trimmed(setting);
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    const std::optional<double> factor = factorOf(trimmed(text.substr(static_cast<std::size_t>(end - text.data()))));
    const double bytes = factor ? std::floor(number * *factor) : 0.0;
    const bool isAllowed = bytes >= minBytes && bytes <= maxBytes;  // False for NaN, too.
    return isAllowed ? std::optional(static_cast<std::size_t>(bytes)) : std::nullopt;
}

std::size_t halfOfMemory() {
    const auto pages = static_cast<std::size_t>(std::max(0L, sysconf(_SC_PHYS_PAGES)));
    const auto page = static_cast<std::size_t>(std::max(0L, sysconf(_SC_PAGESIZE)));
    const std::size_t machine = pages * page;
    return std::max(std::min(machine, memoryOfGroup().value_or(machine)) / 2, static_cast<std::size_t>(minBytes));
}

MemoryConfig memoryConfigFromEnvironment() {
    const char* const setting = std::getenv("VELMORAK_MEMORY_LIMIT");
    const std::string text(trimmed(setting ? setting : ""));
    if (text.empty()) {
        return {halfOfMemory()};
    }
    if (const std::optional<std::size_t> bytes = sizeIn(text)) {
        return {*bytes};
    }
    return {halfOfMemory(), "VELMORAK_MEMORY_LIMIT=" + text +
                                " is not a size of at least 16 MB, such as 500 MB or 4 GB; using half of the machine's "
                                "memory"};
}

}  // namespace velmorak
