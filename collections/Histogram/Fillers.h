#pragma once

#include "FillExpression.h"
#include "FillInto.h"
#include "LoadedLike.h"

#include <velmorak/StateBytes.h>

#include <utility>

namespace velmorak {

/// Fills an object whose binning is known.
template <typename Object>
class GivenRange {
public:
    explicit GivenRange(Object object) : object(std::move(object)) {}

    void fill(const FillBatch& batch) { fillInto(object, batch); }
    void merge(GivenRange& other) { object.merge(other.object); }
    Object result() { return std::move(object); }

    void save(StateWriter& writer) const { writer.object(object); }
    void load(StateReader& reader) { object = loadedLike(object, reader); }

private:
    Object object;
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
    void save(StateWriter& writer) const override {
        writer.version(1);
        filler.save(writer);
    }
    void load(StateReader& reader) override {
        reader.version(1);
        filler.load(reader);
    }

    auto result() { return filler.result(); }

private:
    const FillExpression& quantity;
    Filler filler;
};

}  // namespace velmorak
