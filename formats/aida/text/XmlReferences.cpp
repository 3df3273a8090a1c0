#include "aida/text/XmlReferences.h"

#include <algorithm>
#include <array>

namespace velmorak::io {

namespace {

bool isBuiltIn(std::string_view name) {
    constexpr std::array names{"amp", "lt", "gt", "quot", "apos"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

void XmlReferences::declare(std::string_view name) {
    declared.emplace(name);
}

std::optional<XmlReferences::Undefined> XmlReferences::undefinedIn(std::string_view tag) const {
    for (std::size_t begin = tag.find('&'); begin != std::string_view::npos; begin = tag.find('&', begin + 1)) {
        const std::size_t end = std::min(tag.find(';', begin), tag.size());
        std::string name(tag.substr(begin + 1, end - begin - 1));
        std::erase(name, '\0');
        if (!name.starts_with('#') && !isBuiltIn(name) && !declared.contains(name)) {
            return Undefined{name, begin};
        }
    }
    return std::nullopt;
}

}  // namespace velmorak::io
