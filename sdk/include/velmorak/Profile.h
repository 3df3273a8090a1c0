#pragma once

#include <velmorak/HistogramGrid.h>

namespace velmorak {

/// Sums over the fills of one cell: the weights w, the coordinates x along each axis, and the profiled value v.
template <std::size_t dimensions>
struct ProfileSums {
    std::int64_t entries = 0;
    double w = 0.0;
    double ww = 0.0;
    double wv = 0.0;
    double wvv = 0.0;
    std::array<double, dimensions> wx{};
    std::array<double, dimensions> wxx{};

    void add(const ProfileSums& other);
    bool operator==(const ProfileSums&) const = default;
};

/// The numbers of one cell as a file gives them; NaN for those that the file omits.
struct ProfileReading {
    double height = 0.0;
    double error = 0.0;
    double rms = 0.0;
    std::uint64_t isGiven = 0;  ///< 0 if the file omits the cell; all three are then NaN.

    bool operator==(const ProfileReading&) const = default;
};

/// Mean and spread of a value in bins of one or two other quantities.
/// Unit:    edges in the units of the coordinates; height, error and rms in the unit of the value.
/// Shape:   cells() in the numbering of the grid; fills with a NaN are counted in nanEntries().
/// Threads: one filler at a time; fill one profile per chunk, then merge them in chunk order.
template <std::size_t dimensions>
class Profile : public DataObject {
public:
    using Sums = ProfileSums<dimensions>;
    using Point = std::array<double, dimensions>;

    explicit Profile(Grid<dimensions> cellGrid);
    /// For a reader of a file. readings is empty if the sums are exact; otherwise it has one entry per cell, from which
    /// height, error and rms are taken.
    /// @throws std::invalid_argument if cells, or readings unless empty, does not have one entry per cell.
    Profile(Grid<dimensions> cellGrid, CellVector<Sums> cells, CellVector<ProfileReading> readings,
            std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Profile; }

    const Grid<dimensions>& grid() const { return shape; }
    const CellVector<Sums>& cells() const { return sums; }
    const CellVector<ProfileReading>& readings() const { return asRead; }
    std::int64_t nanEntries() const { return nans; }
    /// False for a profile from a file without sums of weights: each entry then counts with a weight of 1.
    bool hasExactSums() const { return asRead.empty(); }
    void setAxisTitle(std::size_t direction, std::string title) { shape.setAxisTitle(direction, std::move(title)); }

    /// An infinite coordinate does not enter wx and wxx of its axis.
    void fill(const Point& point, double value, double weight = 1.0);
    /// Fills count points in order, given as one array per axis. weights may be null: each weight is then 1.
    void fill(const std::array<const double*, dimensions>& coordinates, const double* values, const double* weights,
              std::size_t count);
    /// Adds the sums and discards the readings of a file.
    /// @throws std::invalid_argument if the axes differ.
    void merge(const Profile& other);

    /// Weighted mean of the value; NaN in an empty cell.
    double height(std::size_t cell) const;
    /// Standard error of the height: rms divided by the square root of the effective number of entries, (Σw)²/Σw².
    double error(std::size_t cell) const;
    /// Population standard deviation of the value.
    double rms(std::size_t cell) const;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static Profile fromBytes(const std::string& bytes);

private:
    Grid<dimensions> shape;
    CellVector<Sums> sums;
    CellVector<ProfileReading> asRead;
    std::int64_t nans = 0;
};

using Profile1D = Profile<1>;
using Profile2D = Profile<2>;

extern template struct ProfileSums<1>;
extern template struct ProfileSums<2>;
extern template class Profile<1>;
extern template class Profile<2>;

}  // namespace velmorak
