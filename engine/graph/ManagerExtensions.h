#pragma once

#include "run/RunListener.h"
#include "store/CacheConfig.h"

#include <QzManager.h>

#include <cstddef>
#include <filesystem>
#include <string>

/// What the tools ask of the library beyond the door.
namespace velmorak {

/// Report of the manager's last run; empty before the first one.
const RunReport& lastReport(const QzManager& manager);

/// Why the last ReadDocument added nothing; empty when it succeeded.
const std::string& lastReadError(const QzManager& manager);

/// The pipeline as a run would see it now.
Pipeline pipelineOf(const QzManager& manager);

/// Results go there from now on, instead of beside the document.
void setResultsFolder(QzManager& manager, const std::filesystem::path& folder);

/// Number of threads of the runs from now on, in place of VELMORAK_THREADS. Called while no run is going on.
void setThreads(QzManager& manager, std::size_t threads);

/// Where results are cached on disk, in place of VELMORAK_CACHE_LIMIT; {} for nowhere. Called before the first run.
void setCache(QzManager& manager, const CacheConfig& cache);

/// From now on, runs say for each plug-in whether it is executed or reused, and why; they do at first. Called while no
/// run is going on.
void explainRuns(QzManager& manager, bool isAsked);

/// From now on, the listener is told what runs do. Called while no run is going on.
void tellOfRuns(QzManager& manager, RunListener* listener);

/// What was set for the runs from now on, as it is to stand in their records: PLUGIN.INPUT=VALUE.
void noteSettings(QzManager& manager, const std::vector<std::string>& settings);

/// As ReadDocument, of a text that stood in that file; the file itself may be gone.
void readDocumentText(QzManager& manager, const std::string& text, const std::string& file);

}  // namespace velmorak
