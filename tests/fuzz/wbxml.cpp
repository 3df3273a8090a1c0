#include "Target.h"

#include "aida/binary/WbxmlText.h"

// The text of a binary AIDA file. Each step gives some text or ends, and what it gives is XML: no control characters.

namespace velmorak::fuzz {
namespace {

int nextOf(std::string_view& bytes) {
    if (bytes.empty()) {
        return -1;
    }
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    return byte;
}

void readAll(std::string_view bytes) {
    io::WbxmlText reader([&bytes] { return nextOf(bytes); });
    std::string text;
    while (reader.append(text)) {
        for (const char c : text) {
            require(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t' || c == '\r',
                    "a text has no control characters");
        }
        text.clear();
    }
    require(!reader.append(text), "the end is the end");
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmorak::fuzz::readAll(velmorak::fuzz::textOf(data, size));
    return 0;
}
