#pragma once

#include <velmorak/Failure.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace velmorak::root {

using Bytes = std::span<const std::uint8_t>;

/// @return the bytes at the pointer as a number, the most significant byte first.
template <typename Number>
Number bigEndian(const std::uint8_t* bytes) {
    static_assert(std::endian::native == std::endian::little);
    if constexpr (sizeof(Number) == 8) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, bytes, sizeof(bits));
        return std::bit_cast<Number>(__builtin_bswap64(bits));
    } else if constexpr (sizeof(Number) == 4) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, bytes, sizeof(bits));
        return std::bit_cast<Number>(__builtin_bswap32(bits));
    } else if constexpr (sizeof(Number) == 2) {
        return static_cast<Number>(bytes[0] << 8U | bytes[1]);
    } else {
        static_assert(sizeof(Number) == 1);
        return static_cast<Number>(*bytes);
    }
}

/// Reads the numbers and texts of a record one after the other. ROOT writes them with the most significant byte first.
/// Errors: Failure if the record ends too early.
class Buffer {
public:
    explicit Buffer(Bytes bytes) : bytes(bytes) {}

    std::size_t position() const { return at; }
    std::size_t size() const { return bytes.size(); }
    std::size_t remaining() const { return bytes.size() - at; }
    void seek(std::size_t position) {
        check(position <= bytes.size());
        at = position;
    }
    void skip(std::size_t count) {
        check(count <= remaining());
        at += count;
    }
    Bytes take(std::size_t count) {
        check(count <= remaining());
        const Bytes taken = bytes.subspan(at, count);
        at += count;
        return taken;
    }

    template <typename Number>
    Number number() {
        return bigEndian<Number>(take(sizeof(Number)).data());
    }
    std::uint8_t u8() { return number<std::uint8_t>(); }
    std::uint16_t u16() { return number<std::uint16_t>(); }
    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }
    std::int16_t i16() { return number<std::int16_t>(); }
    std::int32_t i32() { return number<std::int32_t>(); }
    std::int64_t i64() { return number<std::int64_t>(); }

    /// A text preceded by its length in one byte or, after a byte of 255, in four.
    std::string text() {
        std::size_t length = u8();
        if (length == 255) {
            length = u32();
        }
        return textOf(length);
    }
    /// A zero-terminated text.
    std::string cText() {
        const void* end = std::memchr(bytes.data() + at, 0, remaining());
        check(end != nullptr);
        std::string text = textOf(static_cast<std::size_t>(static_cast<const std::uint8_t*>(end) - bytes.data()) - at);
        skip(1);
        return text;
    }
    std::string textOf(std::size_t length) {
        const Bytes taken = take(length);
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};
    }

    /// @return a count of items, each of which takes at least that many of the remaining bytes.
    std::size_t count(std::size_t bytesEach) {
        const std::int32_t found = i32();
        check(found >= 0 && static_cast<std::size_t>(found) <= remaining() / bytesEach);
        return static_cast<std::size_t>(found);
    }

private:
    static void check(bool isInside) {
        if (!isInside) {
            throw Failure("a record ends before its content does");
        }
    }

    Bytes bytes;
    std::size_t at = 0;
};

}  // namespace velmorak::root
