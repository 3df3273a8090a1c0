#pragma once

#include "columnar/Bytes.h"

#include <velmorak/Failure.h>

#include <cstdint>
#include <string>
#include <string_view>

/// The compact protocol of Thrift, in which Parquet describes its files and pages.
namespace velmorak::parquet {

using columnar::Bytes;

enum class ThriftType : std::uint8_t {
    Stop = 0,
    True = 1,
    False = 2,
    Byte = 3,
    Int16 = 4,
    Int32 = 5,
    Int64 = 6,
    Double = 7,
    Binary = 8,
    List = 9,
    Set = 10,
    Map = 11,
    Struct = 12,
    Uuid = 13
};

/// Reads one value after the other. Every operation throws a Failure where the bytes end early or hold another type.
class ThriftReader {
public:
    explicit ThriftReader(Bytes bytes) : bytes(bytes) {}

    std::size_t position() const { return at; }

    /// Calls onField(number, type) for each field; it must read or skip the value.
    template <typename OnField>
    void structure(OnField onField) {
        const Nesting nesting(*this);
        int number = 0;
        for (ThriftType type = nextField(number); type != ThriftType::Stop; type = nextField(number)) {
            onField(number, type);
        }
    }
    /// The same for the value of a field.
    template <typename OnField>
    void structure(ThriftType type, OnField onField) {
        require(type, ThriftType::Struct);
        structure(onField);
    }
    /// Calls onElement(type) for each element.
    template <typename OnElement>
    void list(ThriftType type, OnElement onElement) {
        require(type, ThriftType::List);
        const Nesting nesting(*this);
        ThriftType element = ThriftType::Stop;
        for (std::uint64_t left = listLength(element); left > 0; --left) {
            onElement(element);
        }
    }
    std::int64_t integer(ThriftType type);
    std::int32_t smallInteger(ThriftType type);
    bool boolean(ThriftType type);
    std::string_view binary(ThriftType type);
    std::string text(ThriftType type) { return std::string(binary(type)); }
    void skip(ThriftType type);

private:
    /// Limits how deep structures and lists may be nested.
    class Nesting {
    public:
        explicit Nesting(ThriftReader& reader) : reader(reader) {
            constexpr int maxDepth = 48;
            if (++reader.depth > maxDepth) {
                throw Failure("a description is nested too deeply");
            }
        }
        ~Nesting() { --reader.depth; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

    private:
        ThriftReader& reader;
    };

    static void require(ThriftType type, ThriftType wanted);
    ThriftType nextField(int& number);
    std::uint64_t listLength(ThriftType& element);
    void skipMap();
    std::uint8_t byte();
    std::uint64_t varint();
    Bytes take(std::uint64_t count);

    Bytes bytes;
    std::size_t at = 0;
    int depth = 0;
};

/// Thrown where more bytes may complete a description.
class EndsEarly : public Failure {
public:
    EndsEarly() : Failure("a description ends early") {}
};

}  // namespace velmorak::parquet
