#include "JobCommand.h"

#include "PartNumber.h"
#include "PartText.h"
#include "ScanPage.h"
#include "Settings.h"
#include "StopOnSignal.h"

#include "graph/ManagerExtensions.h"
#include "run/announce/RuntimeFolder.h"
#include "run/parts/Bundle.h"
#include "run/parts/JobFolder.h"
#include "run/parts/JobRun.h"
#include "run/parts/PlanJob.h"

#include <velmorak/Failure.h>
#include <velmorak/TemporaryFolder.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using velmorak::JobFolder;
using velmorak::JobPlan;
using velmorak::partNames;
using State = JobFolder::State;

/// Failures of the library as mistakes in the command line or its files.
template <typename Work>
auto orUsageError(const Work& work) {
    try {
        return work();
    } catch (const velmorak::Failure& failure) {
        throw UsageError(failure.what());
    }
}

std::string numbered(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::vector<std::size_t> allParts(const JobPlan& plan) {
    std::vector<std::size_t> parts(plan.parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        parts[i] = i;
    }
    return parts;
}

void printPlan(const JobPlan& plan, const fs::path& job, std::ostream& output) {
    output << "Planned in " << velmorak::quoted(job.string()) << ": " << numbered(plan.parts.size(), "part") << '\n';
    for (std::size_t first = 0; first < plan.parts.size();) {
        std::vector<std::size_t> parts;
        const unsigned round = plan.roundOf(first);
        for (; first < plan.parts.size() && plan.roundOf(first) == round; ++first) {
            parts.push_back(first);
        }
        output << "Round " << round << ": " << partNames(parts) << '\n';
    }
    for (const velmorak::PlannedRun& run : plan.runs) {
        for (const velmorak::LeftToMerge& left : run.leftToMerge) {
            output << "While merging" << (run.folder.empty() ? "" : " (" + run.folder + ")") << ": "
                   << velmorak::quoted(left.plugin) << ", because " << left.reason << '\n';
        }
    }
}

/// Parts that are done, of those that are asked for; lists the others.
struct Done {
    std::vector<std::size_t> parts;
    std::vector<std::size_t> missing;
};

Done doneOf(const JobFolder& job, const JobPlan& plan, const std::vector<std::size_t>& parts, std::ostream& output) {
    Done done;
    std::vector<std::size_t> unexplained;
    std::string reasons;
    for (const std::size_t part : parts) {
        const JobFolder::Status status = job.statusOf(plan, part);
        (status.state == State::Done ? done.parts : done.missing).push_back(part);
        if (status.state == State::Missing) {
            unexplained.push_back(part);
        } else if (status.state != State::Done) {
            reasons += partNames({part}) + (status.state == State::Failed ? " failed: " : ": ") + status.reason + "\n";
        }
    }
    if (!unexplained.empty()) {
        output << "Missing: " << partNames(unexplained) << '\n';
    }
    output << reasons;
    return done;
}

ExitStatus printStatus(const JobFolder& job, const JobPlan& plan, std::ostream& output) {
    const Done done = doneOf(job, plan, allParts(plan), output);
    output << "Done: " << done.parts.size() << " of " << numbered(plan.parts.size(), "part") << '\n';
    return done.missing.empty() ? AllDone : PartsMissing;
}

/// A manager with the pipeline of one of the plan's runs.
class PlannedPipeline {
public:
    PlannedPipeline(const JobPlan& plan, const velmorak::PlannedRun& run, const Options& options,
                    const velmorak::MovedFiles& moved) {
        velmorak::configure(manager, {.threads = options.threads, .keepsResults = false, .previewsColumns = false});
        if (!plan.aidaFile.empty()) {
            const auto place = moved.places.find(plan.aidaFile);
            manager.loadAIDA(place == moved.places.end() ? plan.aidaFile : place->second.string());
        }
        velmorak::setMovedFiles(manager, moved);
        velmorak::readDocumentText(manager, run.documentText, plan.document);
        if (!velmorak::lastReadError(manager).empty()) {
            throw UsageError("the plan's document cannot be read; plan the job again");
        }
        velmorak::recordSettings(manager, run.settings);
        velmorak::explainRuns(manager, options.isWhy);
        orUsageError([&] { velmorak::checkBuilds(plan, velmorak::pipelineOf(manager)); });
    }

    const velmorak::RunReport& run(StopOnSignal& signals, velmorak::PassRunner& passRunner, const fs::path& results) {
        const StopOnSignal::Stoppable stoppable(signals, [this] { manager.Stop(); });
        if (!results.empty()) {
            velmorak::setResultsFolder(manager, results);
        }
        velmorak::setPassRunner(manager, &passRunner);
        if (!signals.wasAsked()) {
            manager.Run();
        }
        velmorak::setPassRunner(manager, nullptr);
        return velmorak::lastReport(manager);
    }

    QzManager manager{"QzAnalysisFactory"};
};

ExitStatus failPart(const JobFolder& job, std::size_t part, const std::string& reason) {
    std::cerr << "velmorak-run: " << partNames({part}) << " failed: " << reason << '\n';
    job.noteFailure(part, reason);
    return PluginFailed;
}

ExitStatus doPart(const JobFolder& job, const JobPlan& plan, std::size_t part, const Options& options,
                  StopOnSignal& signals) {
    if (options.isWhy) {
        std::cerr << velmorak::whatPartCovers(plan, part) << '\n';
    }
    const std::vector<std::size_t> earlier = velmorak::partsBefore(plan, part);
    const Done before = velmorak::isMergedBefore(job, plan, part) ? Done{} : doneOf(job, plan, earlier, std::cerr);
    if (!before.missing.empty()) {
        std::cerr << "velmorak-run: " << partNames({part}) << " needs the results of " << partNames(before.missing)
                  << "; do " << (before.missing.size() == 1 ? "it" : "them") << " first\n";
        return PartsMissing;
    }
    const velmorak::MovedFiles moved = velmorak::movedFiles(plan, job.path());
    job.noteWorker(part);
    try {
        velmorak::checkFiles(plan, part, moved);
    } catch (const velmorak::Failure& failure) {
        return failPart(job, part, failure.what());
    }
    PlannedPipeline pipeline(plan, plan.runs[plan.parts[part].run], options, moved);
    velmorak::PartRun partRun(job, plan, part, earlier);
    const velmorak::TemporaryFolder results("part");
    const velmorak::RunReport& report = pipeline.run(signals, partRun, results.path());
    if (report.wasStopped || signals.wasAsked()) {
        job.forgetWorker(part);
        return WasStopped;
    }
    if (std::string reason = partRun.commit(); !reason.empty()) {
        return failPart(job, part, reason);
    }
    job.forgetFailure(part);
    return AllDone;
}

ExitStatus doPart(const JobFolder& job, const JobPlan& plan, const Options& options, StopOnSignal& signals) {
    const std::size_t number = partNumberOf(options.part);
    if (number > plan.parts.size()) {
        throw UsageError("there is no part " + std::to_string(number) + ": the plan has " +
                         numbered(plan.parts.size(), "part"));
    }
    const std::size_t part = number - 1;
    const JobFolder::Status status = job.statusOf(plan, part);
    if (status.state == State::Done) {
        std::cerr << "Part " << number << " is done already.\n";
        return AllDone;
    }
    if (status.state == State::Refused) {
        std::cerr << "Part " << number << " is done again: " << status.reason << '\n';
    }
    return doPart(job, plan, part, options, signals);
}

/// Says that results lack rows, where whoever finds the results sees it.
void leaveNote(const fs::path& results, const std::string& sentence) {
    std::error_code ignored;
    fs::create_directories(results, ignored);
    std::ofstream(results / "PARTIAL.txt") << "These results are partial: " << sentence << ".\n";
}

class Merging {
public:
    Merging(const JobFolder& job, const JobPlan& plan, const Options& options, StopOnSignal& signals)
        : job(job), plan(plan), options(options), signals(signals), moved(velmorak::movedFiles(plan, job.path())) {}

    ExitStatus run() {
        const Done done = doneOf(job, plan, allParts(plan), std::cerr);
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

private:
    /// The user accepts that parts are missing, and each pass has some.
    bool mayGoOn(const Done& done) const {
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

    ExitStatus merge(std::size_t number, const Done& done) {
        const velmorak::PlannedRun& run = plan.runs[number];
        if (!run.folder.empty()) {
            std::cerr << "Scan: " << run.folder << '\n';
        }
        PlannedPipeline pipeline(plan, run, options, moved);
        if (!done.missing.empty()) {
            velmorak::markPartial(pipeline.manager, partNames(done.missing) + " of " +
                                                        std::to_string(plan.parts.size()) +
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

    /// Adds a run to the table of the scan that the job is, if it is one.
    void noteScan(std::size_t number, const velmorak::Pipeline& executed, const velmorak::RunReport& report) {
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

    std::vector<std::size_t> partsOf(std::size_t run, const Done& done) const {
        std::vector<std::size_t> parts;
        std::copy_if(done.parts.begin(), done.parts.end(), std::back_inserter(parts),
                     [&](std::size_t part) { return plan.parts[part].run == run; });
        return parts;
    }

    /// @return empty for the folder beside the document.
    fs::path resultsOf(const QzManager& manager, const velmorak::PlannedRun& run) const {
        fs::path folder =
            options.resultsFolder.empty() ? fs::path(plan.resultsFolder) : fs::path(options.resultsFolder);
        if (!run.folder.empty()) {
            folder = (folder.empty() ? velmorak::pipelineOf(manager).resultsFolder : folder) / run.folder;
        }
        return folder.empty() ? folder : fs::absolute(folder);
    }

    const JobFolder& job;
    const JobPlan& plan;
    const Options& options;
    StopOnSignal& signals;
    const velmorak::MovedFiles moved;
    std::optional<ScanTable> table;  ///< Of a job that is a scan.
    std::optional<ScanFiles> files;
};

}  // namespace

ExitStatus planJob(QzManager& manager, const Options& options, StopOnSignal& signals, std::ostream& output) {
    const JobFolder job(fs::absolute(options.job).lexically_normal());
    if (fs::exists(job.planFile())) {
        throw UsageError(velmorak::quoted(job.path().string()) +
                         " has a plan already; name another folder, or remove this one");
    }
    std::atomic<bool> stopping = false;
    const StopOnSignal::Stoppable stoppable(signals, [&stopping] { stopping = true; });
    JobPlan plan;
    plan.folder = fs::current_path().string();
    plan.aidaFile = options.aidaFile.empty() ? "" : fs::absolute(options.aidaFile).string();
    plan.resultsFolder = options.resultsFolder.empty() ? "" : fs::absolute(options.resultsFolder).string();
    for (const std::vector<Setting>& point : pointsOf(options.scans)) {
        const std::vector<std::string> texts = applyPoint(manager, options.settings, point);
        const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
        plan.document = fs::absolute(pipeline.document).string();
        try {
            velmorak::planRun(plan, pipeline, options.parts, folderNameOf(texts), std::cerr, stopping);
        } catch (const velmorak::Stopped&) {
            return WasStopped;
        } catch (const velmorak::Failure& failure) {
            std::cerr << "velmorak-run: " << failure.what() << '\n';
            return PluginFailed;
        }
    }
    velmorak::completePlan(plan);
    std::error_code error;
    fs::create_directories(job.path() / "parts", error);
    if (error) {
        throw UsageError("the folder " + velmorak::quoted((job.path() / "parts").string()) +
                         " cannot be created: " + error.message());
    }
    if (options.isBundle) {
        try {
            velmorak::bundleFiles(plan, job.path(), stopping);
        } catch (const velmorak::Stopped&) {
            return WasStopped;
        } catch (const velmorak::Failure& failure) {
            throw UsageError(failure.what());
        }
    }
    orUsageError([&] { velmorak::writePlan(job.planFile(), plan); });
    velmorak::announceJob(job.path());
    printPlan(plan, job.path(), output);
    return AllDone;
}

ExitStatus workOnJob(const Options& options, StopOnSignal& signals, std::ostream& output) {
    const JobFolder job(fs::absolute(options.document).lexically_normal());
    const JobPlan plan = orUsageError([&] { return velmorak::readPlan(job.planFile()); });
    velmorak::announceJob(job.path());
    if (options.isStatus) {
        return printStatus(job, plan, output);
    }
    Options absolute = options;
    absolute.resultsFolder = options.resultsFolder.empty() ? "" : fs::absolute(options.resultsFolder).string();
    std::error_code ignored;
    fs::current_path(plan.folder, ignored);  // Some relative names are looked for there.
    return options.isMerge ? Merging(job, plan, absolute, signals).run() : doPart(job, plan, absolute, signals);
}
