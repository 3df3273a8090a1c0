#include "run/RunLedger.h"

#include "run/NodeContext.h"
#include "run/messages/Visible.h"

namespace velmorak {

RunLedger::RunLedger(const Pipeline& pipeline) : calls(pipeline.nodes.size()), nodeFinished(pipeline.nodes.size()) {
    titles.reserve(pipeline.nodes.size());
    for (const PipelineNode& node : pipeline.nodes) {
        titles.push_back(visible(titleOf(node)));
    }
}

std::vector<std::size_t> RunLedger::underWay() const {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (calls[i] > 0) {
            positions.push_back(i);
        }
    }
    return positions;
}

void RunLedger::expect(std::size_t position) {
    const MutexLock lock(mutex);
    nodeFinished[position].status = NodeStatus::Unfinished;
    nodeFinished[position].sentence = unfinishedSentence;
}

void RunLedger::finalize(std::size_t position, const NodeReport& report) {
    const MutexLock lock(mutex);
    nodeFinished[position] = report;
}

void RunLedger::noteFormer(std::vector<FormerFile> files) {
    const MutexLock lock(mutex);
    formerFiles = std::move(files);
}

std::vector<FormerFile> RunLedger::former() const {
    const MutexLock lock(mutex);
    return formerFiles;
}

std::vector<NodeReport> RunLedger::reports() const {
    const MutexLock lock(mutex);
    return nodeFinished;
}

}  // namespace velmorak
