#include "Say.h"

#include "Json.h"

#include <algorithm>
#include <iostream>

namespace velmorak {
namespace {

constexpr std::size_t longestQuote = 120;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

void say(const std::string& sentence) {
    std::string line = sentence;
    std::ranges::replace(line, '\n', ' ');
    std::ranges::replace(line, '\r', ' ');
    line += '\n';
    std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
    std::cerr.flush();
}

std::string inQuotes(std::string_view text) {
    if (text.size() <= longestQuote)
        return '"' + std::string(text) + '"';
    std::size_t length = longestQuote;
    while (length > 0 && continuesCharacter(text[length]))
        --length;
    return '"' + std::string(text.substr(0, length)) + "...\"";
}

std::string withoutFullStop(std::string sentence) {
    while (!sentence.empty() && (sentence.back() == '.' || sentence.back() == '\n'))
        sentence.pop_back();
    return validUtf8(sentence);
}

}  // namespace velmorak
