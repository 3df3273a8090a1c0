#pragma once

#include <velmorak/StateBytes.h>

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

}  // namespace velmorak
