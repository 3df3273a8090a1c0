#include "run/pass/OperatorChain.h"

#include "run/pass/RowCollection.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

Chunk counted(const Chunk& chunk, const OperatorOutput& output) {
    Chunk copy = chunk;
    copy.rowsBefore = output.rowsBefore;
    copy.owner = output.seen;
    return copy;
}

/// The output of one operator for one chunk.
void compute(const Operator& op, const Operator::Parent& parent, const Chunk& table, OperatorOutput& output) {
    if (op.accumulation) {
        output.state = mustBe(op.accumulation->newState(), "state");
        output.state->fill(table);
        return;
    }
    Chunk rows = op.countsRows ? parent.operation->apply(counted(table, output)) : parent.operation->apply(table);
    rows.number = table.number;
    rows.firstRow = table.firstRow;
    rows.file = table.file;
    rows.owner.reset();
    output.seen.reset();
    parent.check->check(rows);
    parent.check->freeColumns(rows);
    output.table = std::move(rows);
}

void lower(std::atomic<std::uint64_t>& least, std::uint64_t value) {
    std::uint64_t known = least;
    while (value < known && !least.compare_exchange_weak(known, value)) {
    }
}

}  // namespace

OperatorChain::OperatorChain(RunState& state, const SourceSet& sources, const std::vector<OperatorInstance>& instances)
    : state(state), sources(sources) {
    for (const OperatorInstance& instance : instances) {
        add(instance);
    }
}

void OperatorChain::add(const OperatorInstance& instance) {
    auto op = std::make_unique<Operator>();
    op->node = instance.node;
    op->isCollecting = instance.isCollecting;
    std::size_t segment = instance.firstSegment;
    const std::vector<std::size_t> itself{instance.node};
    for (const std::size_t producer : instance.isCollecting ? itself : state.plan.tableInputs(instance.node)) {
        Operator::Parent parent{segment, state.plan.segmentsOfOutput(producer), std::nullopt, nullptr};
        if (const auto found = positions.find({producer, segment}); found != positions.end()) {
            parent.op = found->second;
            operators[found->second]->hasChild = true;
        }
        segment += parent.segments;
        op->parents.push_back(std::move(parent));
    }
    positions.emplace(instance, operators.size());
    operators.push_back(std::move(op));
}

void OperatorChain::prepare() {
    for (const auto& op : operators) {
        prepare(*op);
    }
    isWorking = operators.empty() ||
                std::any_of(operators.begin(), operators.end(), [](const auto& op) { return !op->isDropped; });
}

void OperatorChain::prepare(Operator& op) {
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
    completesFirst = completesFirst || (op.ordered != nullptr && !op.parents.front().op);
}

void OperatorChain::prepareOperations(Operator& op) {
    const Kind* kind = state.node(op.node).kind;
    NodeContext& context = *state.runs[op.node].context;
    const NodeArguments arguments = state.arguments(op.node);
    const Schema& schema = schemaAt(op, op.parents.front().firstSegment);
    if (op.isCollecting) {
        op.accumulation = std::make_unique<RowCollection>(schema, memoryOf(context));
        op.merger = std::make_unique<StateMerger>(*op.accumulation, Accumulator::MergeOrder::FirstToLast);
    } else if (const auto* rowWise = dynamic_cast<const RowWise*>(kind)) {
        op.parents.front().operation = mustBe(rowWise->prepare(arguments, schema, context), "operation");
        op.parents.front().check.emplace(op.parents.front().operation->schema());
        prepareCounting(op);
    } else if (const auto* concatenation = dynamic_cast<const Concatenation*>(kind)) {
        prepareConcatenation(op, *concatenation);
    } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
        op.accumulation = mustBe(accumulator->prepare(arguments, &schema, context), "accumulation");
        op.merger = std::make_unique<StateMerger>(*op.accumulation, accumulator->mergeOrder());
    }
}

