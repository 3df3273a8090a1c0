#pragma once

#include <velmorak/Value.h>

#include <string>
#include <vector>

namespace velmorak {

class ByteWriter;

/// A value with asymmetric errors, both positive away from it: the interval is value - errorMinus to value + errorPlus.
struct Measurement {
    double value = 0.0;
    double errorPlus = 0.0;
    double errorMinus = 0.0;

    bool operator==(const Measurement&) const = default;
};

/// Points with a measurement in each dimension, for example x and y of a curve. In many files the errors of x are half
/// bin widths.
/// Shape: measurement(point, direction), direction below dimension().
class Points : public DataObject {
public:
    /// @param all dimension measurements for each point, point after point.
    /// @throws std::invalid_argument if dimension is 0 or the size of all is not a multiple of it.
    Points(std::size_t dimension, std::vector<Measurement> all);

    ValueType type() const override { return ValueType::Points; }

    std::size_t dimension() const { return dimensions; }
    // The constructor rejects 0 dimensions.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    std::size_t size() const { return measurements.size() / dimensions; }
    const Measurement& measurement(std::size_t point, std::size_t direction) const {
        return measurements[point * dimensions + direction];
    }
    const std::vector<Measurement>& all() const { return measurements; }

    /// One for each dimension, including units; or empty.
    std::vector<std::string> axisTitles;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static Points fromBytes(const std::string& bytes);

private:
    std::size_t dimensions;
    std::vector<Measurement> measurements;
};

}  // namespace velmorak
