#include "root/tree/Tree.h"

#include "root/container/Compression.h"
#include "root/tree/BranchWalk.h"
#include "root/tree/BulkDecode.h"
#include "root/tree/ValueWalk.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::root {
namespace {

void readNumbers(Buffer& entry, const TreeColumn& column, ValueWalk& walk) {
    const ValueType& type = column.layout.type;
    const std::size_t count = column.count ? entry.remaining() / sizeOf(type.number, type.range) : column.layout.length;
    for (std::size_t i = 0; i < count; ++i) {
        walk.number(entry, type);
    }
}

void readEntry(Buffer& entry, const TreeColumn& column, ValueWalk& walk) {
    const Layout& layout = column.layout;
    walk.beginEntry();
    entry.skip(layout.before);
    const bool isMemberWise = layout.hasHeader && entry.remaining() > 0 && readCollectionHeader(entry);
    switch (layout.kind) {
        case Layout::Kind::FlaggedNumbers:
            entry.skip(entry.remaining() > 0 ? 1 : 0);
            return readNumbers(entry, column, walk);
        case Layout::Kind::Numbers:
            return readNumbers(entry, column, walk);
        case Layout::Kind::Value:
            return walk.value(entry, layout.type, isMemberWise);
        case Layout::Kind::Values:
            while (entry.remaining() > 0) {
                walk.value(entry, layout.type, isMemberWise);
            }
    }
}

Column emptyColumn(const TreeColumn& column) {
    Column empty;
    switch (column.info.type) {
        case ColumnType::Real:
            empty.values = Column::Reals();
            break;
        case ColumnType::Integer:
            empty.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            empty.values = Column::Booleans();
            break;
        case ColumnType::Text:
            empty.values = Column::Texts();
            break;
    }
    if (column.info.isList) {
        empty.offsets.push_back(0);
    }
    return empty;
}

Basket embeddedBasket(const Object& object) {
    Basket basket;
    const std::string content = object.text("content");
    const Bytes bytes(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    basket.content.assign(bytes.begin(), bytes.end());
    const std::int64_t head = object.integer("fKeylen");
    for (const std::int64_t offset : object.integers("fEntryOffset")) {
        basket.offsets.push_back(static_cast<std::uint32_t>(offset - head));
    }
    return basket;
}

/// Header of a basket, after the header common to all records.
Basket writtenBasket(const File& file, const BasketPlace& place) {
    const ByteVector bytes = file.bytesAt(place.position, place.bytes);
    Buffer buffer(bytes);
    const Key key = readKey(buffer);
    buffer.skip(2U + 4U);
    if (buffer.i32() < 0) {
        buffer.skip(1);
    }
    const std::int32_t entries = buffer.i32();
    const std::int32_t last = buffer.i32();
    if (key.bytes > bytes.size() || last < key.headBytes || entries < 0) {
        throw Failure("its header is damaged");
    }
    Basket basket;
    basket.content = unpacked(Bytes(bytes).subspan(key.headBytes, key.bytes - key.headBytes), key.unpackedBytes);
    const auto border = static_cast<std::size_t>(last - key.headBytes);
    if (border > basket.content.size()) {
        throw Failure("its content ends early");
    }
    if (basket.content.size() - border > 4) {
        Buffer rest(Bytes(basket.content).subspan(border));
        const std::size_t count = std::min(rest.count(4), static_cast<std::size_t>(entries));
        for (std::size_t i = 0; i < count; ++i) {
            basket.offsets.push_back(rest.u32() - key.headBytes);
        }
    }
    basket.content.resize(border);
    return basket;
}

/// Completes the offsets of a basket, and checks that they ascend and are within it.
void closeOffsets(Basket& basket) {
    if (basket.offsets.empty()) {
        return;
    }
    basket.offsets.resize(std::min<std::size_t>(basket.offsets.size(), basket.entries));
    basket.offsets.push_back(static_cast<std::uint32_t>(basket.content.size()));
    if (basket.offsets.size() != basket.entries + 1 || !std::is_sorted(basket.offsets.begin(), basket.offsets.end())) {
        throw Failure("its entries are not contiguous");
    }
}

}  // namespace

Tree::Tree(const File& file, const Classes& classes, const Entry& entry) : file(file), path(entry.path) {
    const ByteVector content = file.content(entry.key);
    const ObjectPtr tree = ObjectReader(content, entry.key.headBytes, classes).read(entry.key.className);
    treeTitle = tree->text("fTitle");
    count = static_cast<std::uint64_t>(std::max(tree->real("fEntries"), 0.0));
    BranchWalk(classes, all).walk(tree->objects("fBranches"));
    if (count == 0) {  // Some programs fill only the branches.
        for (const TreeColumn& column : all) {
            count = std::max(count, column.entries);
        }
    }
    for (TreeColumn& column : all) {
        if (column.count) {
            all[*column.count].isCount = true;
        }
        if (column.entries < count && column.complaint.empty()) {
            column.complaint = fmt::format("it has values for {} of {} entries", column.entries, count);
        }
    }
}

double Tree::variableBytes(const TreeColumn& column) const {
    if (count == 0 || (!column.info.isList && column.info.type != ColumnType::Text)) {
        return 0.0;
    }
    const bool isText = column.info.type == ColumnType::Text;
    const std::size_t inFile =
        isText ? 1 : std::max<std::size_t>(sizeOf(column.layout.type.number, column.layout.type.range), 1);
    const std::size_t inMemory = isText ? 1 : column.info.type == ColumnType::Boolean ? 1 : sizeof(double);
    const double values = static_cast<double>(column.bytes) / static_cast<double>(inFile);
    return values * static_cast<double>(inMemory) / static_cast<double>(count);
}

Basket Tree::basketAt(const TreeColumn& column, const BasketPlace& place) const {
    Basket basket = place.embedded ? embeddedBasket(*place.embedded) : writtenBasket(file, place);
    basket.firstEntry = place.firstEntry;
    basket.entries = place.entries;
    closeOffsets(basket);
    if (basket.offsets.empty() && column.count) {
        addOffsets(column, basket);
    }
    return basket;
}

/// @throws Failure that also names the entries.
Basket Tree::namedBasketAt(const TreeColumn& column, const BasketPlace& place) const {
    try {
        return basketAt(column, place);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("the basket of entries {} to {}: {}", place.firstEntry,
                                  place.firstEntry + std::max<std::uint64_t>(place.entries, 1) - 1, failure.what()));
    }
}

