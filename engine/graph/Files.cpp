#include "Files.h"

#include "Json.h"

#include <dlfcn.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largestDocument = std::size_t{64} << 20U;

}  // namespace

std::string readWholeFile(const fs::path& file) {
    std::error_code error;
    if (fs::is_directory(file, error))
        throw DocumentError(0, "is a folder");
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw DocumentError(0, "cannot be opened: " + std::generic_category().message(errno));
    std::string text;
    std::string piece(std::size_t{1} << 16U, '\0');
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())) || stream.gcount() > 0) {
        text.append(piece, 0, static_cast<std::size_t>(stream.gcount()));
        if (text.size() > largestDocument)
            throw DocumentError(0, "is larger than 64 MiB");
    }
    if (stream.bad())
        throw DocumentError(0, "cannot be read: " + std::generic_category().message(errno));
    return text;
}

fs::path libraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&libraryFolder), &info) == 0 || info.dli_fname == nullptr)
        return {};
    return resolved(info.dli_fname).parent_path();
}

std::vector<fs::path> pathList(const char* variable) {
    std::vector<fs::path> paths;
    const char* const value = std::getenv(variable);
    std::string rest = value == nullptr ? "" : value;
    while (!rest.empty()) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        if (colon > 0)
            paths.emplace_back(rest.substr(0, colon));
        rest.erase(0, colon + 1);
    }
    return paths;
}

fs::path resolved(const fs::path& path) {
    std::error_code error;
    fs::path result = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? path : result;
}

}  // namespace velmorak
