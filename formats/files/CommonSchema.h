#pragma once

#include <velmorak/FileOpener.h>

#include <cstddef>
#include <map>
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
    void add(const std::string& file, const FileColumns& columns);

    /// @return whether no file has been added.
    bool isEmpty() const { return first.empty(); }
    std::vector<ColumnInfo> columns() const;
    /// Names of the columns that were left out, each once.
    const std::vector<std::string>& leftOut() const { return dropped; }

private:
    struct Known {
        ColumnInfo info;
        std::string file;  ///< That decided on the type.
        std::string unitFile;
        bool isUndecided = false;
    };

    bool merge(Known& known, const std::string& file, const FileColumns& columns);
    bool uniteTypes(Known& known, const std::string& file, const ColumnInfo& other, bool isUndecided) const;
    static void uniteUnits(Known& known, const std::string& file, const ColumnInfo& other);
    void drop(const std::string& name);
    void checkNoMore(const std::string& file, const Schema& schema);

    bool takesCommonColumns;
    std::string first;  ///< File that came first.
    FileColumns previous;
    std::vector<Known> common;
    std::vector<std::string> dropped;
};

}  // namespace velmorak
