#include "yoda/YodaBlocks.h"

#include <velmorak/Failure.h>
#include <velmorak/Lines.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace velmorak::yoda {

namespace {

constexpr std::string_view blanks = " \t\r";

std::vector<std::string> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    std::size_t begin = line.find_first_not_of(blanks);
    while (begin != std::string_view::npos) {
        const std::size_t end = std::min(line.find_first_of(blanks, begin), line.size());
        words.emplace_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(blanks, end);
    }
    return words;
}

bool isNumberLike(const std::string& word) {
    double number = 0.0;
    return readNumber(word, number) || word == "---" || word == "Total" || word == "Underflow" || word == "Overflow";
}

/// Takes a line "Key: value", or "Key=value" of version 1. @return false if it is none.
bool takeAnnotation(std::string_view line, Block& block) {
    const std::size_t sign = line.find_first_of(":=");
    if (sign == std::string_view::npos || sign == 0 || isNumberLike(wordsOf(line).front())) {
        return false;
    }
    const std::string key(trimmed(line.substr(0, sign)));
    const std::string value(trimmed(line.substr(sign + 1)));
    if (key.starts_with("Edges(")) {
        block.edges.push_back(value);
    } else if (key == "Path") {
        block.path = value.empty() ? block.path : value;
    } else if (key == "Title") {
        block.title = value == "~" || value == "\"\"" ? "" : value;
    } else if (key != "Type") {
        block.annotation.push_back({.key = key, .value = value});
    }
    return true;
}

/// Takes a line of an object. Version 1 has no line between annotations and numbers.
void takeLine(std::string_view line, Block& block, bool& isInNumbers) {
    const std::string_view text = trimmed(line);
    if (text.empty() || text.starts_with('#')) {
        return;
    }
    if (text == "---" && !isInNumbers) {
        isInNumbers = true;
        return;
    }
    const bool isAnnotation = (!isInNumbers || text.starts_with("Edges(") || text.starts_with("ErrorLabels:") ||
                               text.starts_with("MaskedBins:")) &&
                              takeAnnotation(text, block);
    if (!isAnnotation) {
        block.rows.push_back(wordsOf(text));
    }
}

Block begin(std::string_view line, std::uint64_t number) {
    const std::vector<std::string> words = wordsOf(line);
    Block block;
    block.line = number;
    block.type = words.size() > 1 && words[1].starts_with("YODA_") ? words[1].substr(5) : "";
    for (std::size_t i = 2; i < words.size(); ++i) {
        block.path += (i == 2 ? "" : " ") + words[i];
    }
    block.problem = block.type.empty() ? "its type is missing" : "";
    return block;
}

}  // namespace

std::vector<Block> readBlocks(const std::filesystem::path& file, RunContext& context) {
    std::vector<Block> blocks;
    Lines lines(file, context);
    std::string_view line;
    bool isOpen = false;
    bool isInNumbers = false;
    while (lines.next(line)) {
        const std::string_view plain = trimmed(line.starts_with("# BEGIN") ? line.substr(2) : line);
        if (plain.starts_with("BEGIN ")) {
            if (isOpen) {
                blocks.back().problem = "it has no line END";
            }
            blocks.push_back(begin(plain, lines.line()));
            isOpen = true;
            isInNumbers = false;
        } else if (isOpen && (plain.starts_with("END") || plain.starts_with("# END"))) {
            isOpen = false;
        } else if (isOpen) {
            takeLine(line, blocks.back(), isInNumbers);
        } else if (blocks.empty() && !plain.empty() && !plain.starts_with('#')) {
            break;
        }
    }
    if (isOpen) {
        blocks.back().problem = "the file ends before it does";
    }
    if (blocks.empty()) {
        throw Failure("file", velmorak::quoted(file.string()) + " is not a YODA file: there is no line BEGIN YODA_...");
    }
    return blocks;
}

}  // namespace velmorak::yoda
