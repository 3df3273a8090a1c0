#pragma once

#include "parquet/Thrift.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::parquet {

/// Writes structures in the compact protocol of Thrift. The outermost structure begins with the object and ends with
/// end().
class ThriftWriter {
public:
    void integer(int field, std::int32_t value) { number(field, ThriftType::Int32, value); }
    void integer64(int field, std::int64_t value) { number(field, ThriftType::Int64, value); }
    void text(int field, std::string_view value) {
        head(field, ThriftType::Binary);
        element(value);
    }
    /// The caller writes the fields of the structure, then end().
    void structure(int field) {
        head(field, ThriftType::Struct);
        last.push_back(0);
    }
    /// The caller writes so many elements.
    void list(int field, ThriftType type, std::size_t count) {
        constexpr std::size_t maxShort = 14;
        head(field, ThriftType::List);
        bytes += static_cast<char>((count > maxShort ? 0xF0U : count << 4U) | static_cast<unsigned>(type));
        if (count > maxShort) {
            varint(count);
        }
    }
    void element(std::int32_t value) { varint(zigzag(value)); }
    void element(std::string_view value) {
        varint(value.size());
        bytes += value;
    }
    /// Begins an element that is a structure.
    void element() { last.push_back(0); }
    void end() {
        bytes += '\0';
        last.pop_back();
    }
    const std::string& written() const { return bytes; }

private:
    static std::uint64_t zigzag(std::int64_t value) {
        return static_cast<std::uint64_t>(value) << 1U ^ static_cast<std::uint64_t>(value >> 63U);
    }
    void head(int field, ThriftType type) {
        constexpr int maxStep = 15;
        const int step = field - last.back();
        bytes +=
            static_cast<char>((step <= maxStep ? static_cast<unsigned>(step) << 4U : 0U) | static_cast<unsigned>(type));
        if (step > maxStep) {
            varint(zigzag(field));
        }
        last.back() = field;
    }
    void number(int field, ThriftType type, std::int64_t value) {
        head(field, type);
        varint(zigzag(value));
    }
    void varint(std::uint64_t value) {
        for (; value >= 0x80U; value >>= 7U) {
            bytes += static_cast<char>(value | 0x80U);
        }
        bytes += static_cast<char>(value);
    }

    std::string bytes;
    std::vector<int> last{0};  ///< Number of the field written last, by open structure.
};

}  // namespace velmorak::parquet
