#pragma once

#include <velmorak/Run.h>

#include <string>
#include <vector>

namespace velmorak {

/// An object that is written into a file with others, or the table among them.
struct NamedObject {
    std::string name;
    DataObjectPtr object;  ///< Null for the table.
};

/// What is wired to the numbered inputs "object", under its own name or that of the plug-in that made it; names that
/// are taken get a number.
/// @param plugin kind and file of the writer, such as "AidaWriter".
/// @param file   what it writes, such as "an AIDA file".
/// @throws Failure if an input has nothing wired, a number or a text, or if there are two tables.
std::vector<NamedObject> namedObjects(const Arguments& arguments, const std::string& plugin, const std::string& file);

}  // namespace velmorak
