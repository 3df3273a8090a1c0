#include "run/pass/StreamPass.h"

#include "run/pass/ColumnUse.h"
#include "run/results/Summary.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace velmorak {

StreamPass::StreamPass(RunState& state, const std::vector<std::size_t>& sources,
                       const std::vector<OperatorInstance>& operators, const PassRange& range)
    : state(state),
      sources(state, sources, range),
      chain(state, this->sources, operators),
      chunks(state, this->sources, chain),
      heads(state, this->sources, chain),
      live(state, chain) {}

void StreamPass::execute(Executor& executor) {
    if (prepare()) {
        readRows(executor);
        finish();
    }
}

bool StreamPass::prepare() {
    ++state.passes;
    if (!sources.open()) {
        return false;
    }
    chain.prepare();
    selectColumns(state, sources, chain);
    if (!chain.hasWork() || state.isStopping()) {
        return false;
    }
    if (fileStates) {
        fileStates->begin(sources, chain);
    }
    heads.begin();
    if (state.listener != nullptr) {
        state.listener->passBegan();
    }
    return true;
}

void StreamPass::readRows(Executor& executor) {
    for (std::size_t i = 0; i < executor.maxInFlight(); ++i) {
        tasks.push_back(std::make_unique<ChunkTask>());
    }
    if (const std::optional<NodeError> error = errorIn([&] { executor.run(stages()); })) {
        sources.fail(*error);
    }
    heads.end();
    state.messages.endProgress();
}

StagePipeline StreamPass::stages() {
    StagePipeline pipeline;
    pipeline.load = [this](std::size_t slot) { return read(*tasks[slot]); };
    const std::size_t count = chain.stages();
    for (std::size_t stage = 0; stage < count; ++stage) {
        if (stage > 0) {
            pipeline.stages.push_back({true, [this, stage](std::size_t slot) { chain.count(*tasks[slot], stage); }});
        }
        pipeline.stages.push_back({false, [this, stage, count](std::size_t slot) {
                                       chain.execute(*tasks[slot], stage);
                                       if (stage + 1 == count) {
                                           heads.take(*tasks[slot]);
                                           OperatorChain::release(*tasks[slot]);
                                       }
                                   }});
    }
    pipeline.stages.push_back({true, [this](std::size_t slot) { commit(*tasks[slot]); }});
    return pipeline;
}

void StreamPass::commit(ChunkTask& task) {
    chunks.commit(task);
    heads.commit(task);
    live.update();
}

bool StreamPass::read(ChunkTask& task) {
    if (state.isStopping() || !chain.hasWork() || !sources.read(task)) {
        return false;
    }
    task.outputs.clear();
    task.outputs.resize(chain.size());
    showProgress();
    return true;
}

void StreamPass::showProgress() {
    const bool isLineDue = state.messages.isProgressDue();
    const bool isListening = state.listener != nullptr && state.listener->isProgressDue();
    if (!isLineDue && !isListening) {
        return;
    }
    ProgressNow now{state.node(sources.currentSource()).name, state.passes, sources.rowsOfCurrent(),
                    chain.fraction(sources.current(), sources.fraction()), 0.0};
    if (now.fraction) {
        const double done = static_cast<double>(sources.current()) + std::clamp(*now.fraction, 0.0, 1.0);
        fractionShown = std::max(fractionShown, done / static_cast<double>(sources.size()));
        now.fraction = fractionShown;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - began;
    now.seconds = elapsed.count();
    std::tie(now.file, now.files) = sources.fileOfCurrent();
    if (isLineDue) {
        state.messages.showProgress(progressText(now));
    }
    if (isListening) {
        state.listener->progressed(now);
    }
}

}  // namespace velmorak
