#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

namespace velmorak::io {

/// Counts the different names in a document: the parser keeps each of them to the end.
class XmlNames {
public:
    static constexpr std::size_t maxNames = 10'000;

    /// @param attributes names and values, ended by null; the parser gives one pointer to each name.
    /// @return false where there are more than maxNames.
    bool see(std::string_view element, const char* const* attributes);

private:
    std::set<std::string, std::less<>> elements;  ///< That the format does not have.
    std::unordered_set<const char*> names;        ///< Of attributes.
    const char* last = nullptr;
};

}  // namespace velmorak::io
