#include "RunCommand.h"

#include "Events.h"
#include "JobCommand.h"
#include "ListCommand.h"
#include "LookCommand.h"
#include "Replay.h"
#include "ScanPage.h"
#include "Settings.h"
#include "StopOnSignal.h"

#include "graph/ManagerExtensions.h"
#include "run/record/RunRecordFile.h"
#include "run/results/ResultsPlace.h"

#include <velmorak/Failure.h>
#include <velmorak/TemporaryFolder.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;

ExitStatus statusOf(const velmorak::RunReport& report) {
    if (report.wasStopped) {
        return WasStopped;
    }
    if (report.hasFailure()) {
        return PluginFailed;
    }
    return report.skipped.empty() ? AllDone : FilesSkipped;
}

bool isSuccess(ExitStatus status) {
    return status == AllDone || status == FilesSkipped;
}

/// @return the status of two runs together: any failure counts more than skipped files.
ExitStatus worseOf(ExitStatus one, ExitStatus other) {
    if (isSuccess(one) != isSuccess(other)) {
        return isSuccess(one) ? other : one;
    }
    return std::max(one, other);
}

/// @return false when the document cannot be read, which the manager has reported.
bool load(QzManager& manager, const Options& options) {
    if (!options.aidaFile.empty()) {
        // The manager reports a file that cannot be read; plug-ins that need it fail by name.
        manager.loadAIDA(options.aidaFile);
    }
    manager.ReadDocument(options.document);
    return velmorak::lastReadError(manager).empty();
}

void prepare(QzManager& manager, const Options& options) {
    for (const std::string& setting : options.settings) {
        apply(manager, settingOf(setting));
    }
    if (!options.start.empty()) {
        startAt(manager, options.start);
    }
    if (!options.resultsFolder.empty()) {
        velmorak::setResultsFolder(manager, fs::absolute(options.resultsFolder));
    }
    velmorak::recordSettings(manager, options.settings);
    velmorak::explainRuns(manager, options.isWhy);
}

/// @return the listener, which must outlive the manager's runs; null when no events are asked for.
std::unique_ptr<Events> eventsFor(QzManager& manager, const Options& options, std::ostream& output) {
    if (options.events.empty()) {
        return nullptr;
    }
    auto events = std::make_unique<Events>(options.events, output);
    velmorak::setRunListener(manager, events.get());
    return events;
}

/// Reports when not all events could be written. @return the exit status, which then is no success.
ExitStatus withEvents(ExitStatus status, const std::unique_ptr<Events>& events) {
    if (!events || events->isComplete()) {
        return status;
    }
    std::cerr << "velmorak-run: the events cannot be written: " << events->error() << '\n';
    return isSuccess(status) ? NotUsable : status;
}

ExitStatus runOnce(QzManager& manager, const StopOnSignal& signals) {
    if (signals.wasAsked()) {
        return WasStopped;
    }
    manager.Run();
    return statusOf(velmorak::lastReport(manager));
}

ExitStatus runScan(QzManager& manager, const Options& options, const std::vector<std::vector<Setting>>& points,
                   const StopOnSignal& signals) {
    const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
    if (const std::string error = velmorak::whyNoResultsFolder(pipeline); !error.empty()) {
        throw UsageError(error);
    }
    const fs::path folder = pipeline.resultsFolder;
    ScanTable table(points);
    ScanFiles files(table, pipeline.document.string(), folder);
    ExitStatus worst = AllDone;
    for (std::size_t i = 0; i < points.size() && worst != WasStopped; ++i) {
        applyPoint(manager, options.settings, points[i]);
        std::cerr << "Scan: " << table.runs()[i].folder << '\n';
        velmorak::setResultsFolder(manager, folder / table.runs()[i].folder);
        const ExitStatus status = runOnce(manager, signals);
        worst = worseOf(worst, status);
        if (status != WasStopped || velmorak::lastReport(manager).wasStopped) {
            table.add(i, pipeline, velmorak::lastReport(manager));
        }
        files.update();
    }
    return files.end() ? worst : worseOf(worst, NotUsable);
}

