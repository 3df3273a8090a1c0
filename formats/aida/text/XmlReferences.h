#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace velmorak::io {

/// The entities that a document has declared. The parser leaves a reference to any other one out of the value of an
/// attribute, without a word; here it is found.
class XmlReferences {
public:
    struct Undefined {
        std::string name;
        std::size_t position = 0;  ///< Of the "&" in the tag.
    };

    void declare(std::string_view name);
    std::size_t count() const { return declared.size(); }
    /// @param tag as it stands in the file; in UTF-16 it has a byte 0 in each pair.
    /// @return the first reference in it that means nothing.
    std::optional<Undefined> undefinedIn(std::string_view tag) const;

private:
    std::set<std::string, std::less<>> declared;
};

}  // namespace velmorak::io
