#pragma once

#include <velmorak/ZeroedArray.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Storage for the cells of histograms and profiles, most of which may be empty.
namespace velmorak {

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

/// A fixed number of cells, all zero at first. Few lie one behind the other (dense). Many are sparse: an index of four
/// bytes a cell says which have been written, and only those are stored. Reading stores no cell; non-const access does.
template <typename Cell>
class CellVector {
public:
    using value_type = Cell;
    class const_iterator;

    /// Dense cells take no more memory than this, which is about what a processor's cache holds.
    static constexpr std::size_t maxDenseBytes = std::size_t{32} << 20U;

    CellVector() = default;
    explicit CellVector(std::size_t size) : count(size), dense(isSparse() ? 0 : size), index(isSparse() ? size : 0) {}

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    bool isSparse() const { return count > maxDenseBytes / sizeof(Cell); }
    /// @return the cells one behind the other; null if they are sparse.
    Cell* denseData() { return dense.data(); }

    const Cell& operator[](std::size_t cell) const {
        if (!isSparse()) {
            return dense[cell];
        }
        return index[cell] == 0 ? emptyCell : stored(index[cell] - 1);
    }
    Cell& operator[](std::size_t cell) {
        if (!isSparse()) {
            return dense[cell];
        }
        return stored(index[cell] == 0 ? store(cell) : index[cell] - 1);
    }
    const Cell& front() const { return (*this)[0]; }
    const Cell& back() const { return (*this)[count - 1]; }

    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, count}; }
    /// Calls change(cell) for each cell that is not zero, in their order.
    template <typename Change>
    void changeFilled(const Change& change) {
        for (std::size_t cell = 0; cell < count; ++cell) {
            if (!isZero(std::as_const(*this)[cell])) {
                change((*this)[cell]);
            }
        }
    }

    /// Hints for cells that are about to be written; first the one, and some cells later the other.
    void prefetchIndex(std::size_t cell) const { __builtin_prefetch(index.data() + cell, 1); }
    void prefetchCell(std::size_t cell) const {
        if (index[cell] != 0) {
            const auto* const bytes = reinterpret_cast<const char*>(&stored(index[cell] - 1));
            __builtin_prefetch(bytes, 1);
            __builtin_prefetch(bytes + sizeof(Cell) - 1, 1);
        }
    }

    bool operator==(const CellVector& other) const {
        return count == other.count && std::equal(begin(), end(), other.begin());
    }

private:
    static constexpr std::size_t blockCells = std::size_t{1} << 18U;
    static constexpr Cell emptyCell{};

    const Cell& stored(std::size_t place) const { return blocks[place / blockCells][place % blockCells]; }
    Cell& stored(std::size_t place) { return blocks[place / blockCells][place % blockCells]; }

    /// @return the place of a cell that gets one.
    std::size_t store(std::size_t cell) {
        if (filled == std::numeric_limits<std::uint32_t>::max()) {
            throw std::bad_alloc();
        }
        if (filled == blocks.size() * blockCells) {
            blocks.emplace_back(blockCells);
        }
        index[cell] = ++filled;
        return filled - 1;
    }

    std::size_t count = 0;
    ZeroedArray<Cell> dense;
    ZeroedArray<std::uint32_t> index;  ///< Place of each cell plus 1; 0 for a cell that is not stored.
    std::vector<ZeroedArray<Cell>> blocks;
    std::uint32_t filled = 0;
};

template <typename Cell>
class CellVector<Cell>::const_iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Cell;
    using difference_type = std::ptrdiff_t;
    using pointer = const Cell*;
    using reference = const Cell&;

    const_iterator() = default;
    const_iterator(const CellVector* vector, std::size_t position) : cells(vector), cell(position) {}

    reference operator*() const { return (*cells)[cell]; }
    pointer operator->() const { return &(*cells)[cell]; }
    const_iterator& operator++() {
        ++cell;
        return *this;
    }
    const_iterator operator++(int) {
        const const_iterator before = *this;
        ++cell;
        return before;
    }
    bool operator==(const const_iterator&) const = default;

private:
    const CellVector* cells = nullptr;
    std::size_t cell = 0;
};

}  // namespace velmorak
