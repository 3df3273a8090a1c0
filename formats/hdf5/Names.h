#pragma once

#include "hdf5/Library.h"

#include <string>
#include <string_view>
#include <vector>

/// Texts beside the data: attributes, and names that other programs keep. Called under the lock.
namespace velmorak::hdf5 {

/// @return the texts of an attribute, or of a dataset if attribute is empty; empty if there is none or it is not a
/// text.
std::vector<std::string> textsIn(hid_t object, const std::string& attribute);

/// @return the only text of an attribute; empty if there is none.
std::string textIn(hid_t object, const std::string& attribute);

/// @return the texts in a list that Python has pickled with protocol 0, as PyTables stores it; empty for anything else.
std::vector<std::string> pickledTexts(std::string_view bytes);

/// Names of the links in a group that are not references to other places, in the order of the names.
std::vector<std::string> namesIn(hid_t group);

}  // namespace velmorak::hdf5
