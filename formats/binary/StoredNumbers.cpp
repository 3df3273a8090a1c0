#include "binary/StoredNumbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>

namespace velmorak {
namespace {

template <typename Raw>
Raw rawAt(const char* from, bool isSwapped) {
    std::array<char, sizeof(Raw)> bytes{};
    std::memcpy(bytes.data(), from, sizeof(Raw));
    if (isSwapped) {
        std::ranges::reverse(bytes);
    }
    return std::bit_cast<Raw>(bytes);
}

/// IEEE 754 half precision.
struct Half {
    std::uint16_t bits;

    double value() const;
};

double Half::value() const {
    constexpr int mantissaBits = 10;
    const unsigned exponent = (bits >> 10U) & 31U;
    const unsigned mantissa = bits & 1023U;
    double magnitude = 0.0;
    if (exponent == 0) {
        magnitude = std::ldexp(static_cast<double>(mantissa), -14 - mantissaBits);
    } else if (exponent == 31) {
        magnitude = mantissa == 0 ? std::numeric_limits<double>::infinity() : std::numeric_limits<double>::quiet_NaN();
    } else {
        magnitude = std::ldexp(static_cast<double>(mantissa + 1024U), static_cast<int>(exponent) - 15 - mantissaBits);
    }
    return (bits & 0x8000U) != 0 ? -magnitude : magnitude;
}

template <typename Value, typename Raw>
Value valueOf(Raw raw) {
    if constexpr (std::same_as<Raw, Half>) {
        return raw.value();
    } else {
        return static_cast<Value>(raw);
    }
}

struct Run {
    const char* first;
    std::size_t stride;
    std::size_t count;
};

template <typename Raw, bool swaps, typename Values>
void convert(Values& values, const Run& run) {
    using Value = typename Values::value_type;
    const std::size_t before = values.size();
    values.resize(before + run.count);
    Value* target = values.data() + before;
    for (std::size_t i = 0; i < run.count; ++i) {
        target[i] = valueOf<Value>(rawAt<Raw>(run.first + i * run.stride, swaps));
    }
}

template <typename Raw, typename Values>
void appendAs(Values& values, const Run& run, bool isSwapped) {
    if constexpr (std::same_as<Raw, typename Values::value_type>) {
        if (!isSwapped && run.stride == sizeof(Raw) && run.count > 0) {
            const std::size_t before = values.size();
            values.resize(before + run.count);
            std::memcpy(values.data() + before, run.first, run.count * sizeof(Raw));
            return;
        }
    }
    if (isSwapped && sizeof(Raw) > 1) {
        convert<Raw, true>(values, run);
    } else {
        convert<Raw, false>(values, run);
    }
}

void appendReals(Column::Reals& values, const StoredNumber& number, const Run& run) {
    switch (number.bytes) {
        case 2:
            return appendAs<Half>(values, run, number.isSwapped);
        case 4:
            return appendAs<float>(values, run, number.isSwapped);
        default:
            return appendAs<double>(values, run, number.isSwapped);
    }
}

template <typename One, typename Two, typename Four, typename Eight>
void appendIntegers(Column::Integers& values, const StoredNumber& number, const Run& run) {
    switch (number.bytes) {
        case 1:
            return appendAs<One>(values, run, number.isSwapped);
        case 2:
            return appendAs<Two>(values, run, number.isSwapped);
        case 4:
            return appendAs<Four>(values, run, number.isSwapped);
        default:
            return appendAs<Eight>(values, run, number.isSwapped);
    }
}

void appendBooleans(Column::Booleans& values, const StoredNumber& number, const Run& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        const char* from = run.first + i * run.stride;
        values.push_back(std::any_of(from, from + number.bytes, [](char byte) { return byte != 0; }) ? 1 : 0);
    }
}

}  // namespace

bool isKnown(const StoredNumber& number) {
    const bool isPower = number.bytes == 1 || number.bytes == 2 || number.bytes == 4 || number.bytes == 8;
    return isPower && (number.kind != StoredNumber::Kind::Real || number.bytes > 1);
}

ColumnType columnTypeOf(const StoredNumber& number) {
    switch (number.kind) {
        case StoredNumber::Kind::Boolean:
            return ColumnType::Boolean;
        case StoredNumber::Kind::Real:
            return ColumnType::Real;
        default:
            return ColumnType::Integer;
    }
}

void appendNumbers(Column& column, const StoredNumber& number, const char* first, std::size_t stride,
                   std::size_t count) {
    const Run run{first, stride, count};
    switch (number.kind) {
        case StoredNumber::Kind::Boolean:
            return appendBooleans(std::get<Column::Booleans>(column.values), number, run);
        case StoredNumber::Kind::Real:
            return appendReals(std::get<Column::Reals>(column.values), number, run);
        case StoredNumber::Kind::Signed:
            return appendIntegers<std::int8_t, std::int16_t, std::int32_t, std::int64_t>(
                std::get<Column::Integers>(column.values), number, run);
        case StoredNumber::Kind::Unsigned:
            return appendIntegers<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(
                std::get<Column::Integers>(column.values), number, run);
    }
}

}  // namespace velmorak
