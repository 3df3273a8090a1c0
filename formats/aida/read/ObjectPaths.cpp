#include "aida/read/ObjectPaths.h"

#include "aida/read/AidaColumns.h"
#include "aida/text/XmlReader.h"

#include <fmt/format.h>

namespace velmorak::io {

namespace {

/// "run1/energy.IHistogram1D" is an object of a store, "run1/all.aida" is not.
bool isStored(std::string_view document) {
    const auto dot = document.rfind('.');
    return dot != std::string_view::npos && dot + 2 < document.size() && document[dot + 1] == 'I' &&
           document[dot + 2] >= 'A' && document[dot + 2] <= 'Z';
}

std::string folderOf(const char* const* attributes, std::string_view document) {
    if (isStored(document)) {
        return document.find('/') == std::string_view::npos ? "/"
                                                            : std::string(document.substr(0, document.rfind('/')));
    }
    const char* folder = attributeOf(attributes, "path");
    return !folder ? "/" : folder;
}

}  // namespace

std::string ObjectPaths::next(const char* const* attributes, std::string_view document, std::string& warning) {
    const char* name = attributeOf(attributes, "name");
    std::string path = objectPath(folderOf(attributes, document), !name ? "unnamed" : name);
    const int times = ++timesUsed[path];
    if (times == 1) {
        return path;
    }
    std::string unique = fmt::format("{};{}", path, times);
    warning = fmt::format("there is more than one object {}; this one is called {}", path, unique);
    return unique;
}

}  // namespace velmorak::io
