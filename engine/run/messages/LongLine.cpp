#include "run/messages/LongLine.h"

#include <velmorak/Utf8.h>

#include <cstddef>

namespace velmorak {
namespace {

constexpr std::size_t maxLineLength = 4000;

std::string withoutMiddle(std::string_view line) {
    if (line.size() <= maxLineLength) {
        return std::string(line);
    }
    std::size_t head = maxLineLength / 2;
    while (head > 0 && isContinuationByte(line[head])) {
        --head;
    }
    std::size_t tail = line.size() - maxLineLength / 2;
    while (tail < line.size() && isContinuationByte(line[tail])) {
        ++tail;
    }
    return std::string(line.substr(0, head)) + " ... " + std::string(line.substr(tail));
}

}  // namespace

std::string withoutLongLines(std::string_view text) {
    std::string shown;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        shown += withoutMiddle(text.substr(0, end)) + '\n';
        text.remove_prefix(end + 1);
    }
    return shown + withoutMiddle(text);
}

}  // namespace velmorak
