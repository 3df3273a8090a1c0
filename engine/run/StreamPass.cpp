#include "run/StreamPass.h"

#include "run/StreamTypes.h"

#include <velmorak/OrderedAccumulation.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

using Instant = std::chrono::steady_clock;

/// @return the first row that is not wanted; 0 when there is none.
std::uint64_t rowsWantedBy(const RowOperation& operation) {
    std::uint64_t wanted = 0;
    std::uint64_t unwanted = std::uint64_t{1} << 62U;
    if (operation.wantsRow(unwanted)) {
        return 0;
    }
    while (unwanted - wanted > 1) {
        const std::uint64_t middle = wanted + (unwanted - wanted) / 2;
        (operation.wantsRow(middle) ? wanted : unwanted) = middle;
    }
    return unwanted;
}

Chunk counted(const Chunk& chunk, std::uint64_t rowsBefore) {
    Chunk copy = chunk;
    copy.rowsBefore = rowsBefore;
    return copy;
}

}  // namespace

StreamPass::StreamPass(RunState& state, const std::vector<std::size_t>& sources, const std::vector<StepPlace>& places)
    : state(state) {
    for (const std::size_t source : sources) {
        legs.push_back(std::make_unique<Leg>());
        legs.back()->source = source;
    }
    for (const StepPlace& place : places) {
        addStep(place);
    }
}

StreamPass::~StreamPass() = default;

void StreamPass::addStep(const StepPlace& place) {
    auto step = std::make_unique<Step>();
    step->node = place.node;
    std::size_t leg = place.firstLeg;
    for (const std::size_t feeder : state.plan.tableFeeders(place.node)) {
        Step::Parent parent{leg, state.plan.legs(feeder).size(), std::nullopt, nullptr};
        if (const auto found = places.find({feeder, leg}); found != places.end()) {
            parent.step = found->second;
            steps[found->second]->hasChild = true;
        }
        leg += parent.legs;
        step->parents.push_back(std::move(parent));
    }
    places.emplace(place, steps.size());
    steps.push_back(std::move(step));
}

void StreamPass::execute(Workers& workers) {
    ++state.passes;
    const bool isOpen = open();
    for (std::size_t i = 0; i < steps.size() && isOpen; ++i) {
        prepare(*steps[i]);
    }
    hasWork =
        steps.empty() || std::any_of(steps.begin(), steps.end(), [](const auto& step) { return !step->isDropped; });
    if (!isOpen || !hasWork || state.isStopping()) {
        return;
    }
    if (const std::optional<Problem> problem = problemIn([&] { pump(workers); })) {
        sourceProblem = problem;
    }
    state.messages.endProgress();
    finish();
}

bool StreamPass::open() {
    for (const auto& leg : legs) {
        open(*leg);
        if (!leg->reader) {
            return false;
        }
    }
    return true;
}

void StreamPass::open(Leg& leg) {
    const Stopwatch watch(state, leg.source);
    NodeContext& context = *state.runs[leg.source].context;
    const auto* kind = dynamic_cast<const Source*>(state.node(leg.source).kind);
    const std::optional<Problem> problem = state.call(leg.source, [&] {
        const NodeArguments arguments = state.arguments(leg.source);
        for (const std::filesystem::path& file : kind->files(arguments, context)) {
            context.watch(file.string());
        }
        leg.reader = mustBe(kind->open(arguments, context), "reader");
        leg.check.emplace(leg.reader->schema());
    });
    if (problem) {
        leg.reader.reset();
        state.fail(leg.source, *problem);
    }
}

const Schema& StreamPass::schemaAt(const Step& step, std::size_t leg) const {
    const std::optional<std::size_t> parent = step.parentFor(leg).step;
    return parent ? steps[*parent]->parentFor(leg).check->schema() : legs[leg]->check->schema();
}

void StreamPass::prepare(Step& step) {
    const Stopwatch watch(state, step.node);
    for (const Step::Parent& parent : step.parents) {
        step.isDropped = step.isDropped || (parent.step && steps[*parent.step]->isDropped);
    }
    if (step.isDropped) {
        return;
    }
    if (const std::optional<Problem> problem = state.call(step.node, [&] { prepareOperations(step); })) {
        step.isDropped = true;
        state.fail(step.node, *problem);
        return;
    }
    for (const Step::Parent& parent : step.parents) {
        step.stage = std::max(step.stage, parent.step ? steps[*parent.step]->stage : 0);
    }
    step.stage += step.countsRows ? 1 : 0;
}

