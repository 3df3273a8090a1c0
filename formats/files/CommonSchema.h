#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The columns that several files have in common, in the order of the first file.
class CommonSchema {
public:
    /// @param takesCommonColumns leaves out columns that are not in all files or have other types there.
    explicit CommonSchema(bool takesCommonColumns) : takesCommonColumns(takesCommonColumns) {}

    /// @param file name for messages.
    /// @throws Failure that names both files and the column if they differ.
    void add(const std::string& file, const Schema& schema);

    const std::vector<ColumnInfo>& columns() const { return common; }
    /// Names of the columns that were left out, each once.
    const std::vector<std::string>& leftOut() const { return dropped; }

private:
    bool merge(ColumnInfo& column, const std::string& file, const Schema& schema);
    void uniteUnits(ColumnInfo& column, const std::string& file, const ColumnInfo& other) const;
    void drop(const std::string& name);
    void checkNoMore(const std::string& file, const Schema& schema);

    bool takesCommonColumns;
    std::string first;  ///< File that came first.
    std::vector<ColumnInfo> common;
    std::vector<std::string> dropped;
};

}  // namespace velmorak
