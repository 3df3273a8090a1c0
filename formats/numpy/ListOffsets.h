#pragma once

#include "numpy/ArrayTable.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace velmorak::numpy {

/// Reads where lists begin, from front to back.
class ListOffsets {
public:
    /// @param array the offsets, one more than there are lists; outlives this.
    /// @param values  of all lists, which offsets must not exceed.
    ListOffsets(std::shared_ptr<const PlainFile> opened, const StoredArray& array, std::uint64_t values);

    /// Makes the next lists known; there are as many. @throws Failure if the offsets are damaged.
    void readAhead(std::size_t lists);
    /// @param list among those that are known. @return the number of its values.
    std::uint64_t length(std::size_t list) const { return known[list + 1] - known[list]; }
    /// @return the offsets of the next lists, one more than these. @param lists that are known.
    std::vector<std::uint64_t> take(std::size_t lists);

private:
    void read(std::size_t count, char* target);

    const std::shared_ptr<const PlainFile> file;
    const StoredArray& array;
    const std::uint64_t values;
    std::unique_ptr<MemberStream> stream;  ///< Of a packed array.
    std::uint64_t position = 0;            ///< In one that is not packed.
    std::vector<std::uint64_t> known;
};

}  // namespace velmorak::numpy
