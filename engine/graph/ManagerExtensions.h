#pragma once

#include "run/RunListener.h"

#include <QzManager.h>

#include <cstddef>
#include <filesystem>
#include <string>

/// Functions that the tools need beyond the interface in qz/.
namespace velmorak {

class FileFormats;

/// Report of the manager's last run; empty before the first one.
const RunReport& lastReport(const QzManager& manager);

/// Why the last ReadDocument added nothing; empty when it succeeded.
const std::string& lastReadError(const QzManager& manager);

/// The pipeline that a run would execute now.
Pipeline pipelineOf(const QzManager& manager);

/// The file formats of the collections.
const FileFormats& fileFormatsOf(const QzManager& manager);

/// Results go there from now on, instead of into the folder beside the document.
void setResultsFolder(QzManager& manager, const std::filesystem::path& folder);

/// Settings that differ from those of the environment.
struct ManagerConfig {
    int threads = 0;              ///< Of a run; 0: as VELMORAK_THREADS says.
    bool keepsResults = true;     ///< False: runs neither reuse results from disk nor store theirs.
    bool previewsColumns = true;  ///< The descriptions of table readers' outputs name their columns.
};

/// Called before the manager has plug-ins, and before the two functions below.
void configure(QzManager& manager, const ManagerConfig& config);

/// From now on, runs print for each plug-in whether it is executed or reused, and why; they do at first. Called while
/// no run is going on.
void explainRuns(QzManager& manager, bool isWanted);

/// From now on, runs call the listener. Called while no run is going on.
/// @param listener outlives the runs; null for none.
void setRunListener(QzManager& manager, RunListener* listener);

/// From now on, runs leave their passes over rows to the runner. Called while no run is going on.
/// @param passRunner outlives the runs; null: each pass reads all rows.
void setPassRunner(QzManager& manager, PassRunner* passRunner);

/// Records and reports of later runs say that the results lack rows.
/// @param sentence without its end: "parts 3, 5 of 7 are missing".
void markPartial(QzManager& manager, const std::string& sentence);

/// Later runs look for files there that are not where the document says.
void setMovedFiles(QzManager& manager, MovedFiles files);

/// Records of runs list these settings from now on: PLUGIN.INPUT=VALUE.
void recordSettings(QzManager& manager, const std::vector<std::string>& settings);

/// Files that later runs write are of this date, in seconds since 1970, instead of that on which the run begins.
void setDate(QzManager& manager, double date);

/// As ReadDocument, with the text that was in the file; the file itself may be gone.
void readDocumentText(QzManager& manager, const std::string& text, const std::string& file);

}  // namespace velmorak
