#pragma once

#include "table/Checksum.h"

#include <velmorak/ObjectBytes.h>
#include <velmorak/Value.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace velmorak {

/// Serialises numbers in the byte order of the machine, lists preceded by their length: into a text, in pieces into a
/// sink, or nowhere, to count the bytes.
class ByteWriter {
public:
    ByteWriter() = default;
    explicit ByteWriter(ByteSink sink) : sink(std::move(sink)) {}
    static ByteWriter counter() {
        ByteWriter writer;
        writer.isCounting = true;
        return writer;
    }

    template <typename Number>
    void number(Number value) {
        add({reinterpret_cast<const char*>(&value), sizeof value});
    }
    template <typename List>
    void list(const List& values) {
        number<std::uint64_t>(values.size());
        add({reinterpret_cast<const char*>(values.data()), values.size() * sizeof values[0]});
    }
    /// Writes some bytes of a value, such as those before its padding.
    void raw(const void* value, std::size_t count) { add({static_cast<const char*>(value), count}); }
    /// Writes the bytes of an object, preceded by their number.
    void object(const DataObject& whole) {
        const std::uint64_t bytesOfIt = countBytesOf(whole);
        number(bytesOfIt);
        if (isCounting) {
            total += bytesOfIt;
        } else {
            bytesOf(whole, [this](std::string_view piece) { add(piece); });
        }
    }
    void head(const DataObject& object) {
        list(object.name);
        list(object.title);
        list(object.options);
        number<std::uint64_t>(object.annotation.size());
        for (const AnnotationItem& item : object.annotation) {
            list(item.key);
            list(item.value);
            number<std::uint8_t>(item.isSticky ? 1 : 0);
        }
    }
    /// @return all bytes with their checksum; the writer is then empty.
    std::string sealed() {
        number(checksum(bytes));
        return std::move(bytes);
    }
    /// Flushes the remaining bytes and the checksum to the sink.
    void seal() {
        flush();
        sink({reinterpret_cast<const char*>(&sum), sizeof sum});
    }
    /// @return the number of bytes including the checksum.
    std::uint64_t count() const { return total + sizeof sum; }

private:
    static constexpr std::size_t pieceBytes = std::size_t{1} << 16U;

    void add(std::string_view more) {
        if (isCounting) {
            total += more.size();
        } else if (!sink) {
            bytes.append(more);
        } else {
            addPiece(more);
        }
    }
    void addPiece(std::string_view more) {
        if (bytes.size() + more.size() > pieceBytes) {
            flush();
        }
        if (more.size() > pieceBytes) {
            give(more);
        } else {
            bytes.append(more);
        }
    }
    void flush() {
        give(bytes);
        bytes.clear();
    }
    void give(std::string_view piece) {
        sum = checksum(piece, sum);
        sink(piece);
    }

    std::string bytes;
    ByteSink sink;
    bool isCounting = false;
    std::uint64_t total = 0;
    std::uint64_t sum = emptyChecksum;
};

}  // namespace velmorak
