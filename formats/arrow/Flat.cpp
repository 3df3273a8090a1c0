#include "arrow/Flat.h"

namespace velmorak::arrow {
namespace {

constexpr std::size_t referenceBytes = 4;

[[noreturn]] void fail() {
    throw Failure("a description is damaged");
}

void require(Bytes buffer, std::size_t position, std::size_t count) {
    if (position > buffer.size() || count > buffer.size() - position) {
        fail();
    }
}

/// Where the reference at a position leads to.
std::size_t follow(Bytes buffer, std::size_t position) {
    require(buffer, position, referenceBytes);
    const std::size_t target = position + columnar::littleEndian<std::uint32_t>(buffer.data() + position);
    require(buffer, target, referenceBytes);
    return target;
}

}  // namespace

FlatList::FlatList(Bytes buffer, std::size_t position, std::size_t elementBytes)
    : buffer(buffer), elementBytes(elementBytes) {
    require(buffer, position, referenceBytes);
    count = columnar::littleEndian<std::uint32_t>(buffer.data() + position);
    first = position + referenceBytes;
    if (count > (buffer.size() - first) / elementBytes) {
        fail();
    }
}

FlatTable FlatList::table(std::size_t element) const {
    return {buffer, follow(buffer, first + element * elementBytes)};
}

FlatTable FlatTable::root(Bytes buffer) {
    return {buffer, follow(buffer, 0)};
}

FlatTable::FlatTable(Bytes buffer, std::size_t position) : buffer(buffer), position(position) {
    require(buffer, position, referenceBytes);
    const std::int64_t back = columnar::littleEndian<std::int32_t>(buffer.data() + position);
    const std::int64_t at = static_cast<std::int64_t>(position) - back;
    if (at < 0) {
        fail();
    }
    fields = static_cast<std::size_t>(at);
    require(buffer, fields, referenceBytes);
    fieldsBytes = columnar::littleEndian<std::uint16_t>(buffer.data() + fields);
    require(buffer, fields, fieldsBytes);
}

std::optional<std::size_t> FlatTable::find(unsigned field, std::size_t size) const {
    const std::size_t place = 4 + 2 * std::size_t{field};
    if (place + 2 > fieldsBytes) {
        return std::nullopt;
    }
    const std::size_t offset = columnar::littleEndian<std::uint16_t>(buffer.data() + fields + place);
    if (offset == 0) {
        return std::nullopt;
    }
    require(buffer, position + offset, size);
    return position + offset;
}

std::optional<FlatTable> FlatTable::table(unsigned field) const {
    const std::optional<std::size_t> at = find(field, referenceBytes);
    return at ? std::optional(FlatTable(buffer, follow(buffer, *at))) : std::nullopt;
}

FlatTable FlatTable::requiredTable(unsigned field) const {
    const std::optional<FlatTable> found = table(field);
    if (!found) {
        fail();
    }
    return *found;
}

FlatList FlatTable::list(unsigned field, std::size_t elementBytes) const {
    const std::optional<std::size_t> at = find(field, referenceBytes);
    return at ? FlatList(buffer, follow(buffer, *at), elementBytes) : FlatList();
}

}  // namespace velmorak::arrow
