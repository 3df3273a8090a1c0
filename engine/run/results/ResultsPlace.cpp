#include "run/results/ResultsPlace.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// @return whether the file belongs to a program that no longer runs.
bool isLeftover(const std::string& name) {
    if (!name.starts_with(temporaryMark)) {
        return false;
    }
    pid_t program = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data() + temporaryMark.size(), end, program);
    const bool isOurs = error == std::errc() && rest != end && *rest == '-' && program > 0;
    return isOurs && kill(program, 0) != 0 && errno == ESRCH;
}

}  // namespace

bool isBelow(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

std::string whyNoResultsFolder(const Pipeline& pipeline) {
    std::error_code error;
    if (pipeline.isResultsFolderChosen || !fs::is_symlink(pipeline.resultsFolder, error)) {
        return {};
    }
    return "the results folder " + pipeline.resultsFolder.string() +
           " is a link; name the folder with --results to use it";
}

void removeLeftovers(const Pipeline& pipeline) {
    if (pipeline.resultsFolder.empty() || !whyNoResultsFolder(pipeline).empty()) {
        return;
    }
    std::error_code error;
    for (fs::recursive_directory_iterator at(pipeline.resultsFolder, error); !error && at != fs::end(at);
         at.increment(error)) {
        std::error_code ignored;
        if (isLeftover(at->path().filename().string()) && fs::is_regular_file(at->symlink_status(ignored))) {
            fs::remove(at->path(), ignored);
        }
    }
}

}  // namespace velmorak
