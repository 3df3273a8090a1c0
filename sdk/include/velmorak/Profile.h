#pragma once

#include <velmorak/FilledGrid.h>

namespace velmorak {

/// The numbers of one cell as a file gives them; NaN for those that the file omits.
struct ProfileReading {
    double height = 0.0;
    double error = 0.0;
    double rms = 0.0;
    std::uint64_t isGiven = 0;  ///< 0 if the file omits the cell; all three are then NaN.

    bool operator==(const ProfileReading&) const = default;
};

/// Mean and spread of a value in bins of one or two other quantities. The value is the last of the quantities of a
/// cell.
/// Unit:    edges in the unit of the coordinates; height, error and rms in the unit of the value.
/// Shape:   see FilledGrid.
/// Threads: one filler at a time; fill one profile per chunk, then merge them in chunk order.
template <std::size_t axes>
class Profile : public FilledGrid<axes, axes + 1> {
    using Base = FilledGrid<axes, axes + 1>;

public:
    using typename Base::Point;
    using typename Base::Sums;
    static constexpr std::size_t value = axes;  ///< Position of the value among the quantities.

    explicit Profile(Grid<axes> cellGrid) : Base(std::move(cellGrid)) {}
    /// For a reader of a file. readings is empty if the sums are exact; otherwise it has one entry per cell, from which
    /// height, error and rms are taken.
    /// @throws std::invalid_argument if cells, or readings unless empty, does not have one entry per cell.
    Profile(Grid<axes> cellGrid, CellVector<Sums> cells, CellVector<ProfileReading> readings, std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Profile; }

    const CellVector<ProfileReading>& readings() const { return asRead; }
    /// False for a profile from a file without sums of weights: each entry then counts with a weight of 1.
    bool hasExactSums() const { return asRead.empty(); }

    /// An infinite coordinate counts as 0 in the sums of its axis.
    void fill(const Point& point, double filled, double weight = 1.0);
    /// Fills count points in order, given as one array per axis, with the same bits as single fills. weights may be
    /// null: each weight is then 1.
    void fill(const std::array<const double*, axes>& coordinates, const double* values, const double* weights,
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

    void write(ByteWriter& writer) const override;
    /// Reverses toBytes on machines of the same byte order.
    /// @throws std::invalid_argument if the bytes are damaged.
    static Profile fromBytes(const std::string& bytes);

private:
    explicit Profile(ByteReader& reader);

    CellVector<ProfileReading> asRead;
};

using Profile1D = Profile<1>;
using Profile2D = Profile<2>;

extern template class Profile<1>;
extern template class Profile<2>;

}  // namespace velmorak
