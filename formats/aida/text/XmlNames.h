#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

namespace velmorak::io {

/// Counts the distinct names in a document, all of which the parser keeps in memory.
class XmlNames {
public:
    static constexpr std::size_t maxNames = 10'000;

    /// @param attributes names and values, ended by null; the parser uses the same pointer for equal names.
    /// @return false if there are more than maxNames.
    bool see(std::string_view element, const char* const* attributes);

private:
    std::set<std::string, std::less<>> elements;  ///< Unknown to the format.
    std::unordered_set<const char*> names;        ///< Of attributes.
    const char* last = nullptr;
};

}  // namespace velmorak::io
