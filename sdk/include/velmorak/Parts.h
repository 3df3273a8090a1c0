#pragma once

#include <vector>

/// What a kind tells about tables that are not read as a whole: in parts, or without files whose results are known.
namespace velmorak {

/// A second base of a TableReader of several files that can leave out some of them.
class FileSelection {
public:
    virtual ~FileSelection() = default;
    /// Called before the first TableReader::next, if at all. Files keep their numbers.
    /// @param isWanted by file.
    virtual void readOnly(const std::vector<bool>& isWanted) = 0;
};

/// A second base of a RowWise kind whose operations may be such as RowOperation::countsRows(). What comes after it
/// needs all rows before a chunk, so that it is not computed in parts.
class CountingKind {
public:
    virtual ~CountingKind() = default;
};

}  // namespace velmorak
