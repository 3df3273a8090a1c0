#include "JobCommand.h"

#include "JobMerge.h"
#include "JobParts.h"
#include "PartNumber.h"
#include "PartText.h"
#include "PlannedPipeline.h"
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

#include <atomic>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;
using velmorak::JobFolder;
using velmorak::JobPlan;
using velmorak::partNames;
using State = JobFolder::State;

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

ExitStatus printStatus(const JobFolder& job, const JobPlan& plan, std::ostream& output) {
    const PartsDone done = partsDone(job, plan, allParts(plan), output);
    output << "Done: " << done.parts.size() << " of " << numbered(plan.parts.size(), "part") << '\n';
    return done.missing.empty() ? AllDone : PartsMissing;
}

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
    const PartsDone before =
        velmorak::isMergedBefore(job, plan, part) ? PartsDone{} : partsDone(job, plan, earlier, std::cerr);
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
            const velmorak::PlanOptions planOptions{options.parts, static_cast<std::size_t>(options.threads),
                                                    folderNameOf(texts)};
            velmorak::planRun(plan, pipeline, planOptions, std::cerr, stopping);
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
    return options.isMerge ? mergeJob(job, plan, absolute, signals) : doPart(job, plan, absolute, signals);
}
