#include "velmorak/Histogram1D.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <type_traits>

// Layout: mark, name, title, axis title, edges, cells, NaN entries, checksum; a text or list follows its length.
namespace velmorak {

namespace {

constexpr std::uint64_t mark = 0x31'44'31'48'6b'6c'65'56;

static_assert(std::is_trivially_copyable_v<BinSums> && sizeof(BinSums) == 40,
              "cells are written as they lie in memory");

std::uint64_t checksum(std::string_view bytes) {
    std::uint64_t sum = 0xcbf29ce484222325U;
    for (const char byte : bytes)
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    return sum;
}

class ByteWriter {
public:
    template <typename Number>
    void number(Number value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    template <typename List>
    void list(const List& values) {
        number<std::uint64_t>(values.size());
        bytes.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof values[0]);
    }

    std::string bytes;
};

class ByteReader {
public:
    explicit ByteReader(std::string_view from) : bytes(from) {}

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
        if (count > bytes.size() / each)
            throw std::invalid_argument("the bytes of a histogram end too early");
        List values;
        values.resize(count);
        take(values.data(), count * each);
        return values;
    }
    bool isAtEnd() const { return bytes.empty(); }

private:
    void take(void* target, std::size_t count) {
        if (count > bytes.size())
            throw std::invalid_argument("the bytes of a histogram end too early");
        if (count != 0)
            std::memcpy(target, bytes.data(), count);
        bytes.remove_prefix(count);
    }

    std::string_view bytes;
};

}  // namespace

std::string Histogram1D::toBytes() const {
    ByteWriter writer;
    writer.number(mark);
    writer.list(name);
    writer.list(title);
    writer.list(x.title);
    writer.list(x.edges());
    writer.list(sums);
    writer.number(nans);
    writer.number(checksum(writer.bytes));
    return std::move(writer.bytes);
}

Histogram1D Histogram1D::fromBytes(const std::string& bytes) {
    const std::size_t sumAt = bytes.size() - std::min(bytes.size(), sizeof(std::uint64_t));
    ByteReader sum(std::string_view(bytes).substr(sumAt));
    ByteReader reader(std::string_view(bytes).substr(0, sumAt));
    if (reader.number<std::uint64_t>() != mark || sum.number<std::uint64_t>() != checksum({bytes.data(), sumAt}))
        throw std::invalid_argument("these are not the bytes of a histogram");
    auto name = reader.list<std::string>();
    auto title = reader.list<std::string>();
    auto axisTitle = reader.list<std::string>();
    Axis axis(reader.list<std::vector<double>>());
    axis.title = std::move(axisTitle);
    auto cells = reader.list<std::vector<BinSums>>();
    const auto nanEntries = reader.number<std::int64_t>();
    if (!reader.isAtEnd())
        throw std::invalid_argument("the bytes of a histogram are followed by others");
    Histogram1D histogram(std::move(axis), std::move(cells), nanEntries);
    histogram.name = std::move(name);
    histogram.title = std::move(title);
    return histogram;
}

}  // namespace velmorak
