#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <velmorak/ObjectBytes.h>
#include <velmorak/Value.h>

namespace velmorak {

/// The header of every serialised object.
struct ObjectHead {
    std::string name;
    std::string title;
    std::string options;
    std::vector<AnnotationItem> annotation;

    void give(DataObject& object) const {
        object.name = name;
        object.title = title;
        object.options = options;
        object.annotation = annotation;
    }
};

inline constexpr std::uint64_t emptyChecksum = 0xcbf29ce484222325U;

/// @param sum checksum of the preceding bytes.
inline std::uint64_t checksum(std::string_view bytes, std::uint64_t sum = emptyChecksum) {
    for (const char byte : bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return sum;
}

/// Serialises numbers in the byte order of the machine, lists preceded by their length: into a text, in pieces into a
/// sink, or nowhere, to count the bytes.
class ByteWriter {
public:
    ByteWriter() = default;
    explicit ByteWriter(ByteSink target) : sink(std::move(target)) {}
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

/// Reads the bytes of a ByteWriter. Every operation throws std::invalid_argument if the bytes are damaged.
class ByteReader {
public:
    ByteReader(std::string_view sealed, std::uint64_t mark) : bytes(sealed) {
        const std::size_t sumAt = sealed.size() - std::min(sealed.size(), sizeof(std::uint64_t));
        bytes = sealed.substr(sumAt);
        const auto sum = number<std::uint64_t>();
        bytes = sealed.substr(0, sumAt);
        if (number<std::uint64_t>() != mark || sum != checksum(sealed.substr(0, sumAt))) {
            throw std::invalid_argument("these are not the bytes of such an object");
        }
    }

    template <typename Number>
    Number number() {
        Number value{};
        take(&value, sizeof value);
        return value;
    }
    template <typename List>
    List list() {
        const auto count = number<std::uint64_t>();
        constexpr std::size_t each = sizeof(typename List::value_type);
        if (count > bytes.size() / each) {
            throw std::invalid_argument("the bytes of an object end too early");
        }
        List values;
        values.resize(count);
        take(values.data(), count * each);
        return values;
    }
    /// Reads what ByteWriter::raw has written.
    void raw(void* value, std::size_t count) { take(value, count); }
    ObjectHead head() {
        ObjectHead head;
        head.name = list<std::string>();
        head.title = list<std::string>();
        head.options = list<std::string>();
        for (auto items = number<std::uint64_t>(); items > 0; --items) {
            AnnotationItem item;
            item.key = list<std::string>();
            item.value = list<std::string>();
            item.isSticky = number<std::uint8_t>() != 0;
            head.annotation.push_back(std::move(item));
        }
        return head;
    }
    void mustBeAtEnd() const {
        if (!bytes.empty()) {
            throw std::invalid_argument("the bytes of an object are followed by others");
        }
    }

private:
    void take(void* target, std::size_t count) {
        if (count > bytes.size()) {
            throw std::invalid_argument("the bytes of an object end too early");
        }
        if (count != 0) {
            std::memcpy(target, bytes.data(), count);
        }
        bytes.remove_prefix(count);
    }

    std::string_view bytes;
};

}  // namespace velmorak
