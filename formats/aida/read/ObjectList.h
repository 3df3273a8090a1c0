#pragma once

#include "aida/text/XmlReader.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// Shared by the readers of tables and of other objects: a pass over a whole file, and the list of its objects for
/// messages.
namespace velmorak::io {

/// Reads the file to its end.
/// @param found objects that the reader's handler has found so far.
/// @return a description of the damage that ended the file; empty if there is none.
/// @throws Failure if the file is damaged before its first object.
template <typename Object>
std::string readToEnd(XmlReader& reader, const std::vector<Object>& found) {
    try {
        while (reader.advance()) {
        }
    } catch (const Failure& failure) {
        if (found.empty()) {
            throw;
        }
        return failure.what();
    }
    return {};
}

/// @return "/energy (histogram1d), /events (tuple) and 3 more"; "nothing" if there are no objects.
template <typename Object>
std::string listOf(const std::vector<Object>& objects) {
    constexpr std::size_t maxListed = 40;
    std::string list;
    for (std::size_t i = 0; i < std::min(objects.size(), maxListed); ++i) {
        list += (i == 0 ? "" : ", ") + objects[i].path + " (" + objects[i].element + ")";
    }
    if (objects.size() > maxListed) {
        list += " and " + std::to_string(objects.size() - maxListed) + " more";
    }
    return objects.empty() ? "nothing" : list;
}

}  // namespace velmorak::io
