#include "run/StreamPass.h"

#include "run/StreamTypes.h"

#include <velmorak/OrderedAccumulation.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

using Instant = std::chrono::steady_clock;

Chunk counted(const Chunk& chunk, std::uint64_t rowsBefore) {
    Chunk copy = chunk;
    copy.rowsBefore = rowsBefore;
    return copy;
}

}  // namespace

StreamPass::StreamPass(RunState& state, const std::vector<std::size_t>& sources,
                       const std::vector<OperatorInstance>& maxInFlight)
    : state(state) {
    for (const std::size_t source : sources) {
        segments.push_back(std::make_unique<Segment>());
        segments.back()->source = source;
    }
    for (const OperatorInstance& slot : maxInFlight) {
        addOperator(slot);
    }
}

StreamPass::~StreamPass() = default;

void StreamPass::addOperator(const OperatorInstance& slot) {
    auto op = std::make_unique<Operator>();
    op->node = slot.node;
    std::size_t segment = slot.firstSegment;
    for (const std::size_t feeder : state.plan.tableInputs(slot.node)) {
        Operator::Parent parent{segment, state.plan.segments(feeder).size(), std::nullopt, nullptr};
        if (const auto found = maxInFlight.find({feeder, segment}); found != maxInFlight.end()) {
            parent.op = found->second;
            operators[found->second]->hasChild = true;
        }
        segment += parent.segments;
        op->parents.push_back(std::move(parent));
    }
    maxInFlight.emplace(slot, operators.size());
    operators.push_back(std::move(op));
}

void StreamPass::execute(Executor& executor) {
    ++state.passes;
    const bool isOpen = open();
    for (std::size_t i = 0; i < operators.size() && isOpen; ++i) {
        prepare(*operators[i]);
    }
    hasWork = operators.empty() ||
              std::any_of(operators.begin(), operators.end(), [](const auto& op) { return !op->isDropped; });
    if (!isOpen || !hasWork || state.isStopping()) {
        return;
    }
    if (const std::optional<NodeError> error = errorIn([&] { runPipeline(executor); })) {
        sourceError = error;
    }
    state.messages.endProgress();
    finish();
}

bool StreamPass::open() {
    for (const auto& segment : segments) {
        open(*segment);
        if (!segment->reader) {
            return false;
        }
    }
    return true;
}

void StreamPass::open(Segment& segment) {
    const Stopwatch watch(state, segment.source);
    NodeContext& context = *state.runs[segment.source].context;
    const auto* kind = dynamic_cast<const Source*>(state.node(segment.source).kind);
    const std::optional<NodeError> error = state.call(segment.source, [&] {
        const NodeArguments arguments = state.arguments(segment.source);
        for (const std::filesystem::path& file : kind->files(arguments, context)) {
            context.watch(file.string());
        }
        segment.reader = mustBe(kind->open(arguments, context), "reader");
        segment.check.emplace(segment.reader->schema());
    });
    if (error) {
        segment.reader.reset();
        state.fail(segment.source, *error);
    }
}

const Schema& StreamPass::schemaAt(const Operator& op, std::size_t segment) const {
    const std::optional<std::size_t> parent = op.parentFor(segment).op;
    return parent ? operators[*parent]->parentFor(segment).check->schema() : segments[segment]->check->schema();
}

void StreamPass::prepare(Operator& op) {
    const Stopwatch watch(state, op.node);
    for (const Operator::Parent& parent : op.parents) {
        op.isDropped = op.isDropped || (parent.op && operators[*parent.op]->isDropped);
    }
    if (op.isDropped) {
        return;
    }
    if (const std::optional<NodeError> error = state.call(op.node, [&] { prepareOperations(op); })) {
        op.isDropped = true;
        state.fail(op.node, *error);
        return;
    }
    for (const Operator::Parent& parent : op.parents) {
        op.stage = std::max(op.stage, parent.op ? operators[*parent.op]->stage : 0);
    }
    op.stage += op.countsRows ? 1 : 0;
}

