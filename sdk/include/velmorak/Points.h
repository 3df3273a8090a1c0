#pragma once

#include <velmorak/Value.h>

#include <string>
#include <vector>

namespace velmorak {

class ByteWriter;

/// A value with its errors, both counted away from it: the value lies between value - errorMinus and value + errorPlus.
struct Measurement {
    double value = 0.0;
    double errorPlus = 0.0;
    double errorMinus = 0.0;

    bool operator==(const Measurement&) const = default;
};

/// Points of measurements, one for each dimension: x and y of a curve, for example. In many files the errors of x are
/// the half widths of bins.
/// Shape: measurement(point, direction), direction below dimension().
class Points : public DataObject {
public:
    /// @throws std::invalid_argument if dimension is 0, or all does not hold dimension measurements for each point.
    Points(std::size_t dimension, std::vector<Measurement> all);

    ValueType type() const override { return ValueType::Points; }

    std::size_t dimension() const { return dimensions; }
    // The constructor refuses 0 dimensions.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    std::size_t size() const { return measurements.size() / dimensions; }
    const Measurement& measurement(std::size_t point, std::size_t direction) const {
        return measurements[point * dimensions + direction];
    }
    const std::vector<Measurement>& all() const { return measurements; }

    /// One for each dimension, or none; with units.
    std::vector<std::string> axisTitles;

    /// Everything as bytes that fromBytes reads on any machine of the same kind.
    std::string toBytes() const;
    /// Writes these bytes without the checksum at their end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static Points fromBytes(const std::string& bytes);

private:
    std::size_t dimensions;
    std::vector<Measurement> measurements;
};

}  // namespace velmorak
