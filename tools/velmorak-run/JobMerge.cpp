#include "JobMerge.h"

#include "JobParts.h"
#include "PartText.h"
#include "PlannedPipeline.h"
#include "ScanPage.h"
#include "StopOnSignal.h"

#include "run/parts/Bundle.h"
#include "run/parts/JobRun.h"
#include "run/parts/PlanJob.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <system_error>

namespace {

namespace fs = std::filesystem;
using velmorak::JobFolder;
using velmorak::JobPlan;
using velmorak::partNames;

/// Says that results lack rows, where whoever finds the results sees it.
void leaveNote(const fs::path& results, const std::string& sentence) {
    std::error_code ignored;
    fs::create_directories(results, ignored);
    std::ofstream(results / "PARTIAL.txt") << "These results are partial: " << sentence << ".\n";
}

class Merging {
public:
    Merging(const JobFolder& job, const JobPlan& plan, const Options& options, StopOnSignal& signals);

    ExitStatus run();

private:
    /// The user accepts that parts are missing, and each pass has some.
    bool mayGoOn(const PartsDone& done) const;
    ExitStatus merge(std::size_t number, const PartsDone& done);
    /// Adds a run to the table of the scan that the job is, if it is one.
    void noteScan(std::size_t number, const velmorak::Pipeline& executed, const velmorak::RunReport& report);
    std::vector<std::size_t> partsOf(std::size_t run, const PartsDone& done) const;
    /// @return empty for the folder beside the document.
    fs::path resultsOf(const QzManager& manager, const velmorak::PlannedRun& run) const;

    const JobFolder& job;
    const JobPlan& plan;
    const Options& options;
    StopOnSignal& signals;
    const velmorak::MovedFiles moved;
    std::optional<ScanTable> table;  ///< Of a job that is a scan.
    std::optional<ScanFiles> files;
};

Merging::Merging(const JobFolder& job, const JobPlan& plan, const Options& options, StopOnSignal& signals)
    : job(job), plan(plan), options(options), signals(signals), moved(velmorak::movedFiles(plan, job.path())) {}

ExitStatus Merging::run() {
    const PartsDone done = partsDone(job, plan, allParts(plan), std::cerr);
    if (!done.missing.empty() && !mayGoOn(done)) {
        return PartsMissing;
    }
    ExitStatus worst = AllDone;
    for (std::size_t i = 0; i < plan.runs.size() && worst != WasStopped; ++i) {
        orUsageError([&] { velmorak::checkFilesOfRun(plan, i, moved); });
        worst = std::max(worst, merge(i, done));
    }
    if (files && !files->end() && worst == AllDone) {
        worst = NotUsable;
    }
    if (done.missing.empty()) {
        job.removeLeftovers();
    }
    return worst;
}

bool Merging::mayGoOn(const PartsDone& done) const {
    if (!options.isPartial) {
        std::cerr << "velmorak-run: not merged, because " << partNames(done.missing)
                  << (done.missing.size() == 1 ? " is" : " are") << " not done\n";
        return false;
    }
    for (std::size_t run = 0; run < plan.runs.size(); ++run) {
        for (std::size_t pass = 0; pass < plan.runs[run].passes.size(); ++pass) {
            const std::vector<std::size_t> parts = plan.partsOf(run, pass);
            const bool hasAny = std::any_of(parts.begin(), parts.end(), [&](std::size_t part) {
                return std::binary_search(done.parts.begin(), done.parts.end(), part);
            });
            if (!hasAny) {
                std::cerr << "velmorak-run: not merged, because none of " << partNames(parts) << " is done\n";
                return false;
            }
        }
    }
    return true;
}

ExitStatus Merging::merge(std::size_t number, const PartsDone& done) {
    const velmorak::PlannedRun& run = plan.runs[number];
    if (!run.folder.empty()) {
        std::cerr << "Scan: " << run.folder << '\n';
    }
    PlannedPipeline pipeline(plan, run, options, moved);
    if (!done.missing.empty()) {
        velmorak::markPartial(pipeline.manager, partNames(done.missing) + " of " + std::to_string(plan.parts.size()) +
                                                    (done.missing.size() == 1 ? " is" : " are") + " missing");
    }
    velmorak::JobRun merged(job, plan, number, partsOf(number, done));
    const fs::path results = resultsOf(pipeline.manager, run);
    const velmorak::RunReport& report = pipeline.run(signals, merged, results);
    const ExitStatus status = report.wasStopped || signals.wasAsked() ? WasStopped
                              : report.hasFailure()                   ? PluginFailed
                              : report.skipped.empty()                ? AllDone
                                                                      : FilesSkipped;
    const velmorak::Pipeline executed = velmorak::pipelineOf(pipeline.manager);
    std::error_code ignored;
    fs::remove(executed.resultsFolder / "PARTIAL.txt", ignored);
    if (!executed.partial.empty()) {
        std::cerr << "The results are partial: " << executed.partial << ".\n";
        leaveNote(executed.resultsFolder, executed.partial);
    }
    noteScan(number, executed, report);
    return status;
}

void Merging::noteScan(std::size_t number, const velmorak::Pipeline& executed, const velmorak::RunReport& report) {
    if (plan.runs[number].folder.empty()) {
        return;
    }
    if (!table) {
        table.emplace(scanPointsOf(plan));
        files.emplace(*table, plan.document, executed.resultsFolder.parent_path());
    }
    table->add(number, executed, report);
    files->update();
}

std::vector<std::size_t> Merging::partsOf(std::size_t run, const PartsDone& done) const {
    std::vector<std::size_t> parts;
    std::copy_if(done.parts.begin(), done.parts.end(), std::back_inserter(parts),
                 [&](std::size_t part) { return plan.parts[part].run == run; });
    return parts;
}

fs::path Merging::resultsOf(const QzManager& manager, const velmorak::PlannedRun& run) const {
    fs::path folder = options.resultsFolder.empty() ? fs::path(plan.resultsFolder) : fs::path(options.resultsFolder);
    if (!run.folder.empty()) {
        folder = (folder.empty() ? velmorak::pipelineOf(manager).resultsFolder : folder) / run.folder;
    }
    return folder.empty() ? folder : fs::absolute(folder);
}

}  // namespace

ExitStatus mergeJob(const JobFolder& job, const JobPlan& plan, const Options& options, StopOnSignal& signals) {
    return Merging(job, plan, options, signals).run();
}
