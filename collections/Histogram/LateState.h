#pragma once

#include "FillExpression.h"
#include "FillInto.h"
#include "LoadedLike.h"

#include <velmorak/StateBytes.h>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak {

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

template <typename Object>
void LateState<Object>::save(StateWriter& writer) const {
    writer.version(1);
    writer.number<bool>(object.has_value());
    if (object) {
        writer.object(*object);
    }
    writer.number<std::uint64_t>(waiting.size());
    for (const FillExpression::Values& values : waiting) {
        values.save(writer);
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
        waiting.emplace_back().load(reader, quantity.count());
    }
}

}  // namespace velmorak
