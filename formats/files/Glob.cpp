#include "files/Glob.h"

#include <velmorak/Failure.h>
#include <velmorak/Run.h>

#include <algorithm>
#include <system_error>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

/// More names are taken for a mistake in the pattern.
constexpr std::size_t maxFiles = 1'000'000;

std::vector<std::string> partsOf(std::string_view pattern) {
    std::vector<std::string> parts;
    for (const fs::path& part : fs::path(pattern).relative_path()) {
        if (!part.empty() && part != ".") {
            parts.push_back(part.string());
        }
    }
    return parts;
}

bool isRegular(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// One search for the files that match a pattern.
class GlobSearch {
public:
    GlobSearch(const fs::path& folder, std::string_view pattern, const RunContext& context)
        : folder(folder), parts(partsOf(pattern)), context(context) {}

    std::vector<std::string> names() {
        search({}, 0);
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return std::move(found);
    }

private:
    /// Matches the parts from this one on with what the folder holds.
    /// @param at name of the folder, relative to the one where the search began.
    void search(const fs::path& at, std::size_t part) {
        if (part == parts.size()) {
            add(at);
        } else if (parts[part] == "**") {
            search(at, part + 1);
            searchBelow(at, part);
        } else if (isPattern(parts[part])) {
            searchMatches(at, part);
        } else if (part + 1 == parts.size() || isFolder(folder / at / parts[part])) {
            search(at / parts[part], part + 1);
        }
    }

    void searchBelow(const fs::path& at, std::size_t part) {
        poll();
        for (const std::string& name : context.namesIn(folder / at, "*")) {
            std::error_code ignored;
            if (isFolder(folder / at / name) && !fs::is_symlink(folder / at / name, ignored)) {
                search(at / name, part);
            }
        }
    }

    void searchMatches(const fs::path& at, std::size_t part) {
        poll();
        const bool isLast = part + 1 == parts.size();
        for (const std::string& name : context.namesIn(folder / at, parts[part])) {
            if (isLast || isFolder(folder / at / name)) {
                search(at / name, part + 1);
            }
        }
    }

    void add(const fs::path& name) {
        poll();
        if (isRegular(folder / name)) {
            found.push_back(name.string());
        }
        if (found.size() > maxFiles) {
            throw Failure("file", "more than " + std::to_string(maxFiles) + " files match");
        }
    }

    void poll() const {
        if (context.isStopping()) {
            throw Stopped();
        }
    }

    const fs::path& folder;
    std::vector<std::string> parts;
    const RunContext& context;
    std::vector<std::string> found;
};

}  // namespace

bool isPattern(std::string_view name) {
    return name.find_first_of("*?[") != std::string_view::npos;
}

std::vector<std::string> glob(const fs::path& folder, std::string_view pattern, const RunContext& context) {
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

std::vector<std::string> filesInFolder(const fs::path& folder, const RunContext& context) {
    return glob(folder, "*", context);
}

}  // namespace velmorak
