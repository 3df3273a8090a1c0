#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Names of columns in a list separated by blanks or commas; a name with other signs stands in back quotes.
/// @throws Failure for the input when a back quote is not closed.
std::vector<std::string> columnNames(const std::string& input, const std::string& list);

/// Positions of the named columns in the schema, in the order of the list.
/// @throws Failure for the input when there is no such column, or one stands there twice.
std::vector<std::size_t> columnPlaces(const std::string& input, const std::string& list, const Schema& schema);

/// @return an empty text, or why the list cannot be read.
std::string columnListRefusal(const std::string& input, const std::string& list);

}  // namespace velmorak
