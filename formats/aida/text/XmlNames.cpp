#include "aida/text/XmlNames.h"

#include "aida/Vocabulary.h"

namespace velmorak::io {

bool XmlNames::see(std::string_view element, const char* const* attributes) {
    if (!isKnownElement(element) && !elements.contains(element)) {
        elements.emplace(element);
    }
    // Rows repeat the same attribute.
    for (; *attributes; attributes += 2) {
        if (*attributes != last) {
            last = *attributes;
            names.insert(last);
        }
    }
    return elements.size() <= maxNames && names.size() <= maxNames;
}

}  // namespace velmorak::io
