#pragma once

#include "FillExpression.h"
#include "FillInto.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak {

/// Fills an object whose bins are known.
template <typename Object>
class GivenRange {
public:
    explicit GivenRange(Object empty) : object(std::move(empty)) {}

    void fill(const FillBatch& batch) { fillInto(object, batch); }
    void merge(GivenRange& other) { object.merge(other.object); }
    Object result() { return std::move(object); }

private:
    Object object;
};

/// What one chunk is filled with, kept until the chunk's turn comes: the state of the whole stream has the only object.
/// For one of so many cells that to make and to add it for each chunk would take far longer than to fill it. The bits
/// are those of all fills one after the other.
template <typename Object>
class LateState : public AccumulatorState {
public:
    LateState(const FillExpression& filled, const std::function<Object()>& objectMaker)
        : quantity(filled), make(objectMaker) {}

    void fill(const Chunk& chunk) override { waiting.push_back(quantity.values(chunk)); }
    void merge(AccumulatorState& other) override {
        settle();
        auto& next = static_cast<LateState&>(other);
        std::swap(waiting, next.waiting);
        settle();
    }

    Object result() {
        settle();
        return std::move(*object);
    }

private:
    void settle() {
        if (!object) {
            object.emplace(make());
        }
        for (const FillExpression::Values& values : waiting) {
            fillInto(*object, values.batch());
        }
        waiting.clear();
    }

    const FillExpression& quantity;
    const std::function<Object()>& make;
    std::vector<FillExpression::Values> waiting;
    std::optional<Object> object;  ///< As soon as it is filled.
};

/// A filler as the state of an accumulation.
template <typename Filler>
class FillingState : public AccumulatorState {
public:
    FillingState(const FillExpression& filled, Filler empty) : quantity(filled), filler(std::move(empty)) {}

    void fill(const Chunk& chunk) override {
        const FillExpression::Values values = quantity.values(chunk);
        filler.fill(values.batch());
    }
    void merge(AccumulatorState& other) override { filler.merge(static_cast<FillingState&>(other).filler); }

    auto result() { return filler.result(); }

private:
    const FillExpression& quantity;
    Filler filler;
};

}  // namespace velmorak
