#pragma once

#include "files/FileList.h"

#include <velmorak/Table.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// The columns of a table of several files that are not in the files: file and file_number, and the properties.
class OwnColumns {
public:
    /// @param list outlives this.
    /// @param hasFileColumns with file and file_number.
    OwnColumns(const FileList& list, bool hasFileColumns) : list(list), hasFileColumns(hasFileColumns) {}

    /// Appends them to those of the files. @throws Failure if a name is there already.
    void addTo(Schema& columns) const;
    /// Appends their values for the rows of a chunk, which has the columns of its file.
    /// @param isNeeded by column of the table.
    void addTo(Chunk& chunk, const std::vector<bool>& isNeeded) const;
    /// As FileCircumstances::circumstancesOf.
    std::string circumstancesOf(std::size_t file) const;

private:
    const FileList& list;
    const bool hasFileColumns;
};

/// @return a column without rows.
Column emptyColumn(const ColumnInfo& info);

}  // namespace velmorak
