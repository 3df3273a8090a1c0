#include "root/write/TreeRows.h"

#include "root/container/Buffer.h"
#include "root/write/ByteOutput.h"

#include <velmorak/ChunkSize.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace velmorak::root {
namespace {

constexpr std::size_t enoughBytes = std::size_t{4} << 20U;
constexpr std::size_t maxBasketBytes = std::size_t{1} << 30U;

BranchValues lengthsOf(const Column& column, std::size_t rows) {
    BranchValues values;
    ByteOutput output;
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint64_t length = column.offsets[row + 1] - column.offsets[row];
        if (length > std::numeric_limits<std::int32_t>::max()) {
            throw Failure("a list is too long for a ROOT tree");
        }
        output.u32(static_cast<std::uint32_t>(length));
        values.largest = std::max(values.largest, static_cast<std::int32_t>(length));
    }
    values.bytes = output.take();
    return values;
}

BranchValues numbersOf(const Column& column, std::size_t first, std::size_t last) {
    ByteOutput output;
    if (column.type() == ColumnType::Real) {
        output.reals(std::span(column.reals()).subspan(first, last - first));
    } else if (column.type() == ColumnType::Integer) {
        output.integers(std::span(column.integers()).subspan(first, last - first));
    } else {
        const std::span<const std::uint8_t> booleans = std::span(column.booleans()).subspan(first, last - first);
        output.raw({reinterpret_cast<const char*>(booleans.data()), booleans.size()});
    }
    return {.bytes = output.take(), .starts = {}};
}

BranchValues listsOf(const Column& column, std::size_t rows, std::size_t valueBytes) {
    const std::uint64_t first = column.offsets[0];
    BranchValues values = numbersOf(column, first, column.offsets[rows]);
    values.starts.resize(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        values.starts[row] = static_cast<std::uint32_t>((column.offsets[row] - first) * valueBytes);
    }
    return values;
}

BranchValues textsOf(const TreeLayout& layout, const WrittenBranch& branch, const Chunk& chunk) {
    BranchValues values;
    ByteOutput output;
    const Column::Texts& texts = chunk.columns[branch.column]->texts();
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        if (texts[row].find('\0') != std::string::npos) {
            throw Failure(fmt::format(
                "a text of the column \"{}\", in one of the {} rows from row {} on, has a zero byte, which a ROOT tree "
                "cannot hold",
                layout.schema[branch.column].name, chunk.rows, chunk.firstRow + 1));
        }
        values.starts.push_back(static_cast<std::uint32_t>(output.size()));
        values.largest = std::max(values.largest, static_cast<std::int32_t>(texts[row].size() + 1));
        output.text(texts[row]);
    }
    values.bytes = output.take();
    return values;
}

BranchValues valuesOf(const TreeLayout& layout, const WrittenBranch& branch, const Chunk& chunk) {
    const Column& column = *chunk.columns[branch.column];
    if (branch.hasLengths) {
        return lengthsOf(column, chunk.rows);
    }
    if (branch.count) {
        return listsOf(column, chunk.rows, branch.valueBytes());
    }
    if (branch.type == ColumnType::Text) {
        return textsOf(layout, branch, chunk);
    }
    return numbersOf(column, 0, chunk.rows);
}

void requireLength(const BranchValues& values, const WrittenBranch& branch) {
    if (values.bytes.size() > maxBasketBytes) {
        throw Failure(
            fmt::format("the values of \"{}\" in a single block of rows take more than 1 GiB, the limit of a "
                        "ROOT file",
                        branch.name));
    }
}

void putValues(ByteOutput& output, const BranchValues& values) {
    output.u32(static_cast<std::uint32_t>(values.largest));
    output.u32(static_cast<std::uint32_t>(values.bytes.size()));
    output.raw(values.bytes);
    for (const std::uint32_t start : values.starts) {
        output.u32(start);
    }
}

void putBasket(ByteOutput& output, const PackedBasket& basket) {
    output.u32(static_cast<std::uint32_t>(basket.largest));
    output.u32(basket.contentBytes);
    output.u32(basket.border);
    output.u32(static_cast<std::uint32_t>(basket.bytes.size()));
    output.raw(basket.bytes);
}