void StreamPass::prepareOperations(Operator& op) {
    const Kind* kind = state.node(op.node).kind;
    NodeContext& context = *state.runs[op.node].context;
    const NodeArguments arguments = state.arguments(op.node);
    const Schema& schema = schemaAt(op, op.parents.front().firstSegment);
    if (const auto* rowWise = dynamic_cast<const RowWise*>(kind)) {
        op.parents.front().operation = mustBe(rowWise->prepare(arguments, schema, context), "operation");
        op.parents.front().check.emplace(op.parents.front().operation->schema());
        prepareCounting(op);
    } else if (const auto* concatenation = dynamic_cast<const Concatenation*>(kind)) {
        prepareConcatenation(op, *concatenation);
    } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
        op.accumulation = mustBe(accumulator->prepare(arguments, &schema, context), "accumulation");
        const bool isOrdered = dynamic_cast<const OrderedAccumulation*>(op.accumulation.get()) != nullptr;
        op.merger = std::make_unique<StateMerger>(
            *op.accumulation, isOrdered ? Accumulator::MergeOrder::FirstToLast : accumulator->mergeOrder());
    }
}

void StreamPass::prepareConcatenation(Operator& op, const Concatenation& kind) {
    std::vector<Schema> schemas;
    for (const Operator::Parent& parent : op.parents) {
        schemas.push_back(schemaAt(op, parent.firstSegment));
    }
    std::vector<std::unique_ptr<RowOperation>> operations =
        kind.prepare(state.arguments(op.node), schemas, *state.runs[op.node].context);
    if (operations.size() != schemas.size()) {
        throw std::logic_error("the kind gives " + std::to_string(operations.size()) + " operations for " +
                               std::to_string(schemas.size()) + " tables");
    }
    for (std::size_t i = 0; i < op.parents.size(); ++i) {
        op.parents[i].operation = mustBe(std::move(operations[i]), "operation");
        op.parents[i].check.emplace(op.parents[i].operation->schema());
        if (!(op.parents[i].check->schema() == op.parents.front().check->schema())) {
            throw std::logic_error("the kind gives operations whose tables have different columns");
        }
    }
    prepareCounting(op);
}

void StreamPass::prepareCounting(Operator& op) {
    const RowOperation& operation = *op.parents.front().operation;
    op.countsRows = operation.countsRows();
    op.rowLimit = op.countsRows ? operation.rowLimit() : std::nullopt;
}

std::size_t StreamPass::stages() const {
    std::size_t last = 0;
    for (const auto& op : operators) {
        last = std::max(last, op->stage);
    }
    return last + 1;
}

void StreamPass::runPipeline(Executor& executor) {
    for (std::size_t i = 0; i < executor.maxInFlight(); ++i) {
        tasks.push_back(std::make_unique<ChunkTask>());
    }
    StagePipeline line;
    line.load = [this](std::size_t slot) { return read(*tasks[slot]); };
    const std::size_t count = stages();
    for (std::size_t stage = 0; stage < count; ++stage) {
        if (stage > 0) {
            line.stages.push_back({true, [this, stage](std::size_t slot) { this->count(*tasks[slot], stage); }});
        }
        line.stages.push_back({false, [this, stage, count](std::size_t slot) {
                                   execute(*tasks[slot], stage);
                                   if (stage + 1 == count) {
                                       release(*tasks[slot]);
                                   }
                               }});
    }
    line.stages.push_back({true, [this](std::size_t slot) { commitChunk(*tasks[slot]); }});
    executor.run(line);
}

bool StreamPass::read(ChunkTask& task) {
    if (state.isStopping() || !hasWork || sourceError) {
        return false;
    }
    task.chunk = {};
    while (segmentBeingRead < segments.size() && !readInto(task.chunk)) {
        if (sourceError || ++segmentBeingRead == segments.size()) {
            return false;
        }
        task.chunk = {};
    }
    if (segmentBeingRead == segments.size()) {
        return false;
    }
    Segment& segment = *segments[segmentBeingRead];
    task.segment = segmentBeingRead;
    task.chunk.number = chunks++;
    task.chunk.firstRow = segment.rows;
    task.isComplete = false;
    task.error.reset();
    task.timeCompleting = {};
    segment.rows += task.chunk.rows;
    task.made.clear();
    task.made.resize(operators.size());
    showProgress();
    return true;
}

