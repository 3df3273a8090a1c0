#include "isolate/IsolationConfig.h"

#include "run/MemoryConfig.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

std::string valueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value ? value : "";
}

IsolationConfig::Which whichFrom(const std::string& setting, std::string& warning) {
    if (setting == "0") {
        return IsolationConfig::Which::None;
    }
    if (setting == "1") {
        return IsolationConfig::Which::All;
    }
    if (!setting.empty()) {
        warning = "VELMORAK_ISOLATE=" + setting +
                  " is neither 0 nor 1; the kinds outside the installation run in helper processes";
    }
    return IsolationConfig::Which::Foreign;
}

fs::path wholePath(const fs::path& path) {
    std::error_code error;
    fs::path found = fs::weakly_canonical(path, error);
    return error ? path : found;
}

}  // namespace

bool IsolationConfig::isolates(const fs::path& object) const {
    return which == Which::All ||
           (which == Which::Foreign && wholePath(object.parent_path().parent_path()) != wholePath(installed));
}

IsolationConfig isolationConfigFromEnvironment(const fs::path& library) {
    IsolationConfig config;
    config.which = whichFrom(valueOf("VELMORAK_ISOLATE"), config.warning);
    config.memoryBytes = halfOfMemory();
    const std::string setting = valueOf("VELMORAK_ISOLATE_MEMORY");
    if (const std::optional<std::size_t> bytes = sizeIn(setting)) {
        config.memoryBytes = *bytes;
    } else if (!setting.empty()) {
        config.warning +=
            (config.warning.empty() ? "" : "; ") + ("VELMORAK_ISOLATE_MEMORY=" + setting) +
            " is not a size of at least 16 MB, such as 500 MB or 4 GB; using half of the machine's memory";
    }
    config.library = library;
    config.installed = library.parent_path() / "collections";
    config.program = library.parent_path() / "velmorak-kind-host";
    return config;
}

}  // namespace velmorak
