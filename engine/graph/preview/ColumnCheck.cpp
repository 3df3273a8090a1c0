#include "graph/preview/ColumnCheck.h"

#include "graph/ManagerImpl.h"
#include "graph/preview/PreviewContext.h"
#include "run/NodeArguments.h"
#include "run/messages/NodeError.h"

#include <velmorak/Kind.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

/// @return the input of the only table; nothing if there is none, or more than one.
const PipelineInput* tableInput(const PipelineNode& node) {
    const PipelineInput* found = nullptr;
    for (const PipelineInput& input : node.inputs) {
        if (input.spec.type == ValueType::Table && std::exchange(found, &input) != nullptr) {
            return nullptr;
        }
    }
    return found;
}

/// The inputs as in a run, with 1 for wired numbers.
/// @return nothing if another value that may determine columns comes by wire.
std::optional<std::vector<Arrival>> arrivalsOf(const PipelineNode& node) {
    std::vector<Arrival> arrivals(node.inputs.size());
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        arrivals[i].isWired = node.inputs[i].wire.has_value();
        const ValueType type = node.inputs[i].spec.type;
        if (!arrivals[i].isWired || type == ValueType::Table) {
            continue;
        }
        if (type != ValueType::Number) {
            return std::nullopt;
        }
        arrivals[i].value = 1.0;
    }
    return arrivals;
}

/// Calls the kind as a run would. @param work gets the arguments and a context.
template <typename Work>
std::optional<NodeError> tried(const Pipeline& pipeline, std::size_t position, const Work& work) {
    const PipelineNode& node = pipeline.nodes[position];
    const std::optional<std::vector<Arrival>> arrivals = arrivalsOf(node);
    if (!arrivals) {
        return NodeError{};
    }
    return errorIn([&] {
        const NodeArguments arguments(node, *arrivals);
        PreviewContext context(pipeline, maxPreviewPieces);
        work(arguments, context);
    });
}

/// @return nothing if the file cannot be read, which a run reports.
std::optional<Schema> readSchema(const Pipeline& pipeline, std::size_t reader) {
    const PipelineNode& node = pipeline.nodes[reader];
    const auto* const source = dynamic_cast<const Source*>(node.kind);
    const bool isWired = std::ranges::any_of(node.inputs, [](const auto& input) { return input.wire.has_value(); });
    std::optional<Schema> schema;
    if (source && source->tellsColumns() && !isWired) {
        const auto error = tried(pipeline, reader, [&](const NodeArguments& arguments, PreviewContext& context) {
            if (const std::unique_ptr<TableReader> table = source->open(arguments, context)) {
                schema = table->schema();
            }
        });
        return error ? std::nullopt : schema;
    }
    return schema;
}

/// Reads the columns in the background. @return nothing if that takes longer than a user would wait.
std::optional<Schema> schemaInTime(ColumnPreviews& previews, const std::shared_ptr<const Pipeline>& pipeline,
                                   std::size_t reader) {
    if (previews.unfinished() > 0) {
        return std::nullopt;
    }
    const auto found = std::make_shared<std::optional<Schema>>();
    const std::shared_ptr<ColumnPreview> preview =
        previews.begin("", nullptr, [=](BackgroundTask&) { *found = readSchema(*pipeline, reader); });
    const bool isRead = preview->work->wait(previews.patience);
    preview->work->stop();
    return isRead ? *found : std::nullopt;
}

}  // namespace

ColumnCheck::ColumnCheck(const Pipeline& pipeline, ReaderSchema readerSchema)
    : pipeline(pipeline), readerSchema(std::move(readerSchema)) {}

std::string ColumnCheck::mistakeOf(std::size_t position) {
    const PipelineNode& node = pipeline.nodes[position];
    const auto* const rowWise = dynamic_cast<const RowWise*>(node.kind);
    const auto* const accumulator = dynamic_cast<const Accumulator*>(node.kind);
    const PipelineInput* const input = rowWise || accumulator ? tableInput(node) : nullptr;
    const std::optional<Schema> table = input && input->wire ? tableOf(input->wire->node) : std::nullopt;
    if (!table) {
        return {};
    }
    const auto error = tried(pipeline, position, [&](const NodeArguments& arguments, PreviewContext& context) {
        if (rowWise) {
            rowWise->prepare(arguments, *table, context);
        } else {
            accumulator->prepare(arguments, &*table, context);
        }
    });
    // Whether other values are mistaken may depend on numbers that a run computes.
    const bool isOnColumns = error && error->cause == Failure::Cause::UnknownColumn;
    return isOnColumns ? error->sentence : "";
}

/// Walks upstream to the table reader, or to the first plug-in whose table is known, and back downstream.
std::optional<Schema> ColumnCheck::tableOf(std::size_t node) {
    std::vector<std::size_t> chain;
    for (std::size_t at = node; !known.contains(at);) {
        known[at] = std::nullopt;  // In case the wires form a cycle.
        const PipelineInput* const input =
            dynamic_cast<const RowWise*>(pipeline.nodes[at].kind) ? tableInput(pipeline.nodes[at]) : nullptr;
        if (!input || !input->wire) {
            known[at] = readerSchema(at);
            break;
        }
        chain.push_back(at);
        at = input->wire->node;
    }
    std::reverse(chain.begin(), chain.end());
    for (const std::size_t each : chain) {
        const std::optional<Schema>& before = known[tableInput(pipeline.nodes[each])->wire->node];
        known[each] = before ? made(each, *before) : std::nullopt;
    }
    return known[node];
}

std::optional<Schema> ColumnCheck::made(std::size_t node, const Schema& table) const {
    std::optional<Schema> result;
    const auto error = tried(pipeline, node, [&](const NodeArguments& arguments, PreviewContext& context) {
        const auto* const kind = dynamic_cast<const RowWise*>(pipeline.nodes[node].kind);
        result = kind->prepare(arguments, table, context)->schema();
    });
    return error ? std::nullopt : result;
}

std::vector<std::string> columnMistakes(const Pipeline& pipeline) {
    ColumnCheck check(pipeline, [&](std::size_t reader) { return readSchema(pipeline, reader); });
    std::vector<std::string> mistakes;
    for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
        mistakes.push_back(check.mistakeOf(i));
    }
    return mistakes;
}

std::string columnMistake(QzManager& manager, std::size_t node) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const QzBase::Part& part = QzBase::Part::of(*manager.plugins[node]);
    bool hasTable = false;
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        hasTable = hasTable || (part.inputSpecs[i].type == ValueType::Table && part.inputs[i].source != nullptr);
    }
    if (!hasTable || !owner.previewsColumns) {
        return {};
    }
    const auto pipeline = std::make_shared<const Pipeline>(pipelineOf(manager));
    ColumnCheck check(*pipeline, [&](std::size_t reader) { return schemaInTime(owner.previews, pipeline, reader); });
    return check.mistakeOf(node);
}

}  // namespace velmorak
