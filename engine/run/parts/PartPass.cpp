#include "run/parts/PartPass.h"

#include "run/pass/StreamPass.h"

#include <velmorak/Failure.h>
#include <velmorak/StateBytes.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

std::string sentenceOf(const RunState& state, std::size_t node) {
    return titleOf(state.node(node)) + ": " + state.runs[node].report.sentence;
}

/// Such a state may have given its rows to a file already.
bool writesRows(const RunState& state, const Operator& op) {
    const auto* const kind = dynamic_cast<const Accumulator*>(state.node(op.node).kind);
    return kind != nullptr && kind->mergeOrder() == Accumulator::MergeOrder::FirstToLast;
}

/// Writes one range of one pass.
class PassExport {
public:
    PassExport(RunState& state, StreamPass& pass, PassRange range, PartWriter& writer);

    /// @return why the rows cannot be read.
    std::string prepare();
    /// @return why not all rows were used.
    std::string finish(PartSummary& summary);

    /// Gives the states to the writer.
    void exportStates(Operator& op);

private:
    std::string give(Operator& op);

    RunState& state;
    StreamPass& pass;
    const PassRange range;
    PartWriter& writer;
    std::vector<bool> isLeftOut;
};

PassExport::PassExport(RunState& state, StreamPass& pass, PassRange range, PartWriter& writer)
    : state(state), pass(pass), range(std::move(range)), writer(writer) {}

std::string PassExport::prepare() {
    pass.prepare();
    for (std::size_t i = 0; i < pass.tables().size(); ++i) {
        if (state.hasFailed(pass.tables().sourceOf(i))) {
            return sentenceOf(state, pass.tables().sourceOf(i));
        }
    }
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        Operator& op = pass.operators().at(i);
        isLeftOut.push_back(op.isDropped);
        if (op.countsRows) {
            return titleOf(state.node(op.node)) + " counts rows, although its kind does not say so";
        }
        if (op.accumulation && !op.isDropped) {
            exportStates(op);
        }
    }
    return "";
}

void PassExport::exportStates(Operator& op) {
    const std::size_t segment = op.parents.front().firstSegment;
    const PipelineNode& node = state.node(op.node);
    op.merger = std::make_unique<StateMerger>(
        *op.accumulation, dynamic_cast<const Accumulator&>(*node.kind).mergeOrder(),
        range.from(pass.tables().filesBefore(segment)), [this, segment, &node](StatePiece piece) {
            std::string bytes = savedState(*piece.state, node.kindName);
            piece.state.reset();
            writer.add({node.name, segment, std::move(piece), std::move(bytes)});
        });
}

std::string PassExport::finish(PartSummary& summary) {
    if (!pass.finishPart()) {
        const NodeError* error = pass.tables().error();
        return error ? "the rows cannot be read: " + error->sentence : std::string("the run was stopped");
    }
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        Operator& op = pass.operators().at(i);
        if (isLeftOut[i]) {
            continue;
        }
        if (op.isDropped) {
            return sentenceOf(state, op.node);
        }
        if (std::string problem = give(op); !problem.empty()) {
            return problem;
        }
        summary.operators.push_back({state.node(op.node).name, op.parents.front().firstSegment, op.rowsIn, op.rowsOut});
    }
    pass.tables().pass();
    summary.rowsRead.resize(std::max(summary.rowsRead.size(), pass.tables().size()));
    for (std::size_t i = 0; i < pass.tables().size(); ++i) {
        summary.rowsRead[i] = pass.tables().rowsOf(i);
    }
    return "";
}

std::string PassExport::give(Operator& op) {
    state.pass(op.node);
    if (!op.accumulation) {
        return "";
    }
    if (const std::optional<NodeError> error = state.call(op.node, [&] { op.merger->release(); })) {
        return titleOf(state.node(op.node)) + ": " + error->sentence;
    }
    state.finish(op.node, NodeStatus::Done, std::vector<Value>(state.node(op.node).outputs.size()));
    return "";
}

/// Puts the states of parts together.
class PassImport {
public:
    PassImport(RunState& state, StreamPass& pass);

    void add(const std::filesystem::path& file);
    /// What all parts so far know: the rows of all of them, and each file once.
    PartSummary summary() const;

private:
    using OperatorKey = std::pair<std::string, std::size_t>;

    void add(PartRecord record);
    void addFiles(const PartSummary& summary);
    void addRows(const PartSummary& summary, const std::filesystem::path& file);

    RunState& state;
    StreamPass& pass;
    std::map<OperatorKey, Operator*> operators;  ///< That are at work, by plug-in and first segment.
    std::map<std::string, PartInput> files;      ///< By path.
    std::map<std::string, PartInput> skipped;    ///< By plug-in and path.
};

