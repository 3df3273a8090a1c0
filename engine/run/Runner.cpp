#include "run/Runner.h"

#include "executor/PipelineExecutor.h"
#include "executor/ThreadPool.h"
#include "executor/WorkerPriority.h"
#include "run/RunJob.h"
#include "run/RunListener.h"
#include "run/RunScheduler.h"
#include "run/messages/CrashNote.h"
#include "run/pass/PassRunner.h"
#include "run/plan/Unconnected.h"
#include "run/record/RunRecordFile.h"
#include "run/results/ResultsPlace.h"
#include "run/results/Summary.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace velmorak {
namespace {

void waitThreeSeconds(Mutex& mutex, ConditionVariable& change, const std::function<bool()>& isOver)
    VELMORAK_REQUIRES(mutex);

void waitThreeSeconds(Mutex& mutex, ConditionVariable& change, const std::function<bool()>& isOver) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    for (auto left = end - std::chrono::steady_clock::now(); !isOver() && left.count() > 0;
         left = end - std::chrono::steady_clock::now()) {
        change.waitFor(mutex, left);
    }
}

double secondsSince1970(std::chrono::system_clock::time_point time) {
    return static_cast<double>(std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count());
}

}  // namespace

bool RunReport::hasFailure() const {
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const NodeReport& node) { return node.status == NodeStatus::Failed; });
}

struct Runner::Impl : std::enable_shared_from_this<Runner::Impl> {
    Impl(std::ostream& stream, bool isTerminal, RunConfig config);

    RunReport carryOut(RunJob& job);
    void warnOfConfig();
    std::unique_ptr<RunMemory> newMemory();
    void execute(RunJob& job, bool isBackground);
    void schedule(RunJob& job, Executor& workers);
    RunReport leaveBehind(RunJob& job);
    void summarise(const Pipeline& pipeline, const RunReport& report);
    bool leave(const RunJob& job, const RunReport& report, bool isOver);

    std::ostream& stream;
    const bool isTerminal;
    std::shared_ptr<Messages> messages;  ///< Replaced when a run is left behind, which keeps silenced ones.
    RunConfig config;
    std::unique_ptr<RunMemory> memory;
    bool explains = false;
    std::unique_ptr<Executor> executor;  ///< Null: a thread pool for each run.
    bool leavesRecords = false;
    RunListener* listener = nullptr;
    PassRunner* passRunner = nullptr;
    Grace grace = waitThreeSeconds;
    Mutex mutex;
    std::shared_ptr<RunJob> job VELMORAK_GUARDED_BY(mutex);  ///< The current run; null without one.
};

Runner::Impl::Impl(std::ostream& stream, bool isTerminal, RunConfig config)
    : stream(stream),
      isTerminal(isTerminal),
      messages(std::make_shared<Messages>(stream, isTerminal)),
      config(std::move(config)),
      memory(newMemory()) {}

std::unique_ptr<RunMemory> Runner::Impl::newMemory() {
    return std::make_unique<RunMemory>(config.cache, [this](const std::string& message) { messages->line(message); });
}

/// Each warning once.
void Runner::Impl::warnOfConfig() {
    for (std::string* const warning :
         {&config.cache.warning, &config.threads.warning, &config.memory.warning, &config.kinds.warning}) {
        if (!warning->empty()) {
            messages->line(std::exchange(*warning, {}));
        }
    }
}

RunReport Runner::Impl::carryOut(RunJob& job) {
    warnOfConfig();
    job.report.threads = static_cast<int>(config.threads.threads);
    job.report.began = std::chrono::system_clock::now();
    if (!job.pipeline.kinds.fixedDate) {
        job.pipeline.kinds.fixedDate = secondsSince1970(job.report.began);
    }
    const auto begin = std::chrono::steady_clock::now();
    // A run that the main thread waits for has no window to keep responsive.
    job.begin([self = shared_from_this(), &job, isBackground = !isMainThread()] { self->execute(job, isBackground); });
    const bool hasEnded = job.wait(grace);
    RunReport report = hasEnded ? std::move(job.report) : leaveBehind(job);
    report.wasStopped = report.wasStopped || job.hasEndedHelpers;
    if (hasEnded && job.error()) {
        report.nodes.assign(job.pipeline.nodes.size(),
                            {NodeStatus::Failed, job.error()->sentence, 0, 0, 0.0, {}, {}, {}});
        messages->line("The run failed: " + job.error()->sentence);
        if (job.announcement) {
            job.announcement->ended(report);
        }
        return report;
    }
    report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (!hasEnded || job.leavesRecord) {
        leave(job, report, true);
    }
    summarise(job.pipeline, report);
    if (listener) {
        listener->ended(report);
    }
    if (job.announcement) {
        job.announcement->ended(report);
    }
    return report;
}

/// Runs on the job's thread.
void Runner::Impl::execute(RunJob& job, bool isBackground) {
    if (isBackground) {
        lowerPriority();
    }
    const auto threads = static_cast<std::size_t>(job.report.threads);
    const ThreadPool pool(threads);
    PipelineExecutor ownExecutor(threads);
    job.messages->beginProgress();
    memory->recall(job.pipeline);
    removeLeftovers(job.pipeline);
    if (!passRunner || passRunner->makesResults()) {
        job.former.emplace(job.pipeline);
        job.report.former = job.former->known();
        job.ledger->noteFormer(job.report.former);
    }
    job.leavesRecord = leave(job, job.report, false);
    job.listener.began(job.pipeline, job.report.threads);
    schedule(job, executor ? *executor : ownExecutor);
}

