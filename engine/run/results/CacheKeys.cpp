#include "run/results/CacheKeys.h"

#include "run/record/KindBuild.h"

namespace velmorak {
namespace {

enum class Tag : std::uint64_t { Value, Wire };

/// Adds the paths that an unwired source would read, because a pattern may match other files than before.
/// @return false if the source refuses its values.
bool addFiles(Sha256& hash, const RunState& state, std::size_t position) {
    const auto* source = dynamic_cast<const Source*>(state.node(position).kind);
    if (!source || !state.plan.upstream(position).empty()) {
        return true;
    }
    const std::optional<NodeError> error = state.call(position, [&] {
        NodeContext context(state.environment, state.node(position));
        for (const std::filesystem::path& file : source->files(state.arguments(position), context)) {
            hash.addText(file.string());
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
    Sha256 hash;
    // A plug-in may write its own name and those of upstream nodes into its result.
    hash.addText(node.name);
    hash.addText(node.kindName);
    hash.addNumber(static_cast<std::uint64_t>(node.kind->version()));
    hash.addText(buildOf(*node.kind));
    for (const PipelineInput& input : node.inputs) {
        hash.addText(input.spec.name);
        hash.addNumber(static_cast<std::uint64_t>(input.wire ? Tag::Wire : Tag::Value));
        if (!input.wire) {
            hash.addText(input.value);
            continue;
        }
        if (input.wire->node >= keys.size() || !keys[input.wire->node]) {
            return std::nullopt;
        }
        hash.add(keys[input.wire->node]->data(), keys[input.wire->node]->size());
        hash.addText(input.wire->output);
    }
    return addFiles(hash, state, position) ? std::optional(hash.finish()) : std::nullopt;
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
