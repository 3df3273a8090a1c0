#include "files/Glob.h"

#include <velmorak/Failure.h>
#include <velmorak/Run.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

/// More names are taken for a mistake in the pattern.
constexpr std::size_t maxFiles = 1'000'000;

constexpr const char* anyFolders = "**";

/// Folders called ** in a row match as one, and one at the end matches files, too.
std::vector<std::string> partsOf(std::string_view pattern) {
    std::vector<std::string> parts;
    for (const fs::path& part : fs::path(pattern).relative_path()) {
        const bool isRepeated = part == anyFolders && !parts.empty() && parts.back() == anyFolders;
        if (!part.empty() && part != "." && !isRepeated) {
            parts.push_back(part.string());
        }
    }
    if (!parts.empty() && parts.back() == anyFolders) {
        parts.emplace_back("*");
    }
    return parts;
}

/// One search for the files that match a pattern.
class GlobSearch {
public:
    /// @param folder where the search begins.
    GlobSearch(fs::path folder, std::string_view pattern, const RunContext& context);

    std::vector<std::string> names();

private:
    /// Matches the parts from this one on with what the folder holds.
    /// @param at name of the folder, relative to the one where the search began.
    void search(const fs::path& at, std::size_t part);

    void searchBelow(const fs::path& at, std::size_t part);

    void searchMatches(const fs::path& at, std::size_t part);

    void add(const fs::path& name);

    std::vector<std::string> namesIn(const fs::path& at, const std::string& pattern) const;

    /// @return a name that the context can resolve.
    std::string nameOf(const fs::path& at) const;

    void poll() const;

    fs::path folder;
    fs::path place;  ///< Of the folder.
    std::vector<std::string> parts;
    const RunContext& context;
    std::vector<std::string> found;
};

GlobSearch::GlobSearch(fs::path folder, std::string_view pattern, const RunContext& context)
    : folder(std::move(folder)), place(context.locate(nameOf({}))), parts(partsOf(pattern)), context(context) {}

std::vector<std::string> GlobSearch::names() {
    search({}, 0);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return std::move(found);
}

void GlobSearch::search(const fs::path& at, std::size_t part) {
    if (part == parts.size()) {
        add(at);
    } else if (parts[part] == anyFolders) {
        search(at, part + 1);
        searchBelow(at, part);
    } else if (isPattern(parts[part]) || part + 1 == parts.size()) {
        searchMatches(at, part);
    } else {
        search(at / parts[part], part + 1);  // Even if there is no such folder yet, so that it is recorded.
    }
}

void GlobSearch::searchBelow(const fs::path& at, std::size_t part) {
    for (const std::string& name : namesIn(at, "*")) {
        std::error_code ignored;
        const fs::path below = place / at / name;
        if (isFolder(below) && !fs::is_symlink(below, ignored)) {
            search(at / name, part);
        }
    }
}

void GlobSearch::searchMatches(const fs::path& at, std::size_t part) {
    const bool isLast = part + 1 == parts.size();
    for (const std::string& name : namesIn(at, parts[part])) {
        if (isLast || isFolder(place / at / name)) {
            search(at / name, part + 1);
        }
    }
}

void GlobSearch::add(const fs::path& name) {
    poll();
    if (!isFolder(place / name)) {
        found.push_back(name.string());
    }
    if (found.size() > maxFiles) {
        throw Failure("file", "more than " + std::to_string(maxFiles) + " files match");
    }
}

std::vector<std::string> GlobSearch::namesIn(const fs::path& at, const std::string& pattern) const {
    poll();
    return context.namesIn(nameOf(at), pattern);
}

std::string GlobSearch::nameOf(const fs::path& at) const {
    const fs::path name = folder / at;
    return name.empty() ? "." : name.string();
}

void GlobSearch::poll() const {
    if (context.isStopping()) {
        throw Stopped();
    }
}

}  // namespace

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isPattern(std::string_view name) {
    return name.find_first_of("*?[") != std::string_view::npos;
}

std::vector<std::string> glob(const std::string& folder, std::string_view pattern, const RunContext& context) {
    const fs::path root = fs::path(pattern).root_path();
    if (root.empty()) {
        return GlobSearch(folder, pattern, context).names();
    }
    std::vector<std::string> names = GlobSearch(root, pattern, context).names();
    for (std::string& name : names) {
        name = (root / name).string();
    }
    return names;
}

}  // namespace velmorak
