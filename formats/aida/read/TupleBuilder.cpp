#include "aida/read/TupleBuilder.h"

#include "aida/text/EntryValues.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace velmorak::io {

namespace {

/// A nested row without entries gets the defaults of all its columns: few bytes of the file could ask for many values.
constexpr std::size_t maxNestedValues = std::size_t{8} << 20U;

std::string firstCharacter(std::string_view text) {
    std::size_t length = std::min<std::size_t>(1, text.size());
    while (length < text.size() && isContinuationByte(text[length])) {
        ++length;
    }
    return std::string(text.substr(0, length));
}

/// Of the values from one on, without the characters of texts.
std::size_t bytesOfValues(const Column& column, std::size_t begin) {
    return std::visit([&](const auto& values) { return (values.size() - begin) * sizeof(values[0]); }, column.values);
}

}  // namespace

TupleBuilder::TupleBuilder(const std::vector<AidaColumn>& columns) : TupleBuilder(columns, layoutOf(columns)) {}

TupleBuilder::TupleBuilder(std::vector<AidaColumn> columns, TupleLayout layout)
    : header(std::move(columns)),
      tableSchema(std::move(layout.schema)),
      slots(std::move(layout.slots)),
      items(std::move(layout.items)),
      sentences(std::move(layout.warnings)),
      maxRows(rowsInChunk(tableSchema)) {
    for (std::size_t i = 0; i < tableSchema.size(); ++i) {
        const bool isList = tableSchema[i].isList;
        rowBytes += isList ? sizeof(std::uint64_t) : bytesInRow(Schema({tableSchema[i]}));
        if (isList || tableSchema[i].type == ColumnType::Text) {
            variableSlots.push_back(i);
        }
    }
}

void TupleBuilder::selectColumns(const std::vector<bool>& needed) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        slots[i].isUsed = needed[i] || tableSchema[i].isList || tableSchema[i].type == ColumnType::Text;
    }
}

TupleItem* TupleBuilder::nextItem() {
    std::vector<TupleItem>* all = levels.empty()       ? &items
                                  : levels.back().item ? &levels.back().item->children
                                                       : nullptr;
    std::size_t& place = levels.empty() ? position : levels.back().position;
    return all && place < all->size() ? &(*all)[place++] : nullptr;
}

bool TupleBuilder::entry(const char* value) {
    const TupleItem* item = nextItem();
    if (!item) {
        const TupleItem* inside = levels.empty() ? nullptr : levels.back().item;
        hasExtra = hasExtra || levels.empty() || (inside != nullptr && !inside->children.empty());
        return true;
    }
    // A single value in place of nested rows counts as no rows.
    if (item->isNested) {
        countRows(*item, 0);
    }
    return item->isNested || put(slots[item->slot], value);
}

void TupleBuilder::countRows(const TupleItem& item, std::int64_t rows) {
    if (item.countSlot != TupleItem::none) {
        std::get<Column::Integers>(slots[item.countSlot].column.values).push_back(rows);
    }
}

bool TupleBuilder::put(TupleSlot& slot, const char* value) {
    if (!slot.isUsed) {
        return true;
    }
    bool isValue = true;
    if (auto* reals = std::get_if<Column::Reals>(&slot.column.values)) {
        double number = 0.0;
        isValue = readNumber(value, number);
        reals->push_back(number);
    } else if (auto* integers = std::get_if<Column::Integers>(&slot.column.values)) {
        std::int64_t number = 0;
        isValue = readInteger(value, number);
        integers->push_back(number);
    } else if (auto* booleans = std::get_if<Column::Booleans>(&slot.column.values)) {
        std::uint8_t truth = 0;
        isValue = readBoolean(value, truth);
        booleans->push_back(truth);
    } else {
        auto& texts = std::get<Column::Texts>(slot.column.values);
        texts.push_back(slot.isSingleCharacter ? firstCharacter(value) : value);
    }
    if (!isValue) {
        reason =
            fmt::format(R"("{:.40}" in column "{}" is not a valid {})", value,
                        tableSchema[static_cast<std::size_t>(&slot - slots.data())].name, nameOf(slot.column.type()));
    }
    return isValue;
}

void TupleBuilder::putDefault(TupleSlot& slot) {
    if (!slot.isUsed) {
        return;
    }
    if (auto* reals = std::get_if<Column::Reals>(&slot.column.values)) {
        reals->push_back(slot.realDefault);
    } else if (auto* integers = std::get_if<Column::Integers>(&slot.column.values)) {
        integers->push_back(slot.integerDefault);
    } else if (auto* booleans = std::get_if<Column::Booleans>(&slot.column.values)) {
        booleans->push_back(slot.integerDefault != 0 ? 1 : 0);
    } else {
        std::get<Column::Texts>(slot.column.values).push_back(slot.textDefault);
    }
}

void TupleBuilder::missingEntry() {
    const TupleItem* item = nextItem();
    if (item && item->isNested) {
        countRows(*item, 0);
    } else if (item) {
        putDefault(slots[item->slot]);
    }
}

