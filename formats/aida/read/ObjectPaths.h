#pragma once

#include <map>
#include <string>
#include <string_view>

namespace velmorak::io {

/// Assigns each top-level object of a file its path. Every reader of a file passes all objects in order, so that all
/// readers agree.
class ObjectPaths {
public:
    /// @param attributes of the object's element, as expat gives them.
    /// @param document name of the file in an archive; empty if there is none. In a store, which has one file for each
    ///                 object, the folders of the file are those of the object.
    /// @param warning set if the path is in use already: this object's path then ends in ";2".
    std::string next(const char* const* attributes, std::string_view document, std::string& warning);

private:
    std::map<std::string, int> timesUsed;
};

}  // namespace velmorak::io
