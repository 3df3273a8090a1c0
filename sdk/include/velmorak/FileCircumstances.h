#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// A second base of a TableReader of several files that says on what the rows of a file depend besides its content, the
/// inputs of the plug-in and the columns of the table. What was computed from a file is then known again after it was
/// moved or renamed, and after other files were added to a list. Without this base, rows depend on the path and on
/// every other file that the plug-in asked for.
class FileCircumstances {
public:
    virtual ~FileCircumstances() = default;
    /// @return bytes that are the same where files with the same content have the same rows.
    virtual std::string circumstancesOf(std::uint64_t file) const = 0;
    /// Names of other files that the plug-in asked for, such as lists, that matter only for which files there are and
    /// for their circumstances.
    virtual const std::vector<std::string>& lists() const = 0;
};

}  // namespace velmorak
