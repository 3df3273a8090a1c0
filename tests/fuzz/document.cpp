#include "Target.h"

#include "graph/document/Document.h"
#include "graph/document/Json.h"

// A document that can be read is written as a text that reads back as the same document.

namespace velmorak {

int readDocument(const std::string& text) {
    std::string written;
    try {
        written = formatDocument(parseDocument(text));
    } catch (const DocumentError& error) {
        return 0;
    }
    fuzz::require(formatDocument(parseDocument(written)) == written, "a document that is written reads back");
    return 0;
}

}  // namespace velmorak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return velmorak::readDocument(std::string(velmorak::fuzz::textOf(data, size)));
}
