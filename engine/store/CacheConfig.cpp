#include "store/CacheConfig.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace velmorak {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
constexpr std::uint64_t defaultMebibytes = 2048;
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

}  // namespace

CacheConfig cacheConfigFromEnvironment() {
    const char* setting = std::getenv("VELMORAK_CACHE_LIMIT");
    const std::string_view text(setting ? setting : "");
    std::uint64_t mebibytes = defaultMebibytes;
    std::string warning;
    if (!text.empty()) {
        std::uint64_t read = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
        if (error == std::errc() && end == text.data() + text.size() && read <= maxMebibytes) {
            mebibytes = read;
        } else {
            warning = "VELMORAK_CACHE_LIMIT=" + std::string(text) + " is not a whole number of MiB; using " +
                      std::to_string(defaultMebibytes);
        }
    }
    return {mebibytes == 0 ? std::filesystem::path() : folderFromEnvironment(), mebibytes * mebibyte, warning};
}

}  // namespace velmorak
