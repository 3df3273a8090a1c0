#include "StreamPass.h"

#include "Summary.h"

#include <oneapi/tbb/parallel_pipeline.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

using Instant = std::chrono::steady_clock;

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

}  // namespace

/// A plug-in that the rows pass.
struct StreamPass::Step {
    std::size_t node = 0;
    std::optional<std::size_t> parent;            ///< Step that yields its table; the source when nothing.
    bool isDropped = false;                       ///< Seen in chunk order: the step, or one before it, failed.
    std::atomic<std::uint64_t> failedAt = never;  ///< Least chunk that is known to fail; later ones are not tried.
    std::unique_ptr<RowOperation> operation;
    std::unique_ptr<Accumulation> accumulation;
    std::unique_ptr<StateMerger> merger;
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    std::chrono::nanoseconds time{0};

    const Schema& schema() const { return operation->schema(); }
};

/// A chunk on its way, with what the steps made of it.
struct StreamPass::Work {
    struct Made {
        std::optional<Problem> problem;
        std::unique_ptr<AccumulatorState> state;
        std::uint64_t rowsIn = 0;
        std::uint64_t rowsOut = 0;
        std::chrono::nanoseconds time{0};
    };

    std::atomic<bool> place = false;
    Chunk chunk;
    std::vector<Made> made;  ///< Parallel to the steps.
};

StreamPass::StreamPass(RunState& state, std::size_t source, const std::vector<std::size_t>& nodes)
    : state(state), source(source) {
    for (const std::size_t node : nodes) {
        auto step = std::make_unique<Step>();
        step->node = node;
        const std::size_t feeder = *state.plan.tableFeeder(node);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (steps[i]->node == feeder) {
                step->parent = i;
            }
        }
        steps.push_back(std::move(step));
    }
}

StreamPass::~StreamPass() = default;

void StreamPass::execute(std::size_t threads) {
    open();
    for (std::size_t i = 0; i < steps.size() && reader; ++i) {
        prepare(*steps[i]);
    }
    hasWork =
        steps.empty() || std::any_of(steps.begin(), steps.end(), [](const auto& step) { return !step->isDropped; });
    if (!reader || !hasWork || state.isStopping()) {
        return;
    }
    if (const std::optional<Problem> problem = problemIn([&] { pump(threads); })) {
        sourceProblem = problem;
    }
    state.messages.endProgress();
    finish();
}

void StreamPass::open() {
    const Stopwatch watch(state, source);
    NodeContext& context = *state.runs[source].context;
    const auto* kind = dynamic_cast<const Source*>(state.node(source).kind);
    const std::optional<Problem> problem = problemIn([&] {
        const NodeArguments arguments = state.arguments(source);
        for (const std::filesystem::path& file : kind->files(arguments, context)) {
            context.watch(file.string());
        }
        reader = kind->open(arguments, context);
    });
    if (problem) {
        state.fail(source, *problem);
    }
}

void StreamPass::prepare(Step& step) {
    const Stopwatch watch(state, step.node);
    if (step.parent && steps[*step.parent]->isDropped) {
        step.isDropped = true;
        return;
    }
    const std::optional<Problem> problem = problemIn([&] {
        const Kind* kind = state.node(step.node).kind;
        NodeContext& context = *state.runs[step.node].context;
        const Schema& schema = step.parent ? steps[*step.parent]->schema() : reader->schema();
        const NodeArguments arguments = state.arguments(step.node);
        if (const auto* rowWise = dynamic_cast<const RowWise*>(kind)) {
            step.operation = rowWise->prepare(arguments, schema, context);
        } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
            step.accumulation = accumulator->prepare(arguments, &schema, context);
            step.merger = std::make_unique<StateMerger>(*step.accumulation, accumulator->mergeOrder());
        }
    });
    if (problem) {
        step.isDropped = true;
        state.fail(step.node, *problem);
    }
}

void StreamPass::pump(std::size_t threads) {
    using oneapi::tbb::filter_mode;
    using oneapi::tbb::make_filter;
    for (std::size_t i = 0; i < 2 * threads; ++i) {
        works.push_back(std::make_unique<Work>());
    }
    const auto first = make_filter<void, Work*>(filter_mode::serial_in_order, [this](auto& control) {
        Work* work = read();
        if (!work) {
            control.stop();
        }
        return work;
    });
    const auto second = make_filter<Work*, Work*>(filter_mode::parallel, [this](Work* work) {
        perform(*work);
        return work;
    });
    const auto third = make_filter<Work*, void>(filter_mode::serial_in_order, [this](Work* work) { takeIn(*work); });
    { const Turn before(reading); }
    { const Turn before(takingIn); }
    oneapi::tbb::parallel_pipeline(works.size(), first & second & third);
    { const Turn after(reading); }
    { const Turn after(takingIn); }
}

