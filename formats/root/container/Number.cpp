#include "root/container/Number.h"

#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <array>
#include <cmath>
#include <map>
#include <numbers>

namespace velmorak::root {
namespace {

/// A bound of a range, which may contain pi.
double boundOf(std::string_view text) {
    double sign = 1.0;
    text = trimmed(text);
    if (!text.empty() && text.front() == '-' && text.find("pi") != std::string_view::npos) {
        sign = -1.0;
        text.remove_prefix(1);
    }
    const std::size_t pi = text.find("pi");
    if (pi == std::string_view::npos) {
        double number = 0.0;
        readNumber(text, number);
        return number;
    }
    double value = text.find("2pi") != std::string_view::npos || text.find("2*pi") != std::string_view::npos ||
                           text.find("twopi") != std::string_view::npos
                       ? 2.0 * std::numbers::pi
                       : std::numbers::pi;
    if (text.find("pi/2") != std::string_view::npos) {
        value /= 2.0;
    } else if (text.find("pi/4") != std::string_view::npos) {
        value /= 4.0;
    }
    return sign * value;
}

/// A sign, an 8-bit exponent and a mantissa of so many bits, in three bytes.
double readShortened(Buffer& buffer, unsigned bits) {
    const std::uint32_t exponent = buffer.u8();
    const std::uint32_t mantissa = buffer.u16();
    std::uint32_t number = exponent << 23U;
    number |= (mantissa & ((1U << (bits + 1)) - 1)) << (23U - bits);
    const auto value = std::bit_cast<float>(number);
    return ((1U << (bits + 1)) & mantissa) != 0 ? -value : value;
}

constexpr unsigned float16Bits = 12;

}  // namespace

NumberRange NumberRange::fromTitle(std::string_view title) {
    const std::size_t open = title.find('[');
    const std::size_t close = open == std::string_view::npos ? open : title.find(']', open);
    if (close == std::string_view::npos) {
        return {};
    }
    const std::string_view range = title.substr(open + 1, close - open - 1);
    const std::size_t comma = range.find(',');
    if (comma == std::string_view::npos) {
        return {};
    }
    const std::size_t second = range.find(',', comma + 1);
    double bits = 32.0;
    if (second != std::string_view::npos) {
        readNumber(trimmed(range.substr(second + 1)), bits);
        bits = bits < 2.0 || bits > 32.0 ? 32.0 : bits;
    }
    const double low = boundOf(range.substr(0, comma));
    const double high =
        boundOf(range.substr(comma + 1, second == std::string_view::npos ? second : second - comma - 1));
    if (low < high) {
        const double steps = bits < 32.0 ? std::ldexp(1.0, static_cast<int>(bits)) : 4294967295.0;
        return {low, steps / (high - low)};
    }
    return {bits < 15.0 ? bits : 0.0, 0.0};
}

std::optional<NumberType> numberTypeOf(int kind) {
    using enum NumberType;
    static constexpr std::array<std::optional<NumberType>, 20> types{
        std::nullopt, Int8,  Int16,  Int32,  Int64,  Float,  Int32, std::nullopt, Double, Double32,
        Int8,         UInt8, UInt16, UInt32, UInt64, UInt32, Int64, UInt64,       Bool,   Float16};
    return kind > 0 && kind < 20 ? types[static_cast<std::size_t>(kind)] : std::nullopt;
}

std::optional<NumberType> numberTypeNamed(std::string_view name) {
    using enum NumberType;
    static const std::map<std::string_view, NumberType> types{{"bool", Bool},
                                                              {"Bool_t", Bool},
                                                              {"char", Int8},
                                                              {"Char_t", Int8},
                                                              {"signed char", Int8},
                                                              {"int8_t", Int8},
                                                              {"unsigned char", UInt8},
                                                              {"UChar_t", UInt8},
                                                              {"uint8_t", UInt8},
                                                              {"Byte_t", UInt8},
                                                              {"byte", UInt8},
                                                              {"short", Int16},
                                                              {"Short_t", Int16},
                                                              {"int16_t", Int16},
                                                              {"unsigned short", UInt16},
                                                              {"UShort_t", UInt16},
                                                              {"uint16_t", UInt16},
                                                              {"int", Int32},
                                                              {"Int_t", Int32},
                                                              {"int32_t", Int32},
                                                              {"unsigned int", UInt32},
                                                              {"unsigned", UInt32},
                                                              {"UInt_t", UInt32},
                                                              {"uint32_t", UInt32},
                                                              {"long", Int64},
                                                              {"Long_t", Int64},
                                                              {"long long", Int64},
                                                              {"Long64_t", Int64},
                                                              {"int64_t", Int64},
                                                              {"unsigned long", UInt64},
                                                              {"ULong_t", UInt64},
                                                              {"unsigned long long", UInt64},
                                                              {"ULong64_t", UInt64},
                                                              {"uint64_t", UInt64},
                                                              {"size_t", UInt64},
                                                              {"float", Float},
                                                              {"Float_t", Float},
                                                              {"double", Double},
                                                              {"Double_t", Double},
                                                              {"Double32_t", Double32},
                                                              {"Float16_t", Float16}};
    if (name.starts_with("std::")) {
        name.remove_prefix(5);
    }
    const auto found = types.find(name);
    return found == types.end() ? std::nullopt : std::optional(found->second);
}

std::size_t sizeOf(NumberType type, const NumberRange& range) {
    using enum NumberType;
    switch (type) {
        case Bool:
        case Int8:
        case UInt8:
            return 1;
        case Int16:
        case UInt16:
            return 2;
        case Int64:
        case UInt64:
        case Double:
            return 8;
        case Double32:
            return range.factor == 0.0 && range.low > 0.0 ? 3 : 4;
        case Float16:
            return range.factor == 0.0 ? 3 : 4;
        default:
            return 4;
    }
}

bool isReal(NumberType type) {
    return type >= NumberType::Float;
}

double readReal(Buffer& buffer, NumberType type, const NumberRange& range) {
    if (type == NumberType::Float) {
        return buffer.number<float>();
    }
    if (type == NumberType::Double) {
        return buffer.number<double>();
    }
    if (type != NumberType::Double32 && type != NumberType::Float16) {
        return static_cast<double>(readInteger(buffer, type));
    }
    if (range.factor != 0.0) {
        const double value = static_cast<double>(buffer.u32()) / range.factor + range.low;
        return type == NumberType::Float16 ? static_cast<float>(value) : value;
    }
    if (range.low > 0.0) {
        return readShortened(buffer, static_cast<unsigned>(range.low));
    }
    return type == NumberType::Double32 ? buffer.number<float>() : readShortened(buffer, float16Bits);
}

std::int64_t readInteger(Buffer& buffer, NumberType type) {
    using enum NumberType;
    switch (type) {
        case Bool:
            return buffer.u8() != 0 ? 1 : 0;
        case Int8:
            return buffer.number<std::int8_t>();
        case UInt8:
            return buffer.u8();
        case Int16:
            return buffer.i16();
        case UInt16:
            return buffer.u16();
        case Int32:
            return buffer.i32();
        case UInt32:
            return buffer.u32();
        default:
            return buffer.i64();
    }
}

}  // namespace velmorak::root
