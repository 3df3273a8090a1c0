#include "run/pass/StateMerger.h"

#include "run/pass/ChunkCheck.h"

#include <velmorak/OrderedAccumulation.h>

#include <utility>

namespace velmorak {

StateMerger::StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder mergeOrder)
    : StateMerger(accumulation, mergeOrder, {}, nullptr) {}

StateMerger::StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder mergeOrder, const PassRange& range,
                         std::function<void(StatePiece)> give)
    : accumulation(accumulation), range(range), give(std::move(give)), tree(range.begin) {
    if (mergeOrder == Accumulator::MergeOrder::FirstToLast) {
        order = Order::FirstToLast;
    } else if (dynamic_cast<const OrderedAccumulation*>(&accumulation)) {
        order = Order::FirstToLastInFile;
    }
}

void StateMerger::setFileListener(const FileListener& listener) {
    fileListener = listener;
    tree.setFileListener(listener);
}

void StateMerger::take(ChunkPlace place, std::unique_ptr<AccumulatorState> state) {
    if (order == Order::Tree) {
        tree.take(place, std::move(state));
    } else if (isGivenAtOnce(place)) {
        give({StatePiece::Form::Next, place.file, place.chunk, 0, std::move(state)});
    } else {
        takeNext(place.file, *state);
    }
}

/// What comes before the chunk is merged elsewhere.
bool StateMerger::isGivenAtOnce(ChunkPlace place) const {
    const bool isFileCut = place.file == range.begin.file && range.begin.chunk > 0;
    return give && (order == Order::FirstToLast || isFileCut);
}

void StateMerger::take(StatePiece piece) {
    switch (piece.form) {
        case StatePiece::Form::Files:
            endFile();
            tree.take({true, 0, {piece.first, piece.level, std::move(piece.state)}});
            return;
        case StatePiece::Form::Chunks:
            tree.take({false, piece.file, {piece.first, piece.level, std::move(piece.state)}});
            return;
        case StatePiece::Form::Beginning:
            beginFile(piece.file);
            gathered = std::move(piece.state);
            return;
        case StatePiece::Form::Next:
            takeNext(piece.file, *piece.state);
            return;
    }
}

void StateMerger::takeNext(std::uint64_t pieceFile, AccumulatorState& state) {
    if (order == Order::FirstToLastInFile && pieceFile != file) {
        beginFile(pieceFile);
    }
    append(state);
}

void StateMerger::append(AccumulatorState& state) {
    if (!gathered) {
        gathered = mustBe(accumulation.newState(), "state");
    }
    gathered->merge(state);
}

void StateMerger::beginFile(std::uint64_t number) {
    endFile();
    file = number;
}

void StateMerger::endFile() {
    if (gathered) {
        if (fileListener) {
            fileListener(file, *gathered);
        }
        tree.take({true, 0, {file, 0, std::move(gathered)}});
    }
}

std::unique_ptr<AccumulatorState> StateMerger::whole() {
    if (order == Order::FirstToLastInFile) {
        endFile();
    }
    std::unique_ptr<AccumulatorState> state = order == Order::FirstToLast ? std::move(gathered) : tree.whole();
    return state ? std::move(state) : mustBe(accumulation.newState(), "state");
}

void StateMerger::release() {
    const bool isFileCut = range.end.chunk > 0 && range.end.file == file;
    if (!isFileCut) {
        endFile();
    }
    for (TreeNode& part : tree.release()) {
        const StatePiece::Form form = part.holdsFiles ? StatePiece::Form::Files : StatePiece::Form::Chunks;
        give({form, part.file, part.node.first, part.node.level, std::move(part.node.state)});
    }
    if (gathered) {
        give({StatePiece::Form::Beginning, file, 0, 0, std::move(gathered)});
    }
}

}  // namespace velmorak
