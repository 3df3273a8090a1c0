#include "graph/LibraryConfig.h"

#include "graph/Paths.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

std::string valueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value ? value : "";
}

/// Folders of a list that is separated by colons.
std::vector<fs::path> foldersIn(const char* variable) {
    std::vector<fs::path> folders;
    std::string rest = valueOf(variable);
    while (!rest.empty()) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        if (colon > 0) {
            folders.emplace_back(rest.substr(0, colon));
        }
        rest.erase(0, colon + 1);
    }
    return folders;
}

/// Empty for a path that is not absolute, as the XDG base directory specification asks.
fs::path absoluteFolderIn(const char* variable) {
    const fs::path folder(valueOf(variable));
    return folder.is_absolute() ? folder : fs::path();
}

/// The program's folder in one of the user's folders: that of the variable, or else one in the home folder. Empty if
/// there is neither.
fs::path userFolder(const char* variable, const char* inHome) {
    fs::path folder = absoluteFolderIn(variable);
    if (folder.empty()) {
        const fs::path home = absoluteFolderIn("HOME");
        folder = home.empty() ? home : home / inHome;
    }
    return folder.empty() ? folder : folder / "velmorak";
}

fs::path inStateFolder(const char* name) {
    const fs::path state = userFolder("XDG_STATE_HOME", ".local/state");
    return state.empty() ? state : state / name;
}

Catalogue::SearchPath searchPath() {
    Catalogue::SearchPath search{foldersIn("VELMORAK_COLLECTIONS"), foldersIn("VELMORAK_EXAMPLES"),
                                 inStateFolder("loading")};
    if (const fs::path own = userFolder("XDG_DATA_HOME", ".local/share"); !own.empty()) {
        search.collections.push_back(own / "collections");
    }
    const fs::path library = libraryFolder();
    search.collections.push_back(library / "collections");
    search.isolation = isolationConfigFromEnvironment(libraryFile());
    search.examples.push_back((library / VELMORAK_SHARE_FROM_LIB / "examples").lexically_normal());
    return search;
}

}  // namespace

LibraryConfig libraryConfigFromEnvironment() {
    const bool hasJournal = valueOf("VELMORAK_JOURNAL") != "0";
    return {searchPath(), runConfigFromEnvironment(), hasJournal ? inStateFolder("journal") : fs::path(),
            valueOf("VELMORAK_WRITE_ANYWHERE") == "1"};
}

}  // namespace velmorak
