#include <velmorak/FilledGrid.h>

#include "histogram/GridBytes.h"
#include "histogram/GridFiller.h"

#include <velmorak/Histogram.h>

#include <stdexcept>
#include <type_traits>

namespace velmorak {

namespace {

/// Cells are written as they lie in memory, without padding.
template <std::size_t quantities>
constexpr std::size_t bytesOfCell = offsetof(CellSums<quantities>, pivot) + quantities * sizeof(double);

template <std::size_t quantities>
constexpr bool isPacked = std::is_trivially_copyable_v<CellSums<quantities>>&& bytesOfCell<quantities> ==
                          (3 + 2 * quantities + CellSums<quantities>::pairs) * sizeof(double);
static_assert(isPacked<1> && isPacked<2> && isPacked<3>);

}  // namespace

template <std::size_t axes, std::size_t quantities>
FilledGrid<axes, quantities>::FilledGrid(Grid<axes> cellGrid) : shape(std::move(cellGrid)), sums(shape.cellCount()) {}

template <std::size_t axes, std::size_t quantities>
FilledGrid<axes, quantities>::FilledGrid(Grid<axes> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries)
    : shape(std::move(cellGrid)), sums(std::move(cells)), nans(nanEntries) {
    if (sums.size() != shape.cellCount()) {
        throw std::invalid_argument("a histogram or profile needs the sums of each of its cells");
    }
}

template <std::size_t axes, std::size_t quantities>
void FilledGrid<axes, quantities>::fillPoint(const typename Sums::Point& point, double weight) {
    if (std::isnan(weight) || filling::hasNan(point)) {
        ++nans;
        return;
    }
    typename Grid<axes>::Cells alongAxes{};
    for (std::size_t direction = 0; direction < axes; ++direction) {
        alongAxes[direction] = shape.axis(direction).cell(point[direction]);
    }
    filling::addPoint<axes>(sums[shape.cell(alongAxes)], point, weight);
}

template <std::size_t axes, std::size_t quantities>
void FilledGrid<axes, quantities>::fillColumns(const Columns& columns, const double* weights, std::size_t count) {
    filling::GridFiller<axes, quantities> filler(shape, sums);
    nans += filler.fill({.columns = columns, .weights = weights, .count = count});
}

template <std::size_t axes, std::size_t quantities>
void FilledGrid<axes, quantities>::add(const FilledGrid& other) {
    if (!(shape == other.shape)) {
        throw std::invalid_argument("histograms or profiles with different axes cannot be added");
    }
    // Empty cells are not written, so that they take no memory.
    for (std::size_t cell = 0; cell < sums.size(); ++cell) {
        if (!isZero(other.sums[cell])) {
            sums[cell].add(other.sums[cell]);
        }
    }
    nans += other.nans;
}

template <std::size_t axes, std::size_t quantities>
CellSums<quantities> FilledGrid<axes, quantities>::inRange() const {
    CellTotal<quantities> total;
    std::vector<std::size_t> inside;
    for (std::size_t cell = 0; cell < sums.size(); ++cell) {
        if (!isZero(sums[cell]) && shape.isInside(cell)) {
            total.count(sums[cell]);
            inside.push_back(cell);
        }
    }
    for (const std::size_t cell : inside) {
        total.add(sums[cell]);
    }
    return total.result();
}

template <std::size_t axes, std::size_t quantities>
std::uint64_t FilledGrid<axes, quantities>::mark() {
    // The two lowest bytes are the numbers of axes and quantities.
    constexpr std::uint64_t version = 0x33'64'72'47'6b'6c'00'00;
    return version + (std::uint64_t{axes} << 8U) + quantities;
}

template <std::size_t axes, std::size_t quantities>
void FilledGrid<axes, quantities>::write(ByteWriter& writer) const {
    writer.number(mark());
    writer.head(*this);
    writeGrid(writer, shape);
    writeCells(writer, sums, bytesOfCell<quantities>);
    writer.number(nans);
}

template <std::size_t axes, std::size_t quantities>
std::string FilledGrid<axes, quantities>::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

template <std::size_t axes, std::size_t quantities>
FilledGrid<axes, quantities>::FilledGrid(ByteReader& reader)
    : shape(readHeadAndGrid<axes>(reader, *this)),
      sums(readCells<CellVector<Sums>>(reader, shape.cellCount(), bytesOfCell<quantities>)),
      nans(reader.number<std::int64_t>()) {}

template <std::size_t axes, std::size_t quantities>
FilledGrid<axes, quantities>::FilledGrid(const Bytes& bytes) : FilledGrid(ByteReader(bytes.all, mark())) {}

template <std::size_t axes, std::size_t quantities>
FilledGrid<axes, quantities>::FilledGrid(ByteReader&& whole) : FilledGrid(whole) {
    whole.mustBeAtEnd();
}

template class FilledGrid<1, 1>;
template class FilledGrid<2, 2>;
template class FilledGrid<3, 3>;
template class FilledGrid<1, 2>;
template class FilledGrid<2, 3>;

}  // namespace velmorak
