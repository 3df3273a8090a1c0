#include <velmorak/Failure.h>
#include <velmorak/FolderNames.h>
#include <velmorak/Text.h>

#include <fnmatch.h>
#include <algorithm>
#include <system_error>

namespace velmorak {

namespace fs = std::filesystem;

std::vector<std::string> namesInFolder(const fs::path& folder, const std::string& pattern) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (fnmatch(pattern.c_str(), name.c_str(), FNM_PERIOD) == 0) {
            names.push_back(std::move(name));
        }
    }
    if (error && error != std::errc::not_a_directory && error != std::errc::no_such_file_or_directory) {
        throw Failure("cannot read the folder " + velmorak::quoted(folder.string()) + ": " + error.message());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace velmorak
