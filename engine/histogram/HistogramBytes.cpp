#include "histogram/GridBytes.h"

#include <velmorak/Histogram1D.h>

#include <cstddef>
#include <type_traits>

// Layout: mark, name, title, annotation, options, axis title, edges, cells, NaN entries, checksum; texts and lists
// are preceded by their length.
namespace velmorak {

namespace {

constexpr std::uint64_t mark = 0x32'44'31'48'6b'6c'65'56;

constexpr std::size_t bytesOfCell = 5 * sizeof(double);

static_assert(std::is_trivially_copyable_v<BinSums> && offsetof(BinSums, wxx) + sizeof(double) == bytesOfCell,
              "cells are written as they lie in memory");

}  // namespace

void Histogram1D::write(ByteWriter& writer) const {
    writer.number(mark);
    writer.head(*this);
    writer.list(x.title);
    writeEdges(writer, x);
    writer.packed(sums, bytesOfCell);
    writer.number(nans);
}

std::string Histogram1D::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

Histogram1D Histogram1D::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, mark);
    const ObjectHead head = reader.head();
    auto axisTitle = reader.list<std::string>();
    Axis axis(reader.list<std::vector<double>>());
    axis.title = std::move(axisTitle);
    auto cells = reader.packed<CellVector<BinSums>>(bytesOfCell);
    const auto nanEntries = reader.number<std::int64_t>();
    reader.mustBeAtEnd();
    Histogram1D histogram(std::move(axis), std::move(cells), nanEntries);
    head.give(histogram);
    return histogram;
}

}  // namespace velmorak
