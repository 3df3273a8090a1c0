#include "RunCommand.h"

#include "Events.h"
#include "ListCommand.h"
#include "Replay.h"
#include "Settings.h"
#include "StopOnSignal.h"

#include "graph/ManagerExtensions.h"
#include "run/ResultsPlace.h"
#include "run/RunRecordFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;

ExitStatus statusOf(const velmorak::RunReport& report) {
    if (report.wasStopped) {
        return WasStopped;
    }
    return report.hasFailure() ? PluginFailed : AllDone;
}

/// @return false when the document cannot be read, which the manager has said.
bool load(QzManager& manager, const Options& order) {
    if (!order.aidaFile.empty()) {
        // A file that cannot be read is said by the manager; what needs it fails by name.
        manager.loadAIDA(order.aidaFile);
    }
    manager.ReadDocument(order.document);
    return velmorak::lastReadError(manager).empty();
}

void prepare(QzManager& manager, const Options& order) {
    for (const std::string& setting : order.settings) {
        apply(manager, settingOf(setting));
    }
    if (!order.start.empty()) {
        startAt(manager, order.start);
    }
    if (!order.resultsFolder.empty()) {
        velmorak::setResultsFolder(manager, std::filesystem::absolute(order.resultsFolder));
    }
    velmorak::noteSettings(manager, order.settings);
    velmorak::explainRuns(manager, order.isWhy);
}

/// @return what must outlive the manager's runs; null when no events are asked for.
std::unique_ptr<Events> eventsFor(QzManager& manager, const Options& order, std::ostream& output) {
    if (order.events.empty()) {
        return nullptr;
    }
    auto events = std::make_unique<Events>(order.events, output);
    velmorak::tellOfRuns(manager, events.get());
    return events;
}

/// @return the status of the program where not all events could be written, which is said.
ExitStatus withEvents(ExitStatus status, const std::unique_ptr<Events>& events) {
    if (!events || events->isComplete()) {
        return status;
    }
    std::cerr << "velmorak-run: the events cannot be written: " << events->complaint() << '\n';
    return status == AllDone ? NotUsable : status;
}

ExitStatus runOnce(QzManager& manager, const StopOnSignal& signals) {
    if (signals.wasAsked()) {
        return WasStopped;
    }
    manager.Run();
    return statusOf(velmorak::lastReport(manager));
}

/// Values as a part of a file name.
std::string folderNameOf(const std::vector<std::string>& settings) {
    std::string name;
    for (const std::string& setting : settings) {
        name += (name.empty() ? "" : ",") + setting;
    }
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

std::vector<std::string> textsOf(const std::vector<Setting>& point) {
    std::vector<std::string> texts;
    texts.reserve(point.size());
    for (const Setting& setting : point) {
        texts.push_back(setting.plugin + "." + setting.input + "=" + setting.value);
    }
    return texts;
}

ExitStatus runScan(QzManager& manager, const Options& order, const std::vector<std::vector<Setting>>& points,
                   const StopOnSignal& signals) {
    const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
    if (const std::string complaint = velmorak::whyNoResultsFolder(pipeline); !complaint.empty()) {
        throw UsageError(complaint);
    }
    const fs::path folder = pipeline.resultsFolder;
    ExitStatus worst = AllDone;
    for (const std::vector<Setting>& point : points) {
        const std::vector<std::string> texts = textsOf(point);
        for (const Setting& setting : point) {
            apply(manager, setting);
        }
        std::cerr << "Scan: " << folderNameOf(texts) << '\n';
        velmorak::setResultsFolder(manager, folder / folderNameOf(texts));
        std::vector<std::string> settings = order.settings;
        settings.insert(settings.end(), texts.begin(), texts.end());
        velmorak::noteSettings(manager, settings);
        worst = std::max(worst, runOnce(manager, signals));
        if (worst == WasStopped) {
            break;
        }
    }
    return worst;
}

ExitStatus runDocument(QzManager& manager, const Options& order, StopOnSignal& signals) {
    std::vector<std::vector<Setting>> points = pointsOf(order.scans);
    for (const std::vector<Setting>& point : points) {
        for (const Setting& setting : point) {
            apply(manager, setting);  // All are tried before the first is run.
        }
    }
    const StopOnSignal::Stoppable stoppable(signals, [&manager] { manager.Stop(); });
    return order.scans.empty() ? runOnce(manager, signals) : runScan(manager, order, points, signals);
}

/// A folder that goes with its holder.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    fs::path path;
};

TemporaryFolder::TemporaryFolder() : path(fs::temp_directory_path() / "velmorak-again-XXXXXX") {
    std::string name = path.string();
    if (!mkdtemp(name.data())) {
        throw UsageError("no folder can be made in " + fs::temp_directory_path().string());
    }
    path = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

ExitStatus repeat(QzManager& manager, const Options& order, const RunRecordFile& record, StopOnSignal& signals,
                  std::ostream& output) {
    const StopOnSignal::Stoppable stoppable(signals, [&manager] { manager.Stop(); });
    const TemporaryFolder passing;
    const fs::path results = order.resultsFolder.empty() ? passing.path : fs::absolute(order.resultsFolder);
    velmorak::setResultsFolder(manager, results);
    velmorak::noteSettings(manager, record.settings());
    const ExitStatus status = runOnce(manager, signals);
    if (status == WasStopped) {
        return status;
    }
    const RunRecordFile repeated(results / velmorak::runFileName);
    record.compareInputs(repeated, std::cerr);
    return record.compareResults(repeated, output) ? status : ResultsDiffer;
}

ExitStatus runAgain(const Options& order, StopOnSignal& signals, std::ostream& output) {
    const RunRecordFile record(order.again);
    setenv("VELMORAK_CACHE_LIMIT", "0", 1);  // All of it is computed.
    QzManager manager("QzAnalysisFactory");
    if (const std::string aida = record.aidaFile(); !aida.empty()) {
        manager.loadAIDA(aida);
    }
    velmorak::readDocumentText(manager, record.documentText(), record.documentFile().string());
    if (!velmorak::lastReadError(manager).empty()) {
        return NotUsable;
    }
    velmorak::explainRuns(manager, order.isWhy);
    const std::unique_ptr<Events> events = eventsFor(manager, order, output);
    return withEvents(repeat(manager, order, record, signals, output), events);
}

}  // namespace

ExitStatus execute(const Options& order, StopOnSignal& signals, std::ostream& output) {
    if (!order.again.empty()) {
        return runAgain(order, signals, output);
    }
    QzManager manager("QzAnalysisFactory");
    if (!load(manager, order)) {
        return NotUsable;
    }
    prepare(manager, order);
    if (order.isList || order.isCheck) {
        const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
        if (order.isList) {
            list(pipeline, output);
        }
        return !order.isCheck || check(pipeline, std::cerr) ? AllDone : PluginFailed;
    }
    const std::unique_ptr<Events> events = eventsFor(manager, order, output);
    return withEvents(runDocument(manager, order, signals), events);
}