/// Where a basket has no offsets of its entries, they follow from the counts.
void Tree::addOffsets(const TreeColumn& column, Basket& basket) const {
    const ColumnPtr counts = read(all[*column.count], basket.firstEntry, basket.entries);
    const std::size_t size = sizeOf(column.layout.type.number, column.layout.type.range) * column.layout.length;
    const std::size_t extra = column.layout.kind == Layout::Kind::FlaggedNumbers ? 1 : 0;
    std::uint64_t at = 0;
    basket.offsets.push_back(0);
    for (const std::int64_t number : counts->integers()) {
        at += extra + static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0)) * size;
        if (at > basket.content.size()) {
            throw Failure("its counts do not match its length");
        }
        basket.offsets.push_back(static_cast<std::uint32_t>(at));
    }
}

void Tree::decode(const TreeColumn& column, const Basket& basket, std::uint64_t first, std::uint64_t last,
                  Column& target) const {
    if (decodeAtOnce(column, basket, first - basket.firstEntry, last - basket.firstEntry, target)) {
        return;
    }
    ValueWalk walk(column.selection, target);
    for (std::uint64_t entry = first; entry < last; ++entry) {
        const std::size_t begin = basket.position(entry - basket.firstEntry);
        const std::size_t end = basket.position(entry - basket.firstEntry + 1);
        Buffer bytes(Bytes(basket.content).subspan(begin, end - begin));
        try {
            readEntry(bytes, column, walk);
        } catch (const Failure& failure) {
            throw Failure(fmt::format("entry {}: {}", entry, failure.what()));
        }
        if (target.isList()) {
            target.offsets.push_back(target.valueCount());
        }
    }
}

/// @return the entry after the last one decoded.
std::uint64_t Tree::appendBaskets(const TreeColumn& column, std::uint64_t first, std::uint64_t end,
                                  Column& target) const {
    std::uint64_t at = first;
    const auto reachesFirst = [first](const BasketPlace& place) { return place.firstEntry + place.entries <= first; };
    auto place = std::partition_point(column.baskets.begin(), column.baskets.end(), reachesFirst);
    for (; place != column.baskets.end() && at < end && place->firstEntry <= at; ++place) {
        const std::uint64_t last = std::max(at, std::min(end, place->firstEntry + place->entries));
        const BasketCache::Use use{column.isCount ? 0 : place->entries, last - at};
        const BasketCache::BasketPtr basket = cache.get(
            &*place, [&] { return namedBasketAt(column, *place); }, use);
        decode(column, *basket, at, last, target);
        at = last;
    }
    return at;
}

ColumnPtr Tree::read(const TreeColumn& column, std::uint64_t first, std::size_t rows) const {
    if (!column.complaint.empty()) {
        throw Failure("the column " + column.name + " cannot be read: " + column.complaint);
    }
    auto values = std::make_shared<Column>(emptyColumn(column));
    if (!column.info.isList) {
        std::visit([rows](auto& each) { each.reserve(std::min(rows, chunkRows)); }, values->values);
    }
    std::uint64_t at = first;
    const std::uint64_t end = first + rows;
    try {
        at = appendBaskets(column, first, end, *values);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: the branch {} of {} is damaged: {}", file.path().string(), column.name, path,
                                  failure.what()));
    }
    if (at < end) {
        throw Failure(
            fmt::format("{}: the branch {} of {} has no entry {}", file.path().string(), column.name, path, at));
    }
    return values;
}

}  // namespace velmorak::root
