#pragma once

#include "FillExpression.h"

#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <utility>

namespace velmorak {

/// Fills all entries of a batch in their order.
inline void fillInto(Histogram1D& histogram, const FillBatch& batch) {
    histogram.fill(batch.x, batch.weights, batch.count);
}
inline void fillInto(Histogram2D& histogram, const FillBatch& batch) {
    histogram.fill({batch.x, batch.y}, batch.weights, batch.count);
}
inline void fillInto(Histogram3D& histogram, const FillBatch& batch) {
    histogram.fill({batch.x, batch.y, batch.z}, batch.weights, batch.count);
}
inline void fillInto(Profile1D& profile, const FillBatch& batch) {
    profile.fill({batch.x}, batch.y, batch.weights, batch.count);
}
inline void fillInto(Profile2D& profile, const FillBatch& batch) {
    profile.fill({batch.x, batch.y}, batch.z, batch.weights, batch.count);
}

/// An object with one axis; without cells it is empty.
template <typename Object, typename... Cells>
Object onAxis(Axis axis, Cells&&... cells) {
    return Object(Grid<1>({std::move(axis)}), std::forward<Cells>(cells)...);
}

}  // namespace velmorak
