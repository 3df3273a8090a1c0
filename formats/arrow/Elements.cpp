#include "arrow/Elements.h"

#include "columnar/Columns.h"

#include <algorithm>
#include <utility>

namespace velmorak::arrow {
namespace {

const Node& nodeOf(const Level& level, const Batch& batch) {
    const std::vector<Node>& nodes = batch.nodes;
    if (level.node >= nodes.size()) {
        throw Failure("a batch has fewer arrays than its schema needs");
    }
    return nodes[level.node];
}

void checkRanges(const Elements& elements, std::uint64_t length) {
    for (const Elements::Range& range : elements.ranges) {
        if (range.last > length) {
            throw Failure("an array has fewer values than its batch");
        }
    }
}

/// Clears isPresent where a bit of the validity buffer is 0.
void applyValidity(const Level& level, const BatchBuffers& buffers, Elements& elements) {
    if (!mayHaveNulls(level, buffers.contents())) {
        return;
    }
    const std::size_t buffer = bufferOf(level, buffers.contents(), 0);
    if (elements.isPresent.empty()) {
        elements.isPresent.assign(elements.size, 1);
    }
    std::size_t next = 0;
    for (const Elements::Range& range : elements.ranges) {
        const std::uint64_t byte = range.first / 8;
        const Piece bits = buffers.read(buffer, byte, (range.last + 7) / 8 - byte);
        for (std::uint64_t i = range.first; i < range.last; ++i, ++next) {
            const bool isThere = (bits.bytes[i / 8 - byte] >> (i & 7U) & 1U) != 0;
            elements.isPresent[next] = isThere ? elements.isPresent[next] : 0;
        }
    }
}

void append(std::vector<Elements::Range>& ranges, std::uint64_t first, std::uint64_t last) {
    if (first == last) {
        return;
    }
    if (!ranges.empty() && ranges.back().last == first) {
        ranges.back().last = last;
    } else {
        ranges.push_back({first, last});
    }
}

/// Where the list of each element begins and ends in the child array.
class ListBounds {
public:
    ListBounds(const Level& level, const BatchBuffers& buffers, const Elements::Range& range);

    std::uint64_t at(std::uint64_t element) const;

private:
    std::uint64_t first;
    std::uint64_t size;
    bool isFixed;
    bool isWide;
    Piece offsets;
};

ListBounds::ListBounds(const Level& level, const BatchBuffers& buffers, const Elements::Range& range)
    : first(range.first),
      size(level.type.listSize),
      isFixed(level.type.type == Type::FixedSizeList),
      isWide(level.type.hasWideOffsets()) {
    const std::uint64_t width = isWide ? 8 : 4;
    if (!isFixed) {
        offsets = buffers.read(bufferOf(level, buffers.contents(), 1), range.first * width,
                               (range.last - range.first + 1) * width);
    }
}

std::uint64_t ListBounds::at(std::uint64_t element) const {
    if (isFixed) {
        return element * size;
    }
    const std::uint64_t position = element - first;
    const std::int64_t offset = isWide ? columnar::littleEndian<std::int64_t>(offsets.bytes.data() + position * 8)
                                       : columnar::littleEndian<std::int32_t>(offsets.bytes.data() + position * 4);
    if (offset < 0) {
        throw Failure("the offsets of a list are damaged");
    }
    return static_cast<std::uint64_t>(offset);
}

/// The elements of lists.
struct Inside {
    Elements elements;
    std::vector<std::uint64_t> ends{0};  ///< Of each list in all elements, after a 0.
};

/// A missing list has no elements.
Inside enterLists(const Level& level, const BatchBuffers& buffers, const Elements& lists) {
    Inside inside;
    inside.ends.reserve(lists.size + 1);
    std::size_t next = 0;
    for (const Elements::Range& range : lists.ranges) {
        const ListBounds bounds(level, buffers, range);
        for (std::uint64_t i = range.first; i < range.last; ++i, ++next) {
            const std::uint64_t first = bounds.at(i);
            const std::uint64_t last = bounds.at(i + 1);
            if (last < first) {
                throw Failure("the offsets of a list do not ascend");
            }
            const bool isThere = lists.isPresent.empty() || lists.isPresent[next] != 0;
            append(inside.elements.ranges, first, isThere ? last : first);
            inside.ends.push_back(inside.ends.back() + (isThere ? last - first : 0));
        }
    }
    inside.elements.size = inside.ends.back();
    for (const std::uint64_t offset : lists.offsets) {
        inside.elements.offsets.push_back(inside.ends[offset]);
    }
    columnar::checkListValues(inside.elements.size, buffers.bytes());
    return inside;
}

/// Descends from rows [first, last) of a batch to the array of a level.
Elements descend(const Leaf& leaf, std::size_t level, const BatchBuffers& buffers, std::uint64_t first,
                 std::uint64_t last) {
    Elements elements;
    append(elements.ranges, first, last);
    elements.size = last - first;
    for (std::uint64_t i = first; i <= last && leaf.isList(); ++i) {
        elements.offsets.push_back(i - first);
    }
    for (std::size_t i = 0;; ++i) {
        checkRanges(elements, nodeOf(leaf.levels[i], buffers.contents()).length);
        applyValidity(leaf.levels[i], buffers, elements);
        if (i == level) {
            return elements;
        }
        if (isList(leaf.levels[i].type.type)) {
            elements = enterLists(leaf.levels[i], buffers, elements).elements;
        }
    }
}

}  // namespace

std::size_t bufferOf(const Level& level, const Batch& batch, std::size_t which) {
    const std::vector<std::uint64_t>& views = batch.viewBuffers;
    if (level.viewsBefore > views.size()) {
        throw Failure("a batch has fewer buffers than its schema needs");
    }
    std::size_t buffer = level.buffer + which;
    for (std::size_t i = 0; i < level.viewsBefore; ++i) {
        buffer += views[i];
    }
    return buffer;
}

bool mayHaveNulls(const Level& level, const Batch& batch) {
    if (level.type.type == Type::Null || !nodeOf(level, batch).mayHaveNulls) {
        return false;
    }
    const std::size_t validity = bufferOf(level, batch, 0);
    return validity < batch.buffers.size() && batch.buffers[validity].bytes > 0;
}

Elements elementsOf(const Leaf& leaf, const BatchBuffers& buffers, std::uint64_t first, std::uint64_t last) {
    return descend(leaf, leaf.levels.size() - 1, buffers, first, last);
}

Column listsOf(const columnar::NestedColumn& column, const Leaf& leaf, const BatchBuffers& buffers, std::uint64_t first,
               std::uint64_t last) {
    const std::size_t level = leaf.levelOf(column.list);
    const Elements lists = descend(leaf, level, buffers, first, last);
    Inside inside = enterLists(leaf.levels[level], buffers, lists);
    Column::Integers values;
    if (column.part == columnar::NestedColumn::Part::Counts) {
        for (std::size_t i = 0; i < lists.size; ++i) {
            values.push_back(static_cast<std::int64_t>(inside.ends[i + 1] - inside.ends[i]));
        }
        return {.values = std::move(values), .offsets = lists.offsets};
    }
    for (std::size_t row = 0; row + 1 < lists.offsets.size(); ++row) {
        for (std::uint64_t i = lists.offsets[row]; i < lists.offsets[row + 1]; ++i) {
            values.insert(values.end(), inside.ends[i + 1] - inside.ends[i],
                          static_cast<std::int64_t>(i - lists.offsets[row]));
        }
    }
    return {.values = std::move(values), .offsets = std::move(inside.elements.offsets)};
}

}  // namespace velmorak::arrow