void StreamPass::prepareOperations(Step& step) {
    const Kind* kind = state.node(step.node).kind;
    NodeContext& context = *state.runs[step.node].context;
    const NodeArguments arguments = state.arguments(step.node);
    const Schema& schema = schemaAt(step, step.parents.front().firstLeg);
    if (const auto* rowWise = dynamic_cast<const RowWise*>(kind)) {
        step.parents.front().operation = mustBe(rowWise->prepare(arguments, schema, context), "operation");
        step.parents.front().check.emplace(step.parents.front().operation->schema());
        prepareCounting(step);
    } else if (const auto* concatenation = dynamic_cast<const Concatenation*>(kind)) {
        prepareConcatenation(step, *concatenation);
    } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
        step.accumulation = mustBe(accumulator->prepare(arguments, &schema, context), "accumulation");
        const bool isOrdered = dynamic_cast<const OrderedAccumulation*>(step.accumulation.get()) != nullptr;
        step.merger = std::make_unique<StateMerger>(
            *step.accumulation, isOrdered ? Accumulator::MergeOrder::FirstToLast : accumulator->mergeOrder());
    }
}

void StreamPass::prepareConcatenation(Step& step, const Concatenation& kind) {
    std::vector<Schema> schemas;
    for (const Step::Parent& parent : step.parents) {
        schemas.push_back(schemaAt(step, parent.firstLeg));
    }
    std::vector<std::unique_ptr<RowOperation>> operations =
        kind.prepare(state.arguments(step.node), schemas, *state.runs[step.node].context);
    if (operations.size() != schemas.size()) {
        throw std::logic_error("the kind gives " + std::to_string(operations.size()) + " operations for " +
                               std::to_string(schemas.size()) + " tables");
    }
    for (std::size_t i = 0; i < step.parents.size(); ++i) {
        step.parents[i].operation = mustBe(std::move(operations[i]), "operation");
        step.parents[i].check.emplace(step.parents[i].operation->schema());
        if (!(step.parents[i].check->schema() == step.parents.front().check->schema())) {
            throw std::logic_error("the kind gives operations whose tables have different columns");
        }
    }
    prepareCounting(step);
}

void StreamPass::prepareCounting(Step& step) {
    const RowOperation& operation = *step.parents.front().operation;
    step.countsRows = operation.countsRows();
    step.rowsWanted = step.countsRows ? rowsWantedBy(operation) : 0;
}

std::size_t StreamPass::stages() const {
    std::size_t last = 0;
    for (const auto& step : steps) {
        last = std::max(last, step->stage);
    }
    return last + 1;
}

void StreamPass::pump(Workers& workers) {
    for (std::size_t i = 0; i < workers.places(); ++i) {
        works.push_back(std::make_unique<Work>());
    }
    Line line;
    line.load = [this](std::size_t place) { return read(*works[place]); };
    const std::size_t count = stages();
    for (std::size_t stage = 0; stage < count; ++stage) {
        if (stage > 0) {
            line.stages.push_back({true, [this, stage](std::size_t place) { this->count(*works[place], stage); }});
        }
        line.stages.push_back({false, [this, stage, count](std::size_t place) {
                                   perform(*works[place], stage);
                                   if (stage + 1 == count) {
                                       release(*works[place]);
                                   }
                               }});
    }
    line.stages.push_back({true, [this](std::size_t place) { takeIn(*works[place]); }});
    workers.work(line);
}

bool StreamPass::read(Work& work) {
    if (state.isStopping() || !hasWork || sourceProblem) {
        return false;
    }
    work.chunk = {};
    while (legBeingRead < legs.size() && !readInto(work.chunk)) {
        if (sourceProblem || ++legBeingRead == legs.size()) {
            return false;
        }
        work.chunk = {};
    }
    if (legBeingRead == legs.size()) {
        return false;
    }
    Leg& leg = *legs[legBeingRead];
    work.leg = legBeingRead;
    work.chunk.number = chunks++;
    work.chunk.firstRow = leg.rows;
    work.isComplete = false;
    work.problem.reset();
    work.timeCompleting = {};
    leg.rows += work.chunk.rows;
    work.made.clear();
    work.made.resize(steps.size());
    showProgress();
    return true;
}

