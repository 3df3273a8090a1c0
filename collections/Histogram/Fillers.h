#pragma once

#include "FillInto.h"
#include "Quantity.h"

#include <utility>

namespace velmorak {

/// Fills an object whose bins are known.
template <typename Object>
class GivenRange {
public:
    explicit GivenRange(Object empty) : object(std::move(empty)) {}

    void fill(const Batch& batch) { fillInto(object, batch); }
    void merge(GivenRange& other) { object.merge(other.object); }
    Object result() { return std::move(object); }

private:
    Object object;
};

/// A filler as the state of an accumulation.
template <typename Filler>
class FillingState : public AccumulatorState {
public:
    FillingState(const Quantity& filled, Filler empty) : quantity(filled), filler(std::move(empty)) {}

    void fill(const Chunk& chunk) override {
        const Quantity::Values values = quantity.values(chunk);
        filler.fill(values.batch());
    }
    void merge(AccumulatorState& other) override { filler.merge(static_cast<FillingState&>(other).filler); }

    auto result() { return filler.result(); }

private:
    const Quantity& quantity;
    Filler filler;
};

}  // namespace velmorak
