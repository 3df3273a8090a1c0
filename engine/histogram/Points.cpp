#include <velmorak/Points.h>

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <stdexcept>

namespace velmorak {

namespace {

constexpr std::uint64_t pointsMark = 0x31'74'6e'50'6b'6c'65'56;

}  // namespace

Points::Points(std::size_t dimension, std::vector<Measurement> all)
    : dimensions(dimension), measurements(std::move(all)) {
    if (dimensions == 0 || measurements.size() % dimensions != 0) {
        throw std::invalid_argument("each point needs a measurement for every dimension, and there is at least one");
    }
}

void Points::write(ByteWriter& writer) const {
    writer.number(pointsMark);
    writer.head(*this);
    writer.number<std::uint64_t>(dimensions);
    writer.list(measurements);
    writer.number<std::uint64_t>(axisTitles.size());
    for (const std::string& axisTitle : axisTitles) {
        writer.list(axisTitle);
    }
}

std::string Points::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

Points Points::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, pointsMark);
    const ObjectHead head = reader.head();
    const auto dimension = reader.number<std::uint64_t>();
    Points points(dimension, reader.list<std::vector<Measurement>>());
    head.give(points);
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        points.axisTitles.push_back(reader.list<std::string>());
    }
    reader.mustBeAtEnd();
    return points;
}

}  // namespace velmorak
