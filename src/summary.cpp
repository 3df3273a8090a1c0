#include "summary.h"

#include <array>
#include <istream>
#include <string_view>

namespace {

constexpr std::size_t lineBuffer = 512;  // 511 characters and the terminating null

bool contains(const std::string& line, std::string_view mark) {
    return line.find(mark) != std::string::npos;
}

// Empty for a line that consists of dashes and spaces.
std::string headingName(const std::string& line) {
    constexpr auto border = "- ";
    const std::size_t first = line.find_first_not_of(border);
    return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(border) + 1 - first);
}

class Reader {
public:
    void take(const std::string& line);

    Summary summary;

private:
    void takeHeading(const std::string& heading);

    void takeInBlock(const std::string& line);

    void closeBlock();

    bool isInBlock = false;
    std::string name;  // kind of the description being read; empty for that of the collection
    std::string text;
};

void Reader::take(const std::string& line) {
    if (contains(line, "====")) {
        isInBlock = true;
    } else if (contains(line, "----")) {
        takeHeading(headingName(line));
    } else if (isInBlock) {
        takeInBlock(line);
    }
}

void Reader::takeHeading(const std::string& heading) {
    if (!heading.empty()) {
        name = heading;
        isInBlock = true;
    }
}

void Reader::takeInBlock(const std::string& line) {
    if (line.empty() || line == "Inputs:" || line == "Outputs:") {
        closeBlock();
    } else if (text.empty()) {
        text = line;
    } else {
        // Deliberate: the tooltip shows only the first line; further lines make it taller.
        text += '\n';
    }
}

void Reader::closeBlock() {
    if (name.empty()) {
        summary.collection = text;
    } else {
        summary.kinds[name] = text;
    }
    name.clear();
    text.clear();
    isInBlock = false;
}

}  // namespace

Summary readSummary(std::istream& text) {
    Reader reader;
    std::array<char, lineBuffer> line{};
    while (text.good()) {
        // The failing read at the end yields an empty line, which closes the last block.
        text.getline(line.data(), line.size());
        reader.take(line.data());
    }
    return reader.summary;
}
