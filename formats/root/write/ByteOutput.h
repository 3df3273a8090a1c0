#pragma once

#include <velmorak/Failure.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velmorak::root {

/// Stores a number, the most significant byte first.
template <std::unsigned_integral Number>
void putBigEndian(char* target, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i) {
        target[i] = static_cast<char>(number >> 8U * (sizeof number - 1 - i) & 0xFFU);
    }
}

/// Appends numbers and texts as ROOT files hold them: the most significant byte first.
class ByteOutput {
public:
    std::size_t size() const { return bytes.size(); }
    const std::string& content() const { return bytes; }
    std::string take() { return std::move(bytes); }

    void raw(std::string_view more) { bytes.append(more); }
    void u8(std::uint8_t number) { bytes.push_back(static_cast<char>(number)); }
    void u16(std::uint16_t number) { append(number); }
    void u32(std::uint32_t number) { append(number); }
    void u64(std::uint64_t number) { append(number); }
    void real(double number) { append(std::bit_cast<std::uint64_t>(number)); }
    void shortReal(float number) { append(std::bit_cast<std::uint32_t>(number)); }
    void reals(std::span<const double> numbers) {
        const std::size_t at = grow(8 * numbers.size());
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            putBigEndian(bytes.data() + at + 8 * i, std::bit_cast<std::uint64_t>(numbers[i]));
        }
    }
    void integers(std::span<const std::int64_t> numbers) {
        const std::size_t at = grow(8 * numbers.size());
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            putBigEndian(bytes.data() + at + 8 * i, static_cast<std::uint64_t>(numbers[i]));
        }
    }

    /// A text preceded by its length in one byte or, after a byte of 255, in four.
    void text(std::string_view value) {
        if (value.size() < 255) {
            u8(static_cast<std::uint8_t>(value.size()));
        } else {
            u8(255);
            u32(static_cast<std::uint32_t>(value.size()));
        }
        raw(value);
    }
    /// @return the bytes that text appends.
    static std::size_t bytesOfText(std::string_view value) { return value.size() + (value.size() < 255 ? 1 : 5); }

    /// Reserves the count of bytes that precedes an object. @return its place, for endCount.
    std::size_t beginCount() {
        const std::size_t place = bytes.size();
        u32(0);
        return place;
    }
    /// @throws Failure if the object is larger than the format allows.
    void endCount(std::size_t place) {
        constexpr std::uint32_t countMask = 0x40000000;
        const std::size_t count = bytes.size() - place - 4;
        if (count >= countMask) {
            throw Failure("an object is larger than 1 GiB, the limit of a ROOT file");
        }
        putBigEndian(bytes.data() + place, countMask | static_cast<std::uint32_t>(count));
    }

private:
    std::size_t grow(std::size_t more) {
        const std::size_t at = bytes.size();
        bytes.resize(at + more);
        return at;
    }
    template <std::unsigned_integral Number>
    void append(Number number) {
        const std::size_t at = grow(sizeof number);
        putBigEndian(bytes.data() + at, number);
    }

    std::string bytes;
};

}  // namespace velmorak::root
