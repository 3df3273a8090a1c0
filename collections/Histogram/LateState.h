#pragma once

#include "FillExpression.h"
#include "FillInto.h"

#include <velmorak/StateBytes.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak {

/// @return the object that the reader holds.
/// @throws Failure unless it has the axes of another one.
template <typename Object>
Object loadedLike(const Object& like, StateReader& reader) {
    const auto loaded = reader.object<Object>();
    reader.require(loaded->grid() == like.grid(), "its axes are others");
    Object object = *loaded;
    return object;
}

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

/// Keeps the values of one chunk until its turn comes to fill the only object of its file, which belongs to the state
/// of the whole file. For objects with so many cells that allocating and adding one for each chunk would take far
/// longer than filling it. The result for a file is bit-identical to sequential filling.
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

    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

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

inline void saveColumn(StateWriter& writer, const ColumnPtr& column) {
    writer.number<bool>(column != nullptr);
    if (column) {
        writer.list(column->reals());
    }
}

inline ColumnPtr loadedColumn(StateReader& reader) {
    if (!reader.number<bool>()) {
        return nullptr;
    }
    Column column;
    column.values = reader.list<Column::Reals>();
    return std::make_shared<const Column>(std::move(column));
}

template <typename Object>
void LateState<Object>::save(StateWriter& writer) const {
    writer.version(1);
    writer.number<bool>(object.has_value());
    if (object) {
        writer.object(*object);
    }
    writer.number<std::uint64_t>(waiting.size());
    for (const FillExpression::Values& values : waiting) {
        saveColumn(writer, values.weights);
        for (const ColumnPtr& column : values.coordinates) {
            saveColumn(writer, column);
        }
    }
}

template <typename Object>
void LateState<Object>::load(StateReader& reader) {
    reader.version(1);
    if (reader.number<bool>()) {
        object.emplace(loadedLike(make(), reader));
    }
    waiting.clear();
    for (std::size_t count = reader.length(1); count > 0; --count) {
        FillExpression::Values& values = waiting.emplace_back();
        values.weights = loadedColumn(reader);
        for (std::size_t i = 0; i < quantity.count(); ++i) {
            values.coordinates.push_back(loadedColumn(reader));
            const ColumnPtr& column = values.coordinates.back();
            reader.require(column && column->valueCount() == values.coordinates.front()->valueCount(),
                           "its columns have different lengths");
        }
        reader.require(!values.weights || values.weights->valueCount() == values.coordinates.front()->valueCount(),
                       "it does not have a weight for each value");
    }
}

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
