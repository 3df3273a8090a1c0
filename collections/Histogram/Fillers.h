#pragma once

#include "FillExpression.h"
#include "FillInto.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak {

/// Fills an object whose binning is known.
template <typename Object>
class GivenRange {
public:
    explicit GivenRange(Object object) : object(std::move(object)) {}

    void fill(const FillBatch& batch) { fillInto(object, batch); }
    void merge(GivenRange& other) { object.merge(other.object); }
    Object result() { return std::move(object); }

private:
    Object object;
};

/// Keeps the values of one chunk until its turn comes to fill the only object of its file, which belongs to the state of
/// the whole file. For objects with so many cells that allocating and adding one for each chunk would take far longer
/// than filling it. The result for a file is bit-identical to sequential filling.
template <typename Object>
class LateState : public AccumulatorState {
public:
    LateState(const FillExpression& quantity, const std::function<Object()>& make) : quantity(quantity), make(make) {}

    void fill(const Chunk& chunk) override { waiting.push_back(quantity.values(chunk)); }
    void merge(AccumulatorState& other) override {
        fillWaiting();
        auto& next = static_cast<LateState&>(other);
        if (next.object) {
            next.fillWaiting();
            object->merge(*next.object);
            return;
        }
        std::swap(waiting, next.waiting);
        fillWaiting();
    }

    Object result() {
        fillWaiting();
        return std::move(*object);
    }

private:
    void fillWaiting() {
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
    std::optional<Object> object;  ///< Created by the first fill.
};

/// A filler as the state of an accumulation.
template <typename Filler>
class FillingState : public AccumulatorState {
public:
    FillingState(const FillExpression& quantity, Filler filler) : quantity(quantity), filler(std::move(filler)) {}

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
