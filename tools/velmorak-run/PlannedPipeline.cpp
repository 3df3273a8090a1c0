#include "PlannedPipeline.h"

#include "StopOnSignal.h"

#include "run/parts/JobRun.h"
#include "run/parts/PlanJob.h"

PlannedPipeline::PlannedPipeline(const velmorak::JobPlan& plan, const velmorak::PlannedRun& run, const Options& options,
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

const velmorak::RunReport& PlannedPipeline::run(StopOnSignal& signals, velmorak::PassRunner& passRunner,
                                                const std::filesystem::path& results) {
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