ExitStatus runDocument(QzManager& manager, const Options& options, StopOnSignal& signals) {
    std::vector<std::vector<Setting>> points = pointsOf(options.scans);
    for (const std::vector<Setting>& point : points) {
        for (const Setting& setting : point) {
            apply(manager, setting);  // Refuses any wrong value before the first run.
        }
    }
    const StopOnSignal::Stoppable stoppable(signals, [&manager] { manager.Stop(); });
    return options.scans.empty() ? runOnce(manager, signals) : runScan(manager, options, points, signals);
}

ExitStatus repeat(QzManager& manager, const Options& options, const velmorak::StoredRunRecord& record,
                  StopOnSignal& signals, std::ostream& output) {
    const StopOnSignal::Stoppable stoppable(signals, [&manager] { manager.Stop(); });
    std::optional<velmorak::TemporaryFolder> temporary;
    if (options.resultsFolder.empty()) {
        temporary.emplace("again");
    }
    const fs::path results = temporary ? temporary->path() : fs::absolute(options.resultsFolder);
    velmorak::setResultsFolder(manager, results);
    velmorak::recordSettings(manager, record.settings);
    if (record.date) {
        velmorak::setDate(manager, *record.date);
    }
    const ExitStatus status = runOnce(manager, signals);
    if (status == WasStopped) {
        return status;
    }
    const velmorak::StoredRunRecord repeated = readRecordToRepeat(results / velmorak::runRecordFileName);
    compareInputs(record, repeated, std::cerr);
    return compareResults(record, repeated, output) ? status : ResultsDiffer;
}

ExitStatus runAgain(const Options& options, StopOnSignal& signals, std::ostream& output) {
    const velmorak::StoredRunRecord record = readRecordToRepeat(options.again);
    QzManager manager("QzAnalysisFactory");
    // A repetition computes everything anew.
    velmorak::configure(manager, {.threads = options.threads, .keepsResults = false, .previewsColumns = false});
    if (!record.aidaFile.empty()) {
        manager.loadAIDA(record.aidaFile);
    }
    velmorak::readDocumentText(manager, record.documentText, documentFileOf(record, options.again).string());
    if (!velmorak::lastReadError(manager).empty()) {
        return NotUsable;
    }
    velmorak::explainRuns(manager, options.isWhy);
    const std::unique_ptr<Events> events = eventsFor(manager, options, output);
    return withEvents(repeat(manager, options, record, signals, output), events);
}

ExitStatus look(const Options& options, StopOnSignal& signals, std::ostream& output) {
    const QzManager manager("QzAnalysisFactory");
    try {
        printContent(options.look, velmorak::fileFormatsOf(manager), options.isJson, signals, output);
        return AllDone;
    } catch (const velmorak::Stopped&) {
        return WasStopped;
    }
}

}  // namespace

ExitStatus execute(const Options& options, StopOnSignal& signals, std::ostream& output) {
    if (!options.again.empty()) {
        return runAgain(options, signals, output);
    }
    if (!options.look.empty()) {
        return look(options, signals, output);
    }
    if (options.isMerge || options.isStatus || !options.part.empty()) {
        return workOnJob(options, signals, output);
    }
    QzManager manager("QzAnalysisFactory");
    velmorak::configure(manager, {.threads = options.threads, .previewsColumns = false});
    if (!load(manager, options)) {
        return NotUsable;
    }
    prepare(manager, options);
    if (options.isList || options.isCheck) {
        const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
        if (options.isList) {
            printPlugins(pipeline, output);
        }
        return !options.isCheck || printErrors(pipeline, std::cerr) == 0 ? AllDone : PluginFailed;
    }
    if (!options.job.empty()) {
        return planJob(manager, options, signals, output);
    }
    const std::unique_ptr<Events> events = eventsFor(manager, options, output);
    return withEvents(runDocument(manager, options, signals), events);
}
