#include "store/CacheKeys.h"

#include "run/KindBuild.h"

namespace velmorak {
namespace {

enum class Tag : std::uint64_t { Value, Wire };

/// Paths that a source without wires reads: a name that stands for several files can come to mean others.
bool addFiles(Sha256& digester, const RunState& state, std::size_t position) {
    const auto* source = dynamic_cast<const Source*>(state.node(position).kind);
    if (!source || !state.plan.upstream(position).empty()) {
        return true;
    }
    const std::optional<NodeError> error = state.call(position, [&] {
        NodeContext context(state.environment, state.node(position));
        for (const std::filesystem::path& file : source->files(state.arguments(position), context)) {
            digester.addText(file.string());
        }
    });
    return !error;
}

std::optional<Digest> keyOf(const RunState& state, std::size_t position,
                            const std::vector<std::optional<Digest>>& keys) {
    const PipelineNode& node = state.node(position);
    if (!node.kind) {
        return std::nullopt;
    }
    Sha256 digester;
    // A plug-in may write its name, and that of what feeds it, into its result.
    digester.addText(node.name);
    digester.addText(node.kindName);
    digester.addNumber(static_cast<std::uint64_t>(node.kind->version()));
    digester.addText(buildOf(*node.kind));
    for (const PipelineInput& input : node.inputs) {
        digester.addText(input.spec.name);
        digester.addNumber(static_cast<std::uint64_t>(input.wire ? Tag::Wire : Tag::Value));
        if (!input.wire) {
            digester.addText(input.value);
            continue;
        }
        if (input.wire->node >= keys.size() || !keys[input.wire->node]) {
            return std::nullopt;
        }
        digester.add(keys[input.wire->node]->data(), keys[input.wire->node]->size());
        digester.addText(input.wire->output);
    }
    return addFiles(digester, state, position) ? std::optional(digester.finish()) : std::nullopt;
}

}  // namespace

std::vector<std::optional<Digest>> cacheKeys(const RunState& state) {
    std::vector<std::optional<Digest>> keys(state.runs.size());
    for (const std::size_t position : state.plan.order()) {
        keys[position] = keyOf(state, position, keys);
    }
    return keys;
}

}  // namespace velmorak
