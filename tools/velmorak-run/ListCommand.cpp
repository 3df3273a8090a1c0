#include "ListCommand.h"

#include "graph/preview/ColumnCheck.h"
#include "run/NodeContext.h"
#include "run/messages/Visible.h"
#include "run/plan/Plan.h"
#include "run/plan/Unconnected.h"

#include <ostream>
#include <string>
#include <vector>

using velmorak::Pipeline;
using velmorak::PipelineInput;
using velmorak::PipelineNode;

namespace {

std::string contentOf(const Pipeline& pipeline, const PipelineInput& input) {
    if (!input.wire) {
        return input.value;
    }
    return "from \"" + pipeline.nodes[input.wire->node].name + "\" " + input.wire->output;
}

}  // namespace

void printPlugins(const Pipeline& pipeline, std::ostream& stream) {
    for (const PipelineNode& node : pipeline.nodes) {
        stream << velmorak::visible(velmorak::titleOf(node)) << '\n';
        for (const PipelineInput& input : node.inputs) {
            const std::string content = contentOf(pipeline, input);
            stream << "  " << velmorak::visible(input.spec.name) << " (" << velmorak::nameOf(input.spec.type) << ')'
                   << (content.empty() ? "" : ": " + velmorak::visible(content)) << '\n';
        }
    }
}

std::size_t printErrors(const Pipeline& pipeline, std::ostream& stream) {
    const velmorak::Plan plan(pipeline);
    const std::vector<std::string> onColumns = velmorak::columnMistakes(pipeline);
    std::size_t errors = 0;
    for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
        const std::string onPlan = plan.validate(i);
        if (const std::string& sentence = onPlan.empty() ? onColumns[i] : onPlan; !sentence.empty()) {
            stream << velmorak::visible(velmorak::titleOf(pipeline.nodes[i])) + ": " +
                          velmorak::visibleMessage(sentence)
                   << '\n';
            ++errors;
        }
    }
    if (const std::string text = velmorak::unconnectedText(pipeline); !text.empty()) {
        stream << velmorak::visibleMessage(text) << '\n';
    }
    return errors;
}
