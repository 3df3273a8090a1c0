#pragma once

#include <velmorak/CellSums.h>
#include <velmorak/Grid.h>
#include <velmorak/Value.h>

#include <string>
#include <utility>

namespace velmorak {

class ByteReader;
class ByteWriter;

/// What histograms and profiles share: sums of the fills in each cell of a grid. The first quantities are the
/// coordinates along the axes.
/// Shape: cells() in the numbering of the grid, each underflow and overflow cell separately; fills with a NaN are
///        counted in nanEntries().
template <std::size_t axes, std::size_t quantities>
class FilledGrid : public DataObject {
public:
    static constexpr std::size_t dimensions = axes;
    using Sums = CellSums<quantities>;
    using Point = std::array<double, axes>;

    const Grid<axes>& grid() const { return shape; }
    const CellVector<Sums>& cells() const { return sums; }
    /// Number of fills with a coordinate, value or weight that is NaN; no cell contains them.
    std::int64_t nanEntries() const { return nans; }
    void setAxisTitle(std::size_t direction, std::string axisTitle) {
        shape.setAxisTitle(direction, std::move(axisTitle));
    }

    /// The sums over all cells that are inside on every axis.
    Sums inRange() const;

    /// Serialises the whole object.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    virtual void write(ByteWriter& writer) const;

protected:
    /// The bytes of a whole object.
    struct Bytes {
        const std::string& all;
    };
    using Columns = std::array<const double*, quantities>;

    explicit FilledGrid(Grid<axes> cellGrid);
    /// @throws std::invalid_argument if there is not one entry for each cell.
    FilledGrid(Grid<axes> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries);
    /// Reads the bytes of an object that has nothing else.
    /// @throws std::invalid_argument if the bytes are damaged.
    explicit FilledGrid(const Bytes& bytes);
    /// Reads what write has written. @throws std::invalid_argument if the bytes are damaged.
    explicit FilledGrid(ByteReader& reader);

    static std::uint64_t mark();
    void fillPoint(const typename Sums::Point& point, double weight);
    void fillColumns(const Columns& columns, const double* weights, std::size_t count);
    /// @throws std::invalid_argument if the axes differ.
    void add(const FilledGrid& other);

private:
    explicit FilledGrid(ByteReader&& whole);

    Grid<axes> shape;
    CellVector<Sums> sums;
    std::int64_t nans = 0;
};

extern template class FilledGrid<1, 1>;
extern template class FilledGrid<2, 2>;
extern template class FilledGrid<3, 3>;
extern template class FilledGrid<1, 2>;
extern template class FilledGrid<2, 3>;

}  // namespace velmorak