BranchValues takeValues(Buffer& buffer, bool isVariable, std::size_t rows) {
    BranchValues values;
    values.largest = buffer.i32();
    values.bytes = buffer.textOf(buffer.u32());
    for (std::size_t row = 0; isVariable && row < rows; ++row) {
        values.starts.push_back(buffer.u32());
    }
    return values;
}

PackedBasket takeBasket(Buffer& buffer) {
    PackedBasket basket;
    basket.largest = buffer.i32();
    basket.contentBytes = buffer.u32();
    basket.border = buffer.u32();
    basket.bytes = buffer.textOf(buffer.u32());
    return basket;
}

}  // namespace

void BranchValues::append(const BranchValues& next) {
    const auto shift = static_cast<std::uint32_t>(bytes.size());
    bytes += next.bytes;
    for (const std::uint32_t start : next.starts) {
        starts.push_back(shift + start);
    }
    largest = std::max(largest, next.largest);
}

/// The places of the entries follow the values: their number, one for each entry, and a last one that is not used.
PackedBasket packBasket(const BranchValues& values, std::size_t headBytes, Packing packing) {
    PackedBasket basket;
    basket.border = static_cast<std::uint32_t>(values.bytes.size());
    basket.largest = values.largest;
    ByteOutput output;
    output.raw(values.bytes);
    if (!values.starts.empty()) {
        output.u32(static_cast<std::uint32_t>(values.starts.size() + 1));
        for (const std::uint32_t start : values.starts) {
            output.u32(static_cast<std::uint32_t>(start + headBytes));
        }
        output.u32(0);
    }
    basket.contentBytes = static_cast<std::uint32_t>(output.size());
    basket.bytes = packed(output.take(), packing);
    return basket;
}

std::size_t TreeRows::bytes() const {
    std::size_t sum = 0;
    for (const BranchValues& each : values) {
        sum += each.bytes.size() + 4 * each.starts.size();
    }
    return sum;
}

bool TreeRows::isEnough(const TreeLayout& layout) const {
    return 4 * std::size_t{rows} >= rowsInChunk(layout.schema) || bytes() >= enoughBytes;
}

void TreeRows::pack(const TreeLayout& layout, Packing packing) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t headBytes = layout.basketHead(layout.branches[i]).bytes();
        baskets.push_back(packBasket(values[i], headBytes, packing));
        values[i] = {};  // All branches together may be large.
    }
    values.clear();
}

void TreeRows::append(const TreeRows& next) {
    rows += next.rows;
    values.resize(next.values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i].append(next.values[i]);
    }
}

TreeRows treeRowsOf(const TreeLayout& layout, const Chunk& chunk) {
    TreeRows rows{.rows = static_cast<std::uint32_t>(chunk.rows), .values = {}, .baskets = {}};
    for (const WrittenBranch& branch : layout.branches) {
        rows.values.push_back(valuesOf(layout, branch, chunk));
        requireLength(rows.values.back(), branch);
    }
    return rows;
}

std::string bytesOfRows(const TreeRows& rows) {
    ByteOutput output;
    output.u8(rows.baskets.empty() ? 0 : 1);
    output.u32(rows.rows);
    for (const BranchValues& values : rows.values) {
        putValues(output, values);
    }
    for (const PackedBasket& basket : rows.baskets) {
        putBasket(output, basket);
    }
    return output.take();
}

TreeRows takeRows(std::string_view& bytes, const TreeLayout& layout) {
    Buffer buffer(Bytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    const bool arePacked = buffer.u8() != 0;
    TreeRows rows{.rows = buffer.u32(), .values = {}, .baskets = {}};
    for (const WrittenBranch& branch : layout.branches) {
        if (arePacked) {
            rows.baskets.push_back(takeBasket(buffer));
        } else {
            rows.values.push_back(takeValues(buffer, branch.isVariable(), rows.rows));
        }
    }
    bytes.remove_prefix(buffer.position());
    return rows;
}

}  // namespace velmorak::root
