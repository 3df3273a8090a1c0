#pragma once

#include "run/RunListener.h"

#include <nlohmann/json_fwd.hpp>

namespace velmorak {

/// The event about the first rows of a table: its columns, and the rows as texts.
nlohmann::ordered_json tableEvent(const PipelineNode& node, const TableHead& head);

}  // namespace velmorak
