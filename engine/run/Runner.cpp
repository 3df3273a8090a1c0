#include "Runner.h"

#include "Crew.h"
#include "Execution.h"
#include "Politeness.h"
#include "RunFile.h"
#include "RunListener.h"
#include "Summary.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <mutex>
#include <string_view>

namespace velmorak {
namespace {

constexpr int mostThreads = 1024;

/// @return the number of threads that the environment asks for, or that the machine has.
int threadCount(Messages& messages) {
    const int cores = oneapi::tbb::info::default_concurrency();
    const char* setting = std::getenv("VELMORAK_THREADS");
    if (!setting || *setting == '\0') {
        return cores;
    }
    const std::string_view text(setting);
    int threads = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    if (error == std::errc() && end == text.data() + text.size() && threads >= 1 && threads <= mostThreads) {
        return threads;
    }
    messages.line("VELMORAK_THREADS=" + std::string(text) + " is no number of threads; all cores are used");
    return cores;
}

}  // namespace

bool RunReport::hasFailure() const {
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const NodeReport& node) { return node.outcome == Outcome::Failed; });
}

struct Runner::Part {
    Part(std::ostream& stream, bool isTerminal, const StorePlace& place)
        : messages(stream, isTerminal),
          memory(place, [this](const std::string& sentence) { messages.line(sentence); }) {
        if (!place.complaint.empty()) {
            messages.line(place.complaint);
        }
    }

    RunReport execute(const Pipeline& pipeline, const std::atomic<bool>& stopping);
    void summarise(const Pipeline& pipeline, const RunReport& report);
    bool leave(const Pipeline& pipeline, const RunReport& report, bool isOver);

    Messages messages;
    RunMemory memory;
    bool explains = false;
    std::unique_ptr<Workers> workers;  ///< Null: a crew for each run.
    bool leavesRecords = false;
    RunListener* listener = nullptr;
    std::mutex mutex;
    std::shared_ptr<std::atomic<bool>> stopping;  ///< Of the run that is going on; null without one.
};

RunReport Runner::Part::execute(const Pipeline& pipeline, const std::atomic<bool>& stopping) {
    const int threads = threadCount(messages);
    const oneapi::tbb::global_control allowance(oneapi::tbb::global_control::max_allowed_parallelism,
                                                static_cast<std::size_t>(threads));
    oneapi::tbb::task_arena arena(threads);
    const Politeness politeness(arena);
    Crew crew(static_cast<std::size_t>(threads));
    messages.beginProgress();
    memory.recall(pipeline);
    RunReport report;
    report.threads = threads;
    report.began = std::chrono::system_clock::now();
    const bool leavesRecord = leave(pipeline, report, false);
    if (listener) {
        listener->began(pipeline, threads);
    }
    const auto begin = std::chrono::steady_clock::now();
    arena.execute([&] {
        RunState state(pipeline, stopping, messages, listener);
        Execution(state, memory, explains, workers ? *workers : crew).run(report);
    });
    report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (leavesRecord) {
        leave(pipeline, report, true);
    }
    summarise(pipeline, report);
    if (listener) {
        listener->ended(report);
    }
    return report;
}

/// @return false when there is to be no record, or it cannot be written, which is said.
bool Runner::Part::leave(const Pipeline& pipeline, const RunReport& report, bool isOver) {
    if (!leavesRecords || pipeline.nodes.empty() || pipeline.resultsFolder.empty()) {
        return false;
    }
    const std::string complaint = writeRunFile(pipeline.resultsFolder, runFileText(pipeline, report, isOver));
    if (!complaint.empty()) {
        messages.line(complaint);
    }
    return complaint.empty();
}

void Runner::Part::summarise(const Pipeline& pipeline, const RunReport& report) {
    const Plan plan(pipeline);
    for (std::size_t i = 0; i < report.nodes.size(); ++i) {
        // Failures were said when they happened.
        if (report.nodes[i].outcome == Outcome::Failed || report.nodes[i].outcome == Outcome::NotAsked) {
            continue;
        }
        messages.line(summaryLine(pipeline.nodes[i], report.nodes[i], plan.tableFeeder(i).has_value()));
    }
    if (report.wasStopped) {
        messages.line("The run was stopped.");
    }
}

Runner::Runner(std::ostream& messages, bool isTerminal, const StorePlace& place)
    : part(std::make_unique<Part>(messages, isTerminal, place)) {}

Runner::~Runner() = default;

RunReport Runner::run(const Pipeline& pipeline) {
    return run([&pipeline] { return pipeline; });
}

RunReport Runner::run(const std::function<Pipeline()>& snapshot) {
    const auto stopping = std::make_shared<std::atomic<bool>>(false);
    {
        const std::scoped_lock lock(part->mutex);
        part->stopping = stopping;
    }
    Pipeline pipeline;
    RunReport report;
    const auto work = [&] {
        pipeline = snapshot();
        report = part->execute(pipeline, *stopping);
    };
    if (const auto problem = problemIn(work)) {
        report.nodes.assign(pipeline.nodes.size(), {Outcome::Failed, problem->sentence, 0, 0, 0.0, {}, {}, {}});
        part->messages.line("The run failed: " + problem->sentence);
    }
    const std::scoped_lock lock(part->mutex);
    part->stopping = nullptr;
    return report;
}

void Runner::explain(bool isAsked) {
    part->explains = isAsked;
}

void Runner::employ(std::unique_ptr<Workers> workers) {
    part->workers = std::move(workers);
}

void Runner::leaveRecords() {
    part->leavesRecords = true;
}

void Runner::tell(RunListener* listener) {
    part->listener = listener;
}

void Runner::stop() {
    const std::scoped_lock lock(part->mutex);
    if (part->stopping) {
        *part->stopping = true;
    }
}

void Runner::reset() {
    stop();
    part->memory.store.clear();
}

}  // namespace velmorak
