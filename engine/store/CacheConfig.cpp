#include "store/CacheConfig.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace velmorak {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
constexpr std::uint64_t defaultMebibytes = 2048;
constexpr std::uint64_t defaultMilliseconds = 10;
constexpr std::uint64_t maxMilliseconds = 1'000'000'000;
constexpr std::uint64_t maxMebibytes = std::uint64_t{1} << 30;

std::filesystem::path absolutePathIn(const char* variable) {
    const char* setting = std::getenv(variable);
    const std::filesystem::path path(setting ? setting : "");
    return path.is_absolute() ? path : std::filesystem::path();
}

std::filesystem::path folderFromEnvironment() {
    if (const auto cache = absolutePathIn("XDG_CACHE_HOME"); !cache.empty()) {
        return cache / "velmorak";
    }
    const auto home = absolutePathIn("HOME");
    return home.empty() ? home : home / ".cache" / "velmorak";
}

/// @return the setting, or a default without one; adds a warning if it cannot be used.
std::uint64_t wholeNumberOf(const char* variable, const char* unit, std::uint64_t otherwise, std::uint64_t limit,
                            std::string& warning) {
    const char* const setting = std::getenv(variable);
    const std::string_view text(setting ? setting : "");
    if (text.empty()) {
        return otherwise;
    }
    std::uint64_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error == std::errc() && end == text.data() + text.size() && read <= limit) {
        return read;
    }
    warning += (warning.empty() ? "" : "; ") + std::string(variable) + "=" + std::string(text) +
               " is not a whole number of " + unit + "; using " + std::to_string(otherwise);
    return otherwise;
}

}  // namespace

CacheConfig cacheConfigFromEnvironment() {
    std::string warning;
    const std::uint64_t mebibytes =
        wholeNumberOf("VELMORAK_CACHE_LIMIT", "MiB", defaultMebibytes, maxMebibytes, warning);
    const std::uint64_t milliseconds =
        wholeNumberOf("VELMORAK_CACHE_FILES_FROM", "ms", defaultMilliseconds, maxMilliseconds, warning);
    return {.folder = mebibytes == 0 ? std::filesystem::path() : folderFromEnvironment(),
            .limitBytes = mebibytes * mebibyte,
            .minReadingTime = std::chrono::milliseconds(milliseconds),
            .warning = warning};
}

}  // namespace velmorak