PassImport::PassImport(RunState& state, StreamPass& pass) : state(state), pass(pass) {
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        Operator& op = pass.operators().at(i);
        if (!op.isDropped) {
            operators.emplace(OperatorKey{state.node(op.node).name, op.parents.front().firstSegment}, &op);
        }
    }
}

void PassImport::add(const std::filesystem::path& file) {
    PartReader reader(file);
    addRows(reader.summary(), file);
    addFiles(reader.summary());
    while (std::optional<PartRecord> record = reader.next()) {
        if (state.isStopping()) {
            return;
        }
        add(*std::move(record));
    }
}

void PassImport::add(PartRecord record) {
    const auto found = operators.find({record.plugin, record.segment});
    if (found == operators.end() || !found->second->accumulation) {
        return;  // No result of this pass needs it.
    }
    Operator& op = *found->second;
    record.piece.state = mustBe(op.accumulation->newState(), "state");
    loadState(*record.piece.state, record.bytes, state.node(op.node).kindName);
    op.merger->take(std::move(record.piece));
}

void PassImport::addFiles(const PartSummary& summary) {
    for (const PartInput& input : summary.files) {
        files.emplace(input.path, input);
    }
    for (const PartInput& input : summary.skipped) {
        skipped.emplace(input.plugin + '\0' + input.path, input);
    }
}

PartSummary PassImport::summary() const {
    PartSummary all;
    for (const auto& [place, op] : operators) {
        all.operators.push_back({place.first, place.second, op->rowsIn, op->rowsOut});
    }
    for (std::size_t i = 0; i < pass.tables().size(); ++i) {
        all.rowsRead.push_back(pass.tables().rowsOf(i));
    }
    for (const auto& each : files) {
        all.files.push_back(each.second);
    }
    for (const auto& each : skipped) {
        all.skipped.push_back(each.second);
    }
    return all;
}

void PassImport::addRows(const PartSummary& summary, const std::filesystem::path& file) {
    std::size_t known = 0;
    for (const PartRows& rows : summary.operators) {
        if (const auto found = operators.find({rows.plugin, rows.segment}); found != operators.end()) {
            found->second->rowsIn += rows.in;
            found->second->rowsOut += rows.out;
            ++known;
        }
    }
    if (known != operators.size()) {
        throw Failure("the part " + velmorak::quoted(file.string()) +
                      " lacks the states of a plug-in, because it could not be prepared there; remove the part and do "
                      "it again");
    }
    for (std::size_t i = 0; i < std::min(summary.rowsRead.size(), pass.tables().size()); ++i) {
        pass.tables().addRows(i, summary.rowsRead[i]);
    }
}

}  // namespace

WrittenPass writePass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
                      const PassRange& range, Executor& executor, PartWriter& writer) {
    StreamPass pass(state, state.plan.segments(targets.front()), planner.operatorsFor(targets), range);
    PassExport exported(state, pass, range, writer);
    if (std::string problem = exported.prepare(); !problem.empty()) {
        return {.problem = std::move(problem)};
    }
    if (pass.operators().hasWork() && !state.isStopping()) {
        pass.readRows(executor);
    }
    WrittenPass written;
    written.problem = exported.finish(written.summary);
    return written;
}

bool gatherPass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
                const std::vector<std::filesystem::path>& parts, PartWriter& writer) {
    StreamPass pass(state, state.plan.segments(targets.front()), planner.operatorsFor(targets));
    if (!pass.prepare()) {
        return false;
    }
    PassExport exported(state, pass, {}, writer);
    PassImport imported(state, pass);
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        Operator& op = pass.operators().at(i);
        if (op.isDropped || writesRows(state, op)) {
            return false;
        }
        if (op.accumulation) {
            exported.exportStates(op);
        }
    }
    for (const std::filesystem::path& part : parts) {
        if (state.isStopping()) {
            return false;
        }
        imported.add(part);
    }
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        if (pass.operators().at(i).accumulation) {
            pass.operators().at(i).merger->release();
        }
    }
    writer.commit(imported.summary());
    return true;
}

void mergePass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
               const std::vector<std::filesystem::path>& parts) {
    StreamPass pass(state, state.plan.segments(targets.front()), planner.operatorsFor(targets));
    if (!pass.prepare()) {
        return;
    }
    PassImport imported(state, pass);
    for (const std::filesystem::path& part : parts) {
        if (state.isStopping()) {
            return;
        }
        imported.add(part);
    }
    pass.finish();
}

}  // namespace velmorak
