#pragma once

#include <velmorak/StateBytes.h>

namespace velmorak {

/// @return the object that was saved.
/// @throws Failure unless its axes are those of the given object.
template <typename Object>
Object loadedLike(const Object& like, StateReader& reader) {
    const auto loaded = reader.object<Object>();
    reader.require(loaded->grid() == like.grid(), "its axes are others");
    Object object = *loaded;
    return object;
}

}  // namespace velmorak
