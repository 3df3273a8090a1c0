#include <velmorak/Profile.h>

#include "histogram/GridBytes.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

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
    const auto numbers = reader.list<std::vector<ThreeNumbers>>();
    CellVector<ProfileReading> readings(numbers.size());
    for (std::size_t cell = 0; cell < numbers.size(); ++cell) {
        const auto& [height, error, rms] = numbers[cell];
        readings[cell] = {height, error, rms, 1};
    }
    return readings;
}

}  // namespace

template <std::size_t axes>
Profile<axes>::Profile(Grid<axes> cellGrid, CellVector<Sums> cells, CellVector<ProfileReading> readings,
                       std::int64_t nanEntries)
    : Base(std::move(cellGrid), std::move(cells), nanEntries), asRead(std::move(readings)) {
    if (!asRead.empty() && asRead.size() != this->cells().size()) {
        throw std::invalid_argument("a profile needs the numbers of each of its cells");
    }
}

template <std::size_t axes>
Profile<axes>::Profile(ByteReader& reader) : Base(reader), asRead(readReadings(reader)) {
    if (!asRead.empty() && asRead.size() != this->cells().size()) {
        throw std::invalid_argument("the bytes of a profile do not have the numbers of each of its cells");
    }
}

template <std::size_t axes>
void Profile<axes>::fill(const Point& point, double filled, double weight) {
    typename Sums::Point all{};
    for (std::size_t direction = 0; direction < axes; ++direction) {
        all[direction] = point[direction];
    }
    all[value] = filled;
    asRead = {};
    Base::fillPoint(all, weight);
}

template <std::size_t axes>
void Profile<axes>::fill(const std::array<const double*, axes>& coordinates, const double* values,
                         const double* weights, std::size_t count) {
    typename Base::Columns columns{};
    for (std::size_t direction = 0; direction < axes; ++direction) {
        columns[direction] = coordinates[direction];
    }
    columns[value] = values;
    asRead = {};
    Base::fillColumns(columns, weights, count);
}

template <std::size_t axes>
void Profile<axes>::merge(const Profile& other) {
    Base::add(other);
    asRead = {};
}

template <std::size_t axes>
double Profile<axes>::height(std::size_t cell) const {
    return asRead.empty() ? this->cells()[cell].mean(value) : readingOf(asRead[cell])[0];
}

template <std::size_t axes>
double Profile<axes>::error(std::size_t cell) const {
    if (!asRead.empty()) {
        return readingOf(asRead[cell])[1];
    }
    const Sums& sums = this->cells()[cell];
    return sums.w == 0.0 ? nan : sums.rms(value) * sums.error() / std::abs(sums.w);
}

template <std::size_t axes>
double Profile<axes>::rms(std::size_t cell) const {
    return asRead.empty() ? this->cells()[cell].rms(value) : readingOf(asRead[cell])[2];
}

template <std::size_t axes>
void Profile<axes>::write(ByteWriter& writer) const {
    Base::write(writer);
    writeReadings(writer, asRead);
}

template <std::size_t axes>
Profile<axes> Profile<axes>::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, Base::mark());
    Profile profile(reader);
    reader.mustBeAtEnd();
    return profile;
}

template class Profile<1>;
template class Profile<2>;

}  // namespace velmorak
