#include <velmorak/Profile.h>

#include "histogram/GridBytes.h"
#include "histogram/GridFills.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

// The lowest byte is the number of dimensions.
constexpr std::uint64_t mark = 0x31'44'66'50'6b'6c'65'00;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using ThreeNumbers = std::array<double, 3>;

/// Height, error and rms.
ThreeNumbers readingOf(const ProfileReading& reading) {
    return reading.isGiven != 0 ? ThreeNumbers{reading.height, reading.error, reading.rms}
                                : ThreeNumbers{nan, nan, nan};
}

void writeReadings(ByteWriter& writer, const CellVector<ProfileReading>& readings) {
    writer.number<std::uint64_t>(readings.size());
    for (const ProfileReading& reading : readings) {
        writer.number(readingOf(reading));
    }
}

CellVector<ProfileReading> readReadings(ByteReader& reader) {
    CellVector<ProfileReading> readings;
    for (const auto& [height, error, rms] : reader.list<std::vector<ThreeNumbers>>()) {
        readings.push_back({height, error, rms, 1});
    }
    return readings;
}

}  // namespace

template <std::size_t dimensions>
void ProfileSums<dimensions>::add(const ProfileSums& other) {
    addEntries(*this, other);
    wv += other.wv;
    wvv += other.wvv;
}

template <std::size_t dimensions>
Profile<dimensions>::Profile(Grid<dimensions> cellGrid) : shape(std::move(cellGrid)), sums(shape.cellCount()) {}

template <std::size_t dimensions>
Profile<dimensions>::Profile(Grid<dimensions> cellGrid, CellVector<Sums> cells, CellVector<ProfileReading> readings,
                             std::int64_t nanEntries)
    : shape(std::move(cellGrid)), sums(std::move(cells)), asRead(std::move(readings)), nans(nanEntries) {
    if (sums.size() != shape.cellCount() || (!asRead.empty() && asRead.size() != sums.size())) {
        throw std::invalid_argument("a profile needs the sums of each of its cells");
    }
}

template <std::size_t dimensions>
void Profile<dimensions>::fill(const Point& point, double value, double weight) {
    if (std::isnan(value) || std::isnan(weight) || hasNan(point)) {
        ++nans;
        return;
    }
    asRead.clear();
    Sums& cell = sums[cellOf(shape, point)];
    addEntry(cell, point, weight);
    cell.wv += weight * value;
    cell.wvv += weight * value * value;
}

template <std::size_t dimensions>
void Profile<dimensions>::fill(const std::array<const double*, dimensions>& coordinates, const double* values,
                               const double* weights, std::size_t count) {
    Point point{};
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t direction = 0; direction < dimensions; ++direction) {
            point[direction] = coordinates[direction][i];
        }
        fill(point, values[i], !weights ? 1.0 : weights[i]);
    }
}

template <std::size_t dimensions>
void Profile<dimensions>::merge(const Profile& other) {
    addCells(shape, sums, other.shape, other.sums, "profiles with different axes cannot be added");
    asRead.clear();
    nans += other.nans;
}

template <std::size_t dimensions>
double Profile<dimensions>::height(std::size_t cell) const {
    if (!asRead.empty()) {
        return readingOf(asRead[cell])[0];
    }
    return sums[cell].w == 0.0 ? nan : sums[cell].wv / sums[cell].w;
}

template <std::size_t dimensions>
double Profile<dimensions>::error(std::size_t cell) const {
    if (!asRead.empty()) {
        return readingOf(asRead[cell])[1];
    }
    return sums[cell].w == 0.0 ? nan : rms(cell) * std::sqrt(sums[cell].ww) / std::abs(sums[cell].w);
}

template <std::size_t dimensions>
double Profile<dimensions>::rms(std::size_t cell) const {
    if (!asRead.empty()) {
        return readingOf(asRead[cell])[2];
    }
    return spreadOf(sums[cell].w, sums[cell].wv, sums[cell].wvv);
}

template <std::size_t dimensions>
void Profile<dimensions>::write(ByteWriter& writer) const {
    writer.number(mark + dimensions);
    writer.head(*this);
    writeGrid(writer, shape);
    writer.list(sums);
    writeReadings(writer, asRead);
    writer.number(nans);
}

template <std::size_t dimensions>
std::string Profile<dimensions>::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

template <std::size_t dimensions>
Profile<dimensions> Profile<dimensions>::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, mark + dimensions);
    const ObjectHead head = reader.head();
    auto grid = readGrid<dimensions>(reader);
    auto cells = reader.list<CellVector<Sums>>();
    auto readings = readReadings(reader);
    const auto nanEntries = reader.number<std::int64_t>();
    reader.mustBeAtEnd();
    Profile profile(std::move(grid), std::move(cells), std::move(readings), nanEntries);
    head.give(profile);
    return profile;
}

template struct ProfileSums<1>;
template struct ProfileSums<2>;
template class Profile<1>;
template class Profile<2>;

}  // namespace velmorak
