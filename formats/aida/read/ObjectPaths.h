#pragma once

#include <map>
#include <string>
#include <string_view>

namespace velmorak::io {

/// Gives each top-level object of a file its path. Every reader of a file asks for all objects in their order, so that
/// they agree.
class ObjectPaths {
public:
    /// @param attributes of the object's element, as expat gives them.
    /// @param document name of the file in an archive; in a store, with its objects in files of their own, its folders
    ///                 are those of the object. Empty where there is no archive.
    /// @param warning set where the path is taken: this object's path then ends in ";2".
    std::string next(const char* const* attributes, std::string_view document, std::string& warning);

private:
    std::map<std::string, int> timesUsed;
};

}  // namespace velmorak::io
