#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace velmorak::io {

/// The entities that a document declares. The parser silently drops a reference to any other one from the value of an
/// attribute; this class finds it.
class XmlReferences {
public:
    struct Undefined {
        std::string name;
        std::size_t position = 0;  ///< Of the "&" in the tag.
    };

    void declare(std::string_view name);
    std::size_t count() const { return declared.size(); }
    /// @param tag as in the file; in UTF-16 each pair has a zero byte.
    /// @return the first undefined reference in it.
    std::optional<Undefined> undefinedIn(std::string_view tag) const;

private:
    std::set<std::string, std::less<>> declared;
};

}  // namespace velmorak::io