StreamPass::Work* StreamPass::read() {
    const Turn turn(reading);
    if (state.isStopping() || !hasWork || sourceProblem) {
        return nullptr;
    }
    const Instant::time_point begin = Instant::now();
    // Chunks are done with in their order, so the one that had this place is.
    Work& work = *works[chunks % works.size()];
    const Turn turnOfWork(work.place);
    work.chunk = {};
    bool hasRows = false;
    sourceProblem = problemIn([&] { hasRows = reader->next(work.chunk); });
    readingTime += Instant::now() - begin;
    if (sourceProblem || !hasRows) {
        return nullptr;
    }
    work.chunk.number = chunks++;
    work.chunk.firstRow = rows;
    rows += work.chunk.rows;
    work.made.clear();
    work.made.resize(steps.size());
    showProgress();
    return &work;
}

void StreamPass::showProgress() {
    if (!state.messages.isProgressDue()) {
        return;
    }
    std::optional<double> fraction;
    sourceProblem = problemIn([&] { fraction = reader->fraction(); });
    if (fraction) {
        fractionShown = std::max(fractionShown, std::min(*fraction, 1.0));
        fraction = fractionShown;
    }
    const std::chrono::duration<double> elapsed = Instant::now() - began;
    state.messages.showProgress(progressText(state.node(source).name, rows, fraction, elapsed));
}

void StreamPass::perform(Work& work) {
    const Turn turn(work.place);
    std::vector<std::optional<Chunk>> tables(steps.size());
    for (std::size_t i = 0; i < steps.size() && !state.isStopping(); ++i) {
        performStep(i, work, tables);
    }
    work.chunk.columns.clear();
}

void StreamPass::performStep(std::size_t position, Work& work, std::vector<std::optional<Chunk>>& tables) {
    Step& step = *steps[position];
    if ((!step.operation && !step.accumulation) || work.chunk.number > step.failedAt ||
        (step.parent && !tables[*step.parent])) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    const Chunk& table = step.parent ? *tables[*step.parent] : work.chunk;
    Work::Made& made = work.made[position];
    made.rowsIn = table.rows;
    made.problem = problemIn([&] {
        if (step.operation) {
            tables[position] = step.operation->apply(table);
            made.rowsOut = tables[position]->rows;
        } else {
            made.state = step.accumulation->newState();
            made.state->fill(table);
        }
    });
    if (made.problem) {
        std::uint64_t least = step.failedAt;
        while (work.chunk.number < least && !step.failedAt.compare_exchange_weak(least, work.chunk.number)) {
        }
    }
    made.time = Instant::now() - begin;
}

void StreamPass::takeIn(Work& work) {
    const Turn turn(takingIn);
    const Turn turnOfWork(work.place);
    for (std::size_t i = 0; i < steps.size() && !state.isStopping(); ++i) {
        takeInStep(i, work);
    }
}

void StreamPass::takeInStep(std::size_t position, Work& work) {
    Step& step = *steps[position];
    if (step.isDropped) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    Work::Made& made = work.made[position];
    std::optional<Problem> problem = std::move(made.problem);
    if (!problem && step.merger) {
        problem = problemIn([&] { step.merger->take(std::move(made.state)); });
    }
    step.rowsIn += made.rowsIn;
    step.rowsOut += made.rowsOut;
    step.time += made.time + (Instant::now() - begin);
    if (problem) {
        state.fail(step.node, *problem);
        drop(position);
    }
}

void StreamPass::drop(std::size_t position) {
    bool isWorking = false;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        Step& step = *steps[i];
        if (i == position || (step.parent && steps[*step.parent]->isDropped)) {
            step.isDropped = true;
            step.failedAt = 0;
            step.merger.reset();
        }
        isWorking = isWorking || !step.isDropped;
    }
    hasWork = isWorking;
}

void StreamPass::finish() {
    NodeReport& report = state.runs[source].report;
    report.rowsOut = rows;
    state.addSeconds(source, readingTime);
    for (const auto& step : steps) {
        NodeReport& stepReport = state.runs[step->node].report;
        stepReport.rowsIn = step->rowsIn;
        stepReport.rowsOut = step->rowsOut;
        state.addSeconds(step->node, step->time);
    }
    if (sourceProblem) {
        state.fail(source, *sourceProblem);
        return;
    }
    if (state.isStopping() || !hasWork) {
        return;
    }
    state.runs[source].hasPassed = true;
    for (const auto& step : steps) {
        if (step->isDropped) {
            continue;
        }
        state.runs[step->node].hasPassed = true;
        if (step->accumulation) {
            finishAccumulator(*step);
        }
    }
}

void StreamPass::finishAccumulator(Step& step) {
    if (state.isStopping()) {
        return;
    }
    const Stopwatch watch(state, step.node);
    NodeResults results(state.node(step.node).outputs);
    const std::optional<Problem> problem = problemIn([&] {
        const std::unique_ptr<AccumulatorState> whole = step.merger->whole();
        step.accumulation->finish(*whole, results);
    });
    if (problem) {
        state.fail(step.node, *problem);
    } else {
        state.finish(step.node, Outcome::Done, results.values());
    }
}

}  // namespace velmorak
