#pragma once

#include "isolate/Area.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmorak::isolation {

/// Lists begin where their numbers are aligned, in an area that begins with a page.
inline constexpr std::size_t alignment = 8;

/// Writes a message into an area: numbers in the byte order of the machine, texts and lists preceded by their length.
class MessageWriter {
public:
    /// @param area outlives this.
    explicit MessageWriter(Area& area) : area(&area) {}

    template <typename Number>
    void number(Number value) {
        static_assert(std::is_arithmetic_v<Number> || std::is_enum_v<Number>);
        raw(&value, sizeof value);
    }
    void flag(bool value) { number<std::uint8_t>(value ? 1 : 0); }
    void text(std::string_view value) {
        number<std::uint64_t>(value.size());
        raw(value.data(), value.size());
    }
    /// Of numbers that follow each other in memory.
    template <typename List>
    void list(const List& values) {
        constexpr std::uint64_t padding = 0;
        raw(&padding, (alignment - length % alignment) % alignment);
        number<std::uint64_t>(values.size());
        raw(values.data(), values.size() * sizeof(typename List::value_type));
    }
    void raw(const void* from, std::size_t count) {
        if (count != 0) {
            area->grow(length + count);
            std::memcpy(area->data() + length, from, count);
            length += count;
        }
    }
    std::size_t size() const { return length; }

private:
    Area* area;
    std::size_t length = 0;
};

/// Reads what a MessageWriter has written. Throws std::runtime_error if a message is damaged.
class MessageReader {
public:
    MessageReader() = default;
    explicit MessageReader(std::string_view bytes) : bytes(bytes) {}

    template <typename Number>
    Number number() {
        Number value{};
        std::memcpy(&value, take(sizeof value), sizeof value);
        return value;
    }
    bool flag() { return number<std::uint8_t>() != 0; }
    std::string text() { return std::string(view()); }
    /// A text, as long as the message is there.
    std::string_view view() {
        const auto count = number<std::uint64_t>();
        return {take(count), count};
    }
    template <typename List>
    List list() {
        using Element = typename List::value_type;
        static_assert(alignof(Element) <= alignment);
        const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(bytes.data()) % alignment;
        take((alignment - misplaced) % alignment);
        const auto count = number<std::uint64_t>();
        require(count <= bytes.size() / sizeof(Element));
        const auto* const begin = reinterpret_cast<const Element*>(take(count * sizeof(Element)));
        return List(begin, begin + count);
    }
    /// Number of elements that follow, each of at least one byte.
    std::size_t count() {
        const auto value = number<std::uint64_t>();
        require(value <= bytes.size());
        return value;
    }

private:
    static void require(bool condition) {
        if (!condition) {
            throw std::runtime_error("a message between the program and a helper process is damaged");
        }
    }
    const char* take(std::size_t count) {
        require(count <= bytes.size());
        const char* const from = bytes.data();
        bytes.remove_prefix(count);
        return from;
    }

    std::string_view bytes;
};

}  // namespace velmorak::isolation
