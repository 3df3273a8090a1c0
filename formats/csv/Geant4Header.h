#pragma once

#include <velmorak/Table.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// The lines at the beginning of a text file that Geant4's analysis manager has written.
struct Geant4Header {
    std::string className;  ///< For example "tools::wcsv::ntuple" or "tools::histo::h1d".
    std::string title;
    char separator = ',';
    char vectorSeparator = ';';
    std::vector<ColumnInfo> columns;                               ///< Of an ntuple.
    std::vector<std::vector<std::string>> axes;                    ///< Words after #axis, for each axis.
    std::vector<std::pair<std::string, std::string>> annotations;  ///< Of a histogram.
    std::size_t bytes = 0;                                         ///< That the lines take.

    bool isNtuple() const { return className.ends_with("::ntuple"); }
};

/// @param head the first bytes of a file.
/// @return nothing if the file does not begin with #class.
/// @throws Failure for the input "file" about a line that cannot be understood.
std::optional<Geant4Header> geant4HeaderIn(std::string_view head);

}  // namespace velmorak
