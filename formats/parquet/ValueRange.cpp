#include "parquet/ValueRange.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace velmorak::parquet {
namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

template <typename Number>
double stored(const std::string& bytes) {
    if (bytes.size() != sizeof(Number)) {
        return unknown;
    }
    Number number = 0;
    std::memcpy(&number, bytes.data(), sizeof(number));
    return static_cast<double>(number);
}

double numberIn(const Leaf& leaf, const std::string& bytes) {
    constexpr double maxExact = 9007199254740992.0;
    const bool isPlain =
        (leaf.element.meaning == Meaning::None || leaf.element.meaning == Meaning::Integer) && !leaf.element.isUnsigned;
    if (!isPlain || !leaf.element.type || leaf.isList() || std::endian::native != std::endian::little) {
        return unknown;
    }
    double number = unknown;
    switch (*leaf.element.type) {
        case Physical::Int32:
            number = stored<std::int32_t>(bytes);
            break;
        case Physical::Int64:
            number = stored<std::int64_t>(bytes);
            break;
        case Physical::Float:
            return stored<float>(bytes);
        case Physical::Double:
            return stored<double>(bytes);
        default:
            break;
    }
    return std::abs(number) < maxExact ? number : unknown;
}

}  // namespace

std::optional<ValueRange> valueRange(const Leaf& leaf, const Statistics& statistics) {
    if (!statistics.low || !statistics.high) {
        return std::nullopt;
    }
    const ValueRange range{numberIn(leaf, *statistics.low), numberIn(leaf, *statistics.high)};
    return range.low <= range.high ? std::optional(range) : std::nullopt;
}

}  // namespace velmorak::parquet
