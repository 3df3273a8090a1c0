#pragma once

#include "run/pass/MergeTree.h"
#include "run/pass/PassRange.h"

#include <velmorak/Kind.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace velmorak {

/// A state that leaves one process, to be merged in another one.
struct StatePiece {
    enum class Form : std::uint8_t {
        Files,      ///< An AlignedNode of whole files.
        Chunks,     ///< An AlignedNode of chunks of a file.
        Beginning,  ///< The first chunks of a file, merged from first to last.
        Next,       ///< One chunk, which follows the previous ones from first to last.
    };

    Form form = Form::Files;
    std::uint64_t file = 0;   ///< Of the chunks.
    std::uint64_t first = 0;  ///< File or chunk, as in AlignedNode.
    unsigned level = 0;
    std::unique_ptr<AccumulatorState> state{};
};

/// Merges the states of an accumulator, which arrive one for each chunk in chunk order: along a MergeTree, or from
/// first to last where the kind wants that; for an OrderedAccumulation from first to last within each file.
class StateMerger {
public:
    /// @param accumulation outlives this.
    StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order);
    /// Merges a range of the chunks as far as that is possible without the others.
    /// @param give receives the pieces for another merger, which takes them in this order, after those of the chunks
    ///        before the range.
    StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order, const PassRange& range,
                std::function<void(StatePiece)> give);

    /// Whether files have states of their own.
    bool hasFileStates() const { return order != Order::FirstToLast; }
    /// As MergeTree::setFileListener.
    void setFileListener(const FileListener& listener);

    void take(ChunkPlace place, std::unique_ptr<AccumulatorState> state);
    void take(StatePiece piece);
    /// Calls visitor with each state that was not merged with others yet, in the order of their chunks.
    template <typename Visitor>
    void visit(const Visitor& visitor) const {
        tree.visit(visitor);
        if (gathered) {
            visitor(*gathered);
        }
    }
    /// @return the state of the whole stream; a new one if none was taken. Leaves the merger empty.
    std::unique_ptr<AccumulatorState> whole();
    /// Gives the remaining pieces of the range. Leaves the merger empty.
    void release();

private:
    enum class Order { Tree, FirstToLastInFile, FirstToLast };

    bool isGivenAtOnce(ChunkPlace place) const;
    void takeNext(std::uint64_t pieceFile, AccumulatorState& state);
    void append(AccumulatorState& state);
    void beginFile(std::uint64_t number);
    void endFile();

    const Accumulation& accumulation;
    Order order = Order::Tree;
    PassRange range;
    std::function<void(StatePiece)> give;  ///< Empty: all chunks are merged here.
    MergeTree tree;
    FileListener fileListener;                   ///< Of files that are merged from first to last.
    std::uint64_t file = 0;                      ///< That gathered is the state of.
    std::unique_ptr<AccumulatorState> gathered;  ///< From first to last: of the file so far, or of all rows.
};

}  // namespace velmorak
