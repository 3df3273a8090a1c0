#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Cells of histograms and profiles, most of which may be empty.
namespace velmorak {

/// Memory of zero bytes. Where it is large, the system gives a page of it when something is first written there.
class BlankMemory {
public:
    /// @throws std::bad_alloc
    static void* take(std::size_t bytes, std::size_t alignment);
    static void giveBack(void* memory, std::size_t bytes, std::size_t alignment) noexcept;
};

/// Every byte of the cell is zero, its padding included.
template <typename Cell>
bool isBlank(const Cell& cell) {
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

/// Allocates cells, of which a default one holds only zeros. An empty cell that is made where memory is still blank
/// writes nothing, so that empty cells take none.
template <typename Cell>
class CellAllocator {
public:
    using value_type = Cell;

    CellAllocator() = default;
    template <typename Other>
    // NOLINTNEXTLINE(google-explicit-constructor): as the standard wants an allocator.
    CellAllocator(const CellAllocator<Other>&) noexcept {}

    Cell* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(Cell)) {
            throw std::bad_array_new_length();
        }
        return static_cast<Cell*>(BlankMemory::take(count * sizeof(Cell), alignof(Cell)));
    }
    void deallocate(Cell* cells, std::size_t count) noexcept {
        BlankMemory::giveBack(cells, count * sizeof(Cell), alignof(Cell));
    }

    void construct(Cell* place) {
        if (!isBlank(*place)) {
            ::new (static_cast<void*>(place)) Cell();
        }
    }
    void construct(Cell* place, const Cell& cell) {
        if (!isBlank(cell) || !isBlank(*place)) {
            ::new (static_cast<void*>(place)) Cell(cell);
        }
    }

    bool operator==(const CellAllocator&) const = default;
};

template <typename Cell>
using CellVector = std::vector<Cell, CellAllocator<Cell>>;

}  // namespace velmorak
