#pragma once

#include <velmorak/Text.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// @return the first names in quotes, and how many more there are: "a", "b" and 3 more.
inline std::string listOfNames(const std::vector<std::string>& names, std::size_t most = 20) {
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i) {
        list += (i == 0 ? "" : ", ") + velmorak::quoted(names[i]);
    }
    return names.size() > most ? list + " and " + std::to_string(names.size() - most) + " more" : list;
}

}  // namespace velmorak
