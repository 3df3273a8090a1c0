#pragma once

#include <velmorak/HistogramGrid.h>

namespace velmorak {

/// What a cell of a profile knows: sums of the weights w, of the coordinates x along each axis, and of the value v that
/// is profiled.
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

/// What a file says of a cell of a profile, as it stands there; NaN where it leaves one of them out.
struct ProfileReading {
    double height = 0.0;
    double error = 0.0;
    double rms = 0.0;
    std::uint64_t isGiven = 0;  ///< Not 0 where the file says anything of the cell; else all three are NaN.

    bool operator==(const ProfileReading&) const = default;
};

/// Mean and spread of a value in bins of one or two others.
/// Unit:    edges in the units of the coordinates; height, error and rms in the unit of the value.
/// Shape:   cells() as the grid numbers them; a fill with a NaN is counted apart.
/// Threads: one filler at a time; give each chunk its own, then merge in chunk order.
template <std::size_t dimensions>
class Profile : public DataObject {
public:
    using Sums = ProfileSums<dimensions>;
    using Point = std::array<double, dimensions>;

    explicit Profile(Grid<dimensions> cellGrid);
    /// What a file knows of a profile. readings is empty where the sums are exact; otherwise it has one entry for each
    /// cell, and height, error and rms are these.
    /// @throws std::invalid_argument if there is not one entry for each cell.
    Profile(Grid<dimensions> cellGrid, CellVector<Sums> cells, CellVector<ProfileReading> readings,
            std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Profile; }

    const Grid<dimensions>& grid() const { return shape; }
    const CellVector<Sums>& cells() const { return sums; }
    const CellVector<ProfileReading>& readings() const { return asRead; }
    std::int64_t nanEntries() const { return nans; }
    /// False for what a file tells without its sums of weights: each entry then counts as a weight of 1.
    bool hasExactSums() const { return asRead.empty(); }
    void setAxisTitle(std::size_t direction, std::string title) { shape.setAxisTitle(direction, std::move(title)); }

    /// An infinite coordinate leaves wx and wxx of its direction alone.
    void fill(const Point& point, double value, double weight = 1.0);
    /// Fills count points in order, one array for each direction; weights is null for a weight of 1 each.
    void fill(const std::array<const double*, dimensions>& coordinates, const double* values, const double* weights,
              std::size_t count);
    /// Adds the sums; what a file said of single cells then holds no more.
    /// @throws std::invalid_argument if the axes differ.
    void merge(const Profile& other);

    /// Weighted mean of the value; NaN in a cell without fills.
    double height(std::size_t cell) const;
    /// Of the height: rms divided by the root of the effective number of entries, W²/sum of w².
    double error(std::size_t cell) const;
    /// Spread of the value, that of the population.
    double rms(std::size_t cell) const;

    /// Everything as bytes that fromBytes reads on any machine of the same kind.
    std::string toBytes() const;
    /// Writes these bytes without the checksum at their end.
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
