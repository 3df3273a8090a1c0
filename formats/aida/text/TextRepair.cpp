#include "aida/text/TextRepair.h"

#include <algorithm>

namespace velmorak::io {

namespace {

unsigned byteAt(std::string_view text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

std::size_t lengthFrom(unsigned lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead < 0xE0) {
        return 2;
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return 3;
    }
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

/// The second byte decides about overlong forms, surrogates and numbers beyond Unicode.
bool isSecond(unsigned lead, unsigned second) {
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
}

/// @return bytes of the sequence that the text begins with: 0 when it is none, also when a later piece cannot make it
///         one; more than the text has when it is cut.
std::size_t sequence(std::string_view text) {
    const std::size_t length = lengthFrom(byteAt(text, 0));
    for (std::size_t position = 1; position < std::min(length, text.size()); ++position) {
        const unsigned byte = byteAt(text, position);
        if (position == 1 ? !isSecond(byteAt(text, 0), byte) : (byte & 0xC0U) != 0x80) {
            return 0;
        }
    }
    return length;
}

}  // namespace

std::uint64_t TextRepair::repairedBefore(std::uint64_t byte) const {
    const auto later = places.end() - std::lower_bound(places.begin(), places.end(), byte);
    return count - static_cast<std::uint64_t>(later);
}

void TextRepair::begin(const std::string& target) {
    places.clear();
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
        while (good < text.size() && byteAt(text, good) < 0x80) {
            ++good;
        }
        target.append(text.substr(0, good));
        text.remove_prefix(good);
        if (text.empty()) {
            return;
        }
        const std::size_t length = sequence(text);
        if (length > text.size()) {
            rest = text;
            return;
        }
        if (length == 0) {
            appendLatin1(text[0], target);
        } else {
            target.append(text.substr(0, length));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

void TextRepair::finish(std::string& target) {
    begin(target);
    for (const char byte : rest) {
        appendLatin1(byte, target);
    }
    rest.clear();
    end(target);
}

void TextRepair::appendLatin1(char byte, std::string& target) {
    places.push_back(targetBegin + target.size());
    const auto code = static_cast<unsigned char>(byte);
    target += static_cast<char>(0xC0U | (code >> 6U));
    target += static_cast<char>(0x80U | (code & 0x3FU));
    ++count;
}

}  // namespace velmorak::io
