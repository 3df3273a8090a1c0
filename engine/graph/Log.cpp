#include "graph/Log.h"

#include "graph/document/Json.h"
#include "run/announce/RuntimeFolder.h"
#include "run/messages/Visible.h"

#include <iostream>

namespace velmorak {
namespace {

constexpr std::size_t maxLineLength = 4000;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Keeps both ends: a line begins with the place and ends with the reason.
std::string withoutMiddle(const std::string& line) {
    if (line.size() <= maxLineLength) {
        return line;
    }
    std::size_t head = maxLineLength / 2;
    while (continuesCharacter(line[head])) {
        --head;
    }
    std::size_t tail = line.size() - maxLineLength / 2;
    while (continuesCharacter(line[tail])) {
        ++tail;
    }
    return line.substr(0, head) + " ... " + line.substr(tail);
}

}  // namespace

void printMessage(const std::string& sentence) {
    const std::string line = withoutMiddle(visibleMessage(sentence)) + '\n';
    std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
    std::cerr.flush();
    announceMessage(line.substr(0, line.size() - 1));
}

std::string quote(std::string_view text) {
    return '"' + visible(shortened(std::string(text))) + '"';
}

std::string withoutFullStop(std::string sentence) {
    while (!sentence.empty() && (sentence.back() == '.' || sentence.back() == '\n')) {
        sentence.pop_back();
    }
    return validUtf8(sentence);
}

}  // namespace velmorak
