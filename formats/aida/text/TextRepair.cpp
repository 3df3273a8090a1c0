#include "aida/text/TextRepair.h"

#include <velmorak/Utf8.h>

#include <algorithm>

namespace velmorak::io {

std::uint64_t TextRepair::repairedBefore(std::uint64_t byte) const {
    const auto later = positions.end() - std::lower_bound(positions.begin(), positions.end(), byte);
    return count - static_cast<std::uint64_t>(later);
}

void TextRepair::begin(const std::string& target) {
    positions.clear();
    targetBegin = appended - target.size();
}

void TextRepair::end(const std::string& target) {
    appended = targetBegin + target.size();
}

void TextRepair::append(std::string_view piece, std::string& target) {
    begin(target);
    appendPiece(piece, target);
    end(target);
}

void TextRepair::appendPiece(std::string_view piece, std::string& target) {
    const std::string joined = rest.empty() ? std::string() : rest + std::string(piece);
    std::string_view text = rest.empty() ? piece : std::string_view(joined);
    rest.clear();
    while (!text.empty()) {
        std::size_t good = 0;
        while (good < text.size() && static_cast<unsigned char>(text[good]) < 0x80) {
            ++good;
        }
        target.append(text.substr(0, good));
        text.remove_prefix(good);
        if (text.empty()) {
            return;
        }
        const std::size_t length = expectedCharacterBytes(text);
        if (length > text.size()) {
            rest = text;
            return;
        }
        if (length == 0) {
            repairByte(text[0], target);
        } else {
            target.append(text.substr(0, length));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

void TextRepair::finish(std::string& target) {
    begin(target);
    for (const char byte : rest) {
        repairByte(byte, target);
    }
    rest.clear();
    end(target);
}

void TextRepair::repairByte(char byte, std::string& target) {
    positions.push_back(targetBegin + target.size());
    appendLatin1(byte, target);
    ++count;
}

}  // namespace velmorak::io
