#pragma once

#include "ContentKeys.h"
#include "FileDigests.h"
#include "ResultStore.h"
#include "RunState.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace velmorak {

/// One run of a pipeline, from what is needed to what is kept.
class Execution {
public:
    /// @param state, store and digests outlive this.
    Execution(RunState& state, ResultStore& store, FileDigests& digests, std::size_t threads);

    RunReport run();

private:
    void findNeeded();
    bool reuse(std::size_t position);
    void settleObjections();
    void sweep();
    void visit(std::size_t position);
    void evaluate(std::size_t position);
    void evaluateFunction(const Function& function, std::size_t position, NodeResults& results);
    void evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results);

    bool passNext();
    bool isTarget(std::size_t position) const;
    std::optional<std::size_t> sourceOf(std::size_t position) const;
    bool isReady(std::size_t target) const;
    std::vector<std::size_t> stepsFor(std::size_t source) const;

    void settleRest();
    void keepResults();
    std::optional<std::vector<FileContent>> filesOf(std::size_t position);

    RunState& state;
    ResultStore& store;
    FileDigests& digests;
    std::size_t threads;
    std::uint64_t number;
    std::vector<std::optional<Digest>> keys;
    std::vector<std::optional<std::vector<FileContent>>> files;  ///< All that each plug-in's result depends on.
};

}  // namespace velmorak
