#pragma once

#include "run/plan/Pipeline.h"

#include <velmorak/Value.h>

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <optional>
#include <utility>

/// Results as JSON, for a program that draws them.
namespace velmorak {

/// Ends of the horizontal axis of an object that is made of data.
using DataSpan = std::pair<double, double>;

/// @param span over which a function is sampled; nothing: its own range.
/// @param maxCells larger objects are only named.
/// @return the value with its type: a number with its error, a text, bins with heights and errors, points, samples of
///         a function, or groups of a list, each with its title and bins. A number that is not finite is null.
nlohmann::ordered_json resultJson(const Value& value, const std::optional<DataSpan>& span, std::size_t maxCells);

/// @return nothing for a value without an axis.
std::optional<DataSpan> spanOf(const Value& value);

}  // namespace velmorak
