#pragma once

#include "run/RunListener.h"

#include <nlohmann/json_fwd.hpp>

/// The events of a run as JSON; docs/run-events.md describes them.
namespace velmorak {

nlohmann::ordered_json beganEvent(const Pipeline& pipeline, int threads);
nlohmann::ordered_json progressEvent(const ProgressNow& now);
nlohmann::ordered_json pluginEvent(const PipelineNode& node, const NodeReport& report);
nlohmann::ordered_json endedEvent(const RunReport& report);

/// @return the event as a line of text.
std::string eventLine(const nlohmann::ordered_json& event);

}  // namespace velmorak
