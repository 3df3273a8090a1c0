#pragma once

#include "PipelineRobot.h"

#include <filesystem>
#include <string>
#include <vector>

/// A page of the documentation: the input that it asks its reader to type.
class Page {
public:
    explicit Page(const std::filesystem::path& file);

    /// The rows of the table "| input | value |" of the section with these words in its heading.
    Values values(const std::string& heading) const;
    /// The lines of the code block with that number in that section.
    std::vector<std::string> code(const std::string& heading, std::size_t number = 0) const;
    /// The section without its line ends.
    std::string prose(const std::string& heading) const;

private:
    std::vector<std::string> section(const std::string& heading) const;

    std::vector<std::string> lines;
};
