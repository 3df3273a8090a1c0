#include "Page.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <stdexcept>

Page::Page(const std::filesystem::path& file) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
}

std::vector<std::string> Page::section(const std::string& heading) const {
    const auto isHeading = [](const std::string& line) { return line.starts_with("## "); };
    const auto first = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return isHeading(line) && line.find(heading) != std::string::npos;
    });
    if (first == lines.end()) {
        throw std::out_of_range("no section " + heading + " in the page");
    }
    return {first + 1, std::find_if(first + 1, lines.end(), isHeading)};
}

Values Page::values(const std::string& heading) const {
    const std::regex row(R"(\| (\w+) \| `(.*)` \|)");
    Values found;
    for (const std::string& line : section(heading)) {
        std::smatch parts;
        if (std::regex_match(line, parts, row)) {
            found.emplace_back(parts[1], parts[2]);
        }
    }
    return found;
}

std::vector<std::string> Page::code(const std::string& heading, std::size_t number) const {
    const std::vector<std::string> all = section(heading);
    const auto isFence = [](const std::string& line) { return line.starts_with("```"); };
    auto begin = std::find_if(all.begin(), all.end(), isFence);
    for (std::size_t skipped = 0; begin != all.end(); ++skipped) {
        const auto end = std::find_if(begin + 1, all.end(), isFence);
        if (end == all.end()) {
            break;
        }
        if (skipped == number) {
            return {begin + 1, end};
        }
        begin = std::find_if(end + 1, all.end(), isFence);
    }
    throw std::out_of_range("too few code blocks in " + heading);
}

std::string Page::prose(const std::string& heading) const {
    std::string text;
    for (const std::string& line : section(heading)) {
        text += line + ' ';
    }
    return text;
}