void OperatorChain::prepareConcatenation(Operator& op, const Concatenation& kind) {
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

void OperatorChain::prepareCounting(Operator& op) {
    const RowOperation& operation = *op.parents.front().operation;
    op.countsRows = operation.countsRows();
    op.rowLimit = op.countsRows ? operation.rowLimit() : std::nullopt;
    op.ordered = op.countsRows ? dynamic_cast<OrderedRows*>(op.parents.front().operation.get()) : nullptr;
}

const Schema& OperatorChain::schemaAt(const Operator& op, std::size_t segment) const {
    const std::optional<std::size_t> parent = op.parentFor(segment).op;
    return parent ? operators[*parent]->parentFor(segment).check->schema() : sources.schema(segment);
}

std::size_t OperatorChain::stages() const {
    std::size_t last = 0;
    for (const auto& op : operators) {
        last = std::max(last, op->stage);
    }
    return last + 1;
}

const Chunk* OperatorChain::tableFor(const Operator& op, const ChunkTask& task) const {
    const std::optional<std::size_t> parent = op.parentFor(task.segment).op;
    if (!parent) {
        return &task.chunk;
    }
    const std::optional<Chunk>& table = task.outputs[*parent].table;
    return table ? &*table : nullptr;
}

void OperatorChain::count(ChunkTask& task, std::size_t stage) {
    for (std::size_t i = 0; i < operators.size(); ++i) {
        Operator& op = *operators[i];
        if (op.stage != stage || !op.countsRows || !op.sees(task.segment)) {
            continue;
        }
        const Chunk* table = tableFor(op, task);
        OperatorOutput& output = task.outputs[i];
        output.rowsBefore = op.rowsCounted;
        output.isOver = op.rowLimit && op.rowsCounted >= *op.rowLimit;
        op.rowsCounted += table == &task.chunk ? task.rowsRead : table ? table->rows : 0;
        if (op.ordered) {
            look(i, task, table);
        }
    }
}

void OperatorChain::look(std::size_t position, ChunkTask& task, const Chunk* table) {
    Operator& op = *operators[position];
    OperatorOutput& output = task.outputs[position];
    const std::optional<std::size_t> parent = op.parents.front().op;
    const bool isOver = output.isOver || (parent && task.outputs[*parent].isOver);
    if (!table || task.error || isOver || task.sequence > op.failedAt || state.isStopping()) {
        return;
    }
    const auto begin = state.environment.clock();
    output.error = state.call(op.node, [&] { output.seen = op.ordered->look(counted(*table, output)); });
    if (output.error) {
        lower(op.failedAt, task.sequence);
    }
    output.time += state.environment.clock() - begin;
}

void OperatorChain::execute(ChunkTask& task, std::size_t stage) {
    if (operators.empty() || (stage == 0 && completesFirst)) {
        sources.complete(task);
    }
    for (std::size_t i = 0; i < operators.size() && !state.isStopping(); ++i) {
        if (operators[i]->stage == stage && operators[i]->sees(task.segment)) {
            executeOperator(i, task);
        }
    }
}

void OperatorChain::executeOperator(std::size_t position, ChunkTask& task) {
    Operator& op = *operators[position];
    OperatorOutput& output = task.outputs[position];
    const Operator::Parent& parent = op.parentFor(task.segment);
    output.isOver = output.isOver || (parent.op && task.outputs[*parent.op].isOver);
    const Chunk* table = tableFor(op, task);
    if ((!parent.operation && !op.accumulation) || task.sequence > op.failedAt || !table || output.isOver ||
        output.error) {
        return;
    }
    // Columns are made only here: a chunk that no operator needs is not worth it.
    if (!parent.op && !sources.complete(task)) {
        return;
    }
    const auto begin = state.environment.clock();
    output.rowsIn = table->rows;
    output.error = state.call(op.node, [&] { compute(op, parent, *table, output); });
    output.rowsOut = output.table ? output.table->rows : 0;
    if (output.error) {
        lower(op.failedAt, task.sequence);
    }
    output.time += state.environment.clock() - begin;
}

void OperatorChain::release(ChunkTask& task) {
    for (OperatorOutput& output : task.outputs) {
        output.table.reset();
    }
    task.chunk.columns.clear();
}

void OperatorChain::drop(std::size_t position) {
    bool isAnyLeft = false;
    for (std::size_t i = 0; i < operators.size(); ++i) {
        Operator& op = *operators[i];
        const bool hasLostParent =
            std::any_of(op.parents.begin(), op.parents.end(),
                        [&](const Operator::Parent& parent) { return parent.op && operators[*parent.op]->isDropped; });
        if (i == position || hasLostParent) {
            op.isDropped = true;
            op.isOut = true;
            op.failedAt = 0;
            op.merger.reset();
        }
        isAnyLeft = isAnyLeft || !op.isDropped;
    }
    isWorking = isAnyLeft;
}

bool OperatorChain::needsMore(const ChunkTask& task) const {
    bool isNeeded = operators.empty();
    for (std::size_t i = 0; i < operators.size(); ++i) {
        const Operator& op = *operators[i];
        isNeeded = isNeeded || (!op.hasChild && op.sees(task.segment) && !op.isDropped && !task.outputs[i].isOver);
    }
    return isNeeded;
}

std::optional<double> OperatorChain::fraction(std::size_t segment, std::optional<double> read) const {
    double least = 1.0;
    for (std::size_t i = 0; i < operators.size(); ++i) {
        if (operators[i]->hasChild || !operators[i]->sees(segment) || operators[i]->isOut) {
            continue;
        }
        const std::optional<double> done = fractionOf(i, segment, read);
        if (!done) {
            return std::nullopt;
        }
        least = std::min(least, *done);
    }
    return operators.empty() ? read : std::optional(least);
}

/// The source may be at its end soon, or an operator on the way at its limit: the nearer of both counts.
std::optional<double> OperatorChain::fractionOf(std::size_t position, std::size_t segment,
                                                std::optional<double> read) const {
    std::optional<double> furthest = read;
    for (std::optional<std::size_t> at = position; at; at = operators[*at]->parentFor(segment).op) {
        if (const std::optional<std::uint64_t> limit = operators[*at]->rowLimit) {
            const auto rows = static_cast<double>(operators[*at]->rowsCounted.load(std::memory_order_relaxed));
            furthest = std::max(furthest.value_or(0.0), *limit > 0 ? rows / static_cast<double>(*limit) : 1.0);
        }
    }
    return furthest;
}

}  // namespace velmorak