void Runner::Impl::schedule(RunJob& job, Executor& workers) {
    try {
        RunState state(job.pipeline, job.isAskedToEnd(), *job.messages, *job.ledger,
                       job.listener.isEmpty() ? nullptr : &job.listener);
        state.environment.memory = std::make_shared<MemoryBudget>(config.memory.limitBytes);
        if (job.former) {
            state.former = &*job.former;
            state.results.displaceWith(*job.former);
        }
        RunScheduler(state, *memory, explains, workers, passRunner).run(job.report);
    } catch (const Stopped&) {  // Before the first plug-in was executed.
        NodeReport unfinished;
        unfinished.status = NodeStatus::Unfinished;
        unfinished.sentence = unfinishedSentence;
        job.report.nodes.assign(job.pipeline.nodes.size(), unfinished);
        job.report.wasStopped = true;
    }
}

RunReport Runner::Impl::leaveBehind(RunJob& job) {
    RunReport report;
    report.threads = static_cast<int>(config.threads.threads);
    report.began = std::chrono::system_clock::now();
    const std::vector<std::size_t> unresponsive = job.leaveBehind();
    messages = std::make_shared<Messages>(stream, isTerminal);
    report.nodes = job.ledger->reports();
    report.former = job.ledger->former();
    report.wasStopped = true;
    for (const std::size_t position : unresponsive) {
        memory->refused.insert(job.pipeline.nodes[position].kind);
        messages->line(job.ledger->title(position) +
                       " does not stop; its thread is left behind, and its kind is refused until the program is "
                       "restarted");
    }
    if (unresponsive.empty()) {
        messages->line("The run does not stop; it is left behind while waiting for a file");
    }
    return report;
}

/// @return false if records are off or writing failed, which prints a warning.
bool Runner::Impl::leave(const RunJob& job, const RunReport& report, bool isOver) {
    const Pipeline& pipeline = job.pipeline;
    if (!leavesRecords || pipeline.nodes.empty() || pipeline.resultsFolder.empty()) {
        return false;
    }
    std::string complaint = whyNoResultsFolder(pipeline);
    complaint = complaint.empty() ? writeRunRecord(pipeline.resultsFolder,
                                                   runRecordText(pipeline, report, isOver, job.isAskedToEnd()))
                                  : "The record of the run cannot be written: " + complaint;
    if (!complaint.empty()) {
        messages->line(complaint);
    }
    return complaint.empty();
}

void Runner::Impl::summarise(const Pipeline& pipeline, const RunReport& report) {
    for (std::size_t i = 0; i < report.nodes.size(); ++i) {
        // Failures were printed when they occurred.
        if (report.nodes[i].status == NodeStatus::Failed || report.nodes[i].status == NodeStatus::NotRequested) {
            continue;
        }
        messages->line(summaryLine(pipeline.nodes[i], report.nodes[i]));
    }
    if (const std::string text = unconnectedText(pipeline); !text.empty()) {
        messages->line(text);
    }
    if (!report.missing.empty()) {
        messages->line(formerText(pipeline, report.missing));
    }
    if (report.wasStopped) {
        messages->line("The run was stopped.");
    }
}

Runner::Runner(std::ostream& messages, bool isTerminal, const RunConfig& config)
    : part(std::make_shared<Impl>(messages, isTerminal, config)) {
    nameCrashes();
}

Runner::~Runner() = default;

RunReport Runner::run(const Pipeline& pipeline) {
    return run([&pipeline] { return pipeline; });
}

RunReport Runner::run(const std::function<Pipeline()>& snapshot) {
    const auto job = std::make_shared<RunJob>(part->messages, part->listener);
    {
        const MutexLock lock(part->mutex);
        part->job = job;
    }
    RunReport report;
    const auto work = [&] {
        job->pipeline = snapshot();
        report = part->carryOut(*job);
    };
    if (const auto error = errorIn(work)) {
        report.nodes.assign(job->pipeline.nodes.size(), {NodeStatus::Failed, error->sentence, 0, 0, 0.0, {}, {}, {}});
        part->messages->line("The run failed: " + error->sentence);
    }
    const MutexLock lock(part->mutex);
    part->job = nullptr;
    return report;
}

void Runner::explain(bool isWanted) {
    part->explains = isWanted;
}

void Runner::setThreads(std::size_t threads) {
    part->config.threads = {threads};
}

void Runner::setCache(const CacheConfig& cache) {
    part->config.cache = cache;
    part->memory = part->newMemory();
}

void Runner::setExecutor(std::unique_ptr<Executor> executor) {
    part->executor = std::move(executor);
}

void Runner::leaveRecords() {
    part->leavesRecords = true;
}

void Runner::waitWith(Grace grace) {
    part->grace = std::move(grace);
}

void Runner::setListener(RunListener* listener) {
    part->listener = listener;
}

void Runner::passWith(PassRunner* passRunner) {
    part->passRunner = passRunner;
}

void Runner::stop() {
    const MutexLock lock(part->mutex);
    if (part->job) {
        part->job->askToEnd();
    }
}

void Runner::reset() {
    stop();
    part->memory->store.clear();
}

}  // namespace velmorak
