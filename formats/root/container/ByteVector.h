#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace velmorak::root {

/// Leaves new elements as they are in memory, instead of setting them to zero before they are read or unpacked.
template <typename T>
struct UninitializedAllocator : std::allocator<T> {
    template <typename Other>
    struct rebind {
        using other = UninitializedAllocator<Other>;
    };

    template <typename Other>
    void construct(Other* place) {
        ::new (static_cast<void*>(place)) Other;
    }
    template <typename Other, typename... Arguments>
    void construct(Other* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) Other(std::forward<Arguments>(arguments)...);
    }
};

/// Its constructor with a length and resize leave the bytes undefined.
using ByteVector = std::vector<std::uint8_t, UninitializedAllocator<std::uint8_t>>;

}  // namespace velmorak::root
