#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Storage for the cells of histograms and profiles, most of which may be empty.
namespace velmorak {

/// Memory filled with zeros. The system provides the pages of a large block only when they are first written.
class ZeroedMemory {
public:
    /// @throws std::bad_alloc
    static void* allocate(std::size_t bytes, std::size_t alignment);
    static void release(void* memory, std::size_t bytes, std::size_t alignment) noexcept;
};

/// Every byte of the cell is zero, padding included.
template <typename Cell>
bool isZero(const Cell& cell) {
    static_assert(std::is_trivially_copyable_v<Cell> && sizeof(Cell) % sizeof(std::uint64_t) == 0);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&cell);
    std::uint64_t any = 0;
    for (std::size_t at = 0; at < sizeof(Cell); at += sizeof any) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + at, sizeof word);
        any |= word;
    }
    return any == 0;
}

/// Allocates cells whose default value is all zeros. Constructing an empty cell in memory that is still zero writes
/// nothing, so that runs of empty cells use no physical memory.
template <typename Cell>
class CellAllocator {
public:
    using value_type = Cell;

    CellAllocator() = default;
    template <typename Other>
    // NOLINTNEXTLINE(google-explicit-constructor): required of an allocator by the standard.
    CellAllocator(const CellAllocator<Other>&) noexcept {}

    Cell* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(Cell)) {
            throw std::bad_array_new_length();
        }
        return static_cast<Cell*>(ZeroedMemory::allocate(count * sizeof(Cell), alignof(Cell)));
    }
    void deallocate(Cell* cells, std::size_t count) noexcept {
        ZeroedMemory::release(cells, count * sizeof(Cell), alignof(Cell));
    }

    void construct(Cell* place) {
        if (!isZero(*place)) {
            ::new (static_cast<void*>(place)) Cell();
        }
    }
    void construct(Cell* place, const Cell& cell) {
        if (!isZero(cell) || !isZero(*place)) {
            ::new (static_cast<void*>(place)) Cell(cell);
        }
    }

    bool operator==(const CellAllocator&) const = default;
};

template <typename Cell>
using CellVector = std::vector<Cell, CellAllocator<Cell>>;

}  // namespace velmorak
