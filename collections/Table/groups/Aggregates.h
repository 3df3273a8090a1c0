#pragma once

#include <string>
#include <vector>

namespace velmorak {

/// What can be computed from the values of a group.
enum class Aggregate { Count, Sum, Mean, Spread, Min, Max, Median, First, Last };

/// One entry of a list of aggregates: "name: mean(expression)".
struct AggregateText {
    std::string name{};
    Aggregate function = Aggregate::Count;
    std::string expression{};  ///< Empty for the number of rows.
};

/// Parses aggregates, one a line or separated by semicolons. Without a name, that of "mean(pt)" is "mean_pt", and that
/// of "count" is "count".
/// @throws Failure for the input "aggregates" that names the entry and its error.
std::vector<AggregateText> aggregatesIn(const std::string& text);

/// @return the name of a column if the text is nothing else, without its back quotes; else an empty text.
std::string plainColumn(const std::string& expression);

}  // namespace velmorak