void TupleBuilder::beginNested() {
    TupleItem* item = nextItem();
    if (levels.empty()) {
        nestedValues = 0;
    }
    // Nested rows in place of a single value: the column gets its default.
    if (item && !item->isNested) {
        putDefault(slots[item->slot]);
    }
    levels.push_back({item && item->isNested ? item : nullptr});
}

bool TupleBuilder::endNestedRow() {
    TupleItem* item = levels.back().item;
    nestedValues += !item ? 0 : item->children.size() + 1;
    if (nestedValues > maxNestedValues) {
        reason = fmt::format("there are more than {} values in the nested rows of one row", maxNestedValues);
        return false;
    }
    while (item && levels.back().position < item->children.size()) {
        missingEntry();
    }
    levels.back().position = 0;
    ++levels.back().rows;
    if (!item) {
        return true;
    }
    ++item->rows;
    if (item->rowSlot != TupleItem::none) {
        std::get<Column::Integers>(slots[item->rowSlot].column.values).push_back(levels[levels.size() - 2].item->rows);
    }
    return true;
}

void TupleBuilder::endNested() {
    const Level level = levels.back();
    levels.pop_back();
    if (level.item) {
        countRows(*level.item, level.rows);
    }
}

void TupleBuilder::resetRows(std::vector<TupleItem>& items) {
    for (TupleItem& item : items) {
        item.rows = 0;
        resetRows(item.children);
    }
}

void TupleBuilder::endRow() {
    while (position < items.size()) {
        missingEntry();
    }
    resetRows(items);
    position = 0;
    for (TupleSlot& slot : slots) {
        if (slot.column.isList()) {
            slot.column.offsets.push_back(slot.column.valueCount());
        }
    }
    ++rowCount;
    countBytesOfRow();
}

void TupleBuilder::countBytesOfRow() {
    bytes += rowBytes;
    for (const std::size_t position : variableSlots) {
        const Column& column = slots[position].column;
        const std::size_t begin = column.isList() ? *(column.offsets.end() - 2) : rowCount - 1;
        bytes += column.isList() ? bytesOfValues(column, begin) : 0;
        if (const auto* const texts = std::get_if<Column::Texts>(&column.values)) {
            bytes += std::accumulate(texts->begin() + static_cast<std::ptrdiff_t>(begin), texts->end(), std::size_t{0},
                                     [](std::size_t sum, const std::string& text) { return sum + text.size(); });
        }
    }
}

std::size_t TupleBuilder::roomFor(const RowFastPath& rows, std::size_t first) const {
    const std::size_t most = std::min(rows.count() - first, maxRows - rowCount);
    std::size_t whole = bytes;
    for (std::size_t count = 0; count < most; ++count) {
        if (whole >= maxChunkBytes) {
            return count;
        }
        whole += rowBytes;
        for (const std::size_t position : variableSlots) {
            whole += rows.columns()[position].texts()[first + count].size();
        }
    }
    return most;
}

std::vector<PlainColumn> TupleBuilder::plainColumns() const {
    if (std::any_of(items.begin(), items.end(), [](const TupleItem& item) { return item.isNested; })) {
        return {};
    }
    std::vector<PlainColumn> columns;
    columns.reserve(slots.size());
    for (const TupleSlot& slot : slots) {
        columns.push_back({slot.column.type(), slot.isSingleCharacter, slot.isUsed});
    }
    return columns;
}

void TupleBuilder::appendRows(const RowFastPath& rows, std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (!slots[i].isUsed) {
            continue;
        }
        std::visit(
            [&](auto& target) {
                const auto& values = std::get<std::decay_t<decltype(target)>>(rows.columns()[i].values);
                const auto begin = values.begin() + static_cast<std::ptrdiff_t>(first);
                target.insert(target.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
            },
            slots[i].column.values);
    }
    rowCount += count;
    bytes += count * rowBytes;
    for (const std::size_t position : variableSlots) {
        for (std::size_t i = first; i < first + count; ++i) {
            bytes += rows.columns()[position].texts()[i].size();
        }
    }
}

void TupleBuilder::dropIncompleteRow() {
    for (TupleSlot& slot : slots) {
        if (!slot.isUsed) {
            continue;
        }
        const std::size_t complete = slot.column.isList() ? slot.column.offsets.back() : rowCount;
        std::visit([&](auto& values) { values.resize(complete); }, slot.column.values);
    }
    position = 0;
    levels.clear();
    resetRows(items);
}

std::vector<ColumnPtr> TupleBuilder::take() {
    dropIncompleteRow();
    std::vector<ColumnPtr> columns;
    for (TupleSlot& slot : slots) {
        if (!slot.isUsed) {
            columns.emplace_back();
            continue;
        }
        Column next = emptyColumn(slot.column.type(), slot.column.isList());
        if (!slot.column.isList()) {
            std::visit(
                [&](auto& values) {
                    values.reserve(std::get<std::decay_t<decltype(values)>>(slot.column.values).size());
                },
                next.values);
        }
        columns.push_back(std::make_shared<Column>(std::exchange(slot.column, std::move(next))));
    }
    rowCount = 0;
    bytes = 0;
    return columns;
}

}  // namespace velmorak::io
