#pragma once

#include "../run/Runner.h"

#include <QzManager.h>

#include <string>

/// What the tools ask of the library beyond the door.
namespace velmorak {

/// Report of the manager's last run; empty before the first one.
const RunReport& lastReport(const QzManager& manager);

/// Why the last ReadDocument added nothing; empty when it succeeded.
const std::string& lastReadError(const QzManager& manager);

/// The pipeline as a run would see it now.
Pipeline pipelineOf(const QzManager& manager);

}  // namespace velmorak
