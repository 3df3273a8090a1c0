#include "store/CacheKeys.h"

#include "run/KindBuild.h"

namespace velmorak {
namespace {

enum class Part : std::uint64_t { Value, Wire };

/// Paths that a source without wires reads: a name that stands for several files can come to mean others.
bool addFiles(Digester& digester, const RunState& state, std::size_t position) {
    const auto* source = dynamic_cast<const Source*>(state.node(position).kind);
    if (!source || !state.plan.feeders(position).empty()) {
        return true;
    }
    const std::optional<Problem> problem = state.call(position, [&] {
        NodeContext context(state.around, state.node(position));
        for (const std::filesystem::path& file : source->files(state.arguments(position), context)) {
            digester.addText(file.string());
        }
    });
    return !problem;
}

std::optional<Digest> keyOf(const RunState& state, std::size_t position,
                            const std::vector<std::optional<Digest>>& keys) {
    const PipelineNode& node = state.node(position);
    if (!node.kind) {
        return std::nullopt;
    }
    Digester digester;
    // A plug-in may write its name, and that of what feeds it, into its result.
    digester.addText(node.name);
    digester.addText(node.kindName);
    digester.addNumber(static_cast<std::uint64_t>(node.kind->version()));
    digester.addText(buildOf(*node.kind));
    for (const PipelineInput& input : node.inputs) {
        digester.addText(input.spec.name);
        digester.addNumber(static_cast<std::uint64_t>(input.wire ? Part::Wire : Part::Value));
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

std::vector<std::optional<Digest>> contentKeys(const RunState& state) {
    std::vector<std::optional<Digest>> keys(state.runs.size());
    for (const std::size_t position : state.plan.order()) {
        keys[position] = keyOf(state, position, keys);
    }
    return keys;
}

}  // namespace velmorak