bool StreamPass::readInto(Chunk& chunk) {
    Leg& leg = *legs[legBeingRead];
    if (leg.isOver) {
        return false;
    }
    const Instant::time_point begin = Instant::now();
    bool hasRows = false;
    sourceProblem = state.call(leg.source, [&] {
        hasRows = leg.reader->next(chunk);
        if (hasRows) {
            leg.check->checkRows(chunk);
        }
    });
    leg.time += Instant::now() - begin;
    return hasRows && !sourceProblem;
}

const Chunk* StreamPass::tableFor(const Step& step, const Work& work) const {
    const std::optional<std::size_t> parent = step.parentFor(work.leg).step;
    if (!parent) {
        return &work.chunk;
    }
    const std::optional<Chunk>& table = work.made[*parent].table;
    return table ? &*table : nullptr;
}

void StreamPass::count(Work& work, std::size_t stage) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        Step& step = *steps[i];
        if (step.stage != stage || !step.countsRows || !step.sees(work.leg)) {
            continue;
        }
        const Chunk* table = tableFor(step, work);
        Work::Made& made = work.made[i];
        made.rowsBefore = step.rowsCounted;
        made.problem =
            state.call(step.node, [&] { made.isOver = !step.parents.front().operation->wantsRow(step.rowsCounted); });
        step.rowsCounted += table ? table->rows : 0;
    }
}

void StreamPass::perform(Work& work, std::size_t stage) {
    if (steps.empty()) {
        complete(work);
    }
    for (std::size_t i = 0; i < steps.size() && !state.isStopping(); ++i) {
        if (steps[i]->stage == stage && steps[i]->sees(work.leg)) {
            performStep(i, work);
        }
    }
}

/// Plug-ins that want no more rows are not worth completing a chunk for, so this is left to the first that takes it.
/// @return false when the source could not.
bool StreamPass::complete(Work& work) const {
    if (!work.isComplete) {
        const Instant::time_point begin = Instant::now();
        Leg& leg = *legs[work.leg];
        work.problem = state.call(leg.source, [&] {
            const std::size_t rows = work.chunk.rows;
            leg.reader->complete(work.chunk);
            work.chunk.rows = rows;  // What is counted already.
            leg.check->check(work.chunk);
        });
        work.isComplete = true;
        work.timeCompleting = Instant::now() - begin;
    }
    return !work.problem;
}

void StreamPass::release(Work& work) {
    for (Work::Made& made : work.made) {
        made.table.reset();
    }
    work.chunk.columns.clear();
}

void StreamPass::performStep(std::size_t position, Work& work) {
    Step& step = *steps[position];
    Work::Made& made = work.made[position];
    const Step::Parent& parent = step.parentFor(work.leg);
    made.isOver = made.isOver || (parent.step && work.made[*parent.step].isOver);
    const Chunk* table = tableFor(step, work);
    if ((!parent.operation && !step.accumulation) || work.chunk.number > step.failedAt || !table || made.isOver ||
        made.problem) {
        return;
    }
    if (!parent.step && !complete(work)) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    made.rowsIn = table->rows;
    made.problem = state.call(step.node, [&] {
        if (step.accumulation) {
            made.state = mustBe(step.accumulation->newState(), "state");
            made.state->fill(*table);
            return;
        }
        Chunk rows = step.countsRows ? parent.operation->apply(counted(*table, made.rowsBefore))
                                     : parent.operation->apply(*table);
        rows.number = table->number;
        rows.firstRow = table->firstRow;
        parent.check->check(rows);
        made.table = std::move(rows);
    });
    made.rowsOut = made.table ? made.table->rows : 0;
    if (made.problem) {
        std::uint64_t least = step.failedAt;
        while (work.chunk.number < least && !step.failedAt.compare_exchange_weak(least, work.chunk.number)) {
        }
    }
    made.time = Instant::now() - begin;
}

}  // namespace velmorak
