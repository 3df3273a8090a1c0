#pragma once

#include <velmorak/Run.h>
#include <velmorak/Value.h>

#include <filesystem>
#include <string>
#include <vector>

namespace velmorak::yoda {

/// The lines of one object.
struct Block {
    std::string type;  ///< Without "YODA_".
    std::string path;
    std::string title;
    std::uint64_t line = 0;  ///< Of its beginning.
    std::vector<AnnotationItem> annotation;
    std::vector<std::string> edges;              ///< Of each axis, as in the file.
    std::vector<std::vector<std::string>> rows;  ///< Words of each row of numbers.
    std::string problem;                         ///< For example that its end is missing.
};

/// Splits a file into its objects. @throws as readYoda.
std::vector<Block> readBlocks(const std::filesystem::path& file, RunContext& context);

}  // namespace velmorak::yoda