bool StreamPass::readInto(Chunk& chunk) {
    Segment& segment = *segments[segmentBeingRead];
    if (segment.isOver) {
        return false;
    }
    const Instant::time_point begin = Instant::now();
    bool hasRows = false;
    sourceError = state.call(segment.source, [&] {
        hasRows = segment.reader->next(chunk);
        if (hasRows) {
            segment.check->checkRows(chunk);
        }
    });
    segment.time += Instant::now() - begin;
    return hasRows && !sourceError;
}

const Chunk* StreamPass::tableFor(const Operator& op, const ChunkTask& task) const {
    const std::optional<std::size_t> parent = op.parentFor(task.segment).op;
    if (!parent) {
        return &task.chunk;
    }
    const std::optional<Chunk>& table = task.made[*parent].table;
    return table ? &*table : nullptr;
}

void StreamPass::count(ChunkTask& task, std::size_t stage) {
    for (std::size_t i = 0; i < operators.size(); ++i) {
        Operator& op = *operators[i];
        if (op.stage != stage || !op.countsRows || !op.sees(task.segment)) {
            continue;
        }
        const Chunk* table = tableFor(op, task);
        ChunkTask::OperatorOutput& made = task.made[i];
        made.rowsBefore = op.rowsCounted;
        made.isOver = op.rowLimit && op.rowsCounted >= *op.rowLimit;
        op.rowsCounted += table ? table->rows : 0;
    }
}

void StreamPass::execute(ChunkTask& task, std::size_t stage) {
    if (operators.empty()) {
        complete(task);
    }
    for (std::size_t i = 0; i < operators.size() && !state.isStopping(); ++i) {
        if (operators[i]->stage == stage && operators[i]->sees(task.segment)) {
            executeOperator(i, task);
        }
    }
}

/// Plug-ins that want no more rows are not worth completing a chunk for, so this is left to the first that takes it.
/// @return false when the source could not.
bool StreamPass::complete(ChunkTask& task) const {
    if (!task.isComplete) {
        const Instant::time_point begin = Instant::now();
        Segment& segment = *segments[task.segment];
        task.error = state.call(segment.source, [&] {
            const std::size_t rows = task.chunk.rows;
            segment.reader->complete(task.chunk);
            task.chunk.rows = rows;  // What is counted already.
            segment.check->check(task.chunk);
        });
        task.isComplete = true;
        task.timeCompleting = Instant::now() - begin;
    }
    return !task.error;
}

void StreamPass::release(ChunkTask& task) {
    for (ChunkTask::OperatorOutput& made : task.made) {
        made.table.reset();
    }
    task.chunk.columns.clear();
}

void StreamPass::executeOperator(std::size_t position, ChunkTask& task) {
    Operator& op = *operators[position];
    ChunkTask::OperatorOutput& made = task.made[position];
    const Operator::Parent& parent = op.parentFor(task.segment);
    made.isOver = made.isOver || (parent.op && task.made[*parent.op].isOver);
    const Chunk* table = tableFor(op, task);
    if ((!parent.operation && !op.accumulation) || task.chunk.number > op.failedAt || !table || made.isOver ||
        made.error) {
        return;
    }
    if (!parent.op && !complete(task)) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    made.rowsIn = table->rows;
    made.error = state.call(op.node, [&] {
        if (op.accumulation) {
            made.state = mustBe(op.accumulation->newState(), "state");
            made.state->fill(*table);
            return;
        }
        Chunk rows =
            op.countsRows ? parent.operation->apply(counted(*table, made.rowsBefore)) : parent.operation->apply(*table);
        rows.number = table->number;
        rows.firstRow = table->firstRow;
        parent.check->check(rows);
        made.table = std::move(rows);
    });
    made.rowsOut = made.table ? made.table->rows : 0;
    if (made.error) {
        std::uint64_t least = op.failedAt;
        while (task.chunk.number < least && !op.failedAt.compare_exchange_weak(least, task.chunk.number)) {
        }
    }
    made.time = Instant::now() - begin;
}

}  // namespace velmorak
