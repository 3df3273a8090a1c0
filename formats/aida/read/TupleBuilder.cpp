#include "aida/read/TupleBuilder.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace velmorak::io {

namespace {

constexpr std::size_t maxNestingDepth = 16;
/// A nested row without entries has the defaults of all its columns: a few bytes of the file can ask for many values.
constexpr std::size_t maxNestedValues = std::size_t{8} << 20U;
/// The name of a nested column stands in those of all that are in it.
constexpr std::size_t maxNameBytes = std::size_t{64} << 20U;

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool isWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() &&
           std::equal(text.begin(), text.end(), word.begin(), [](char a, char b) { return (a | 0x20) == b; });
}

std::string firstCharacter(std::string_view text) {
    std::size_t length = std::min<std::size_t>(1, text.size());
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return std::string(text.substr(0, length));
}

Column emptyColumn(ColumnType type, bool isList) {
    Column column;
    switch (type) {
        case ColumnType::Real:
            column.values.emplace<Column::Reals>();
            break;
        case ColumnType::Integer:
            column.values.emplace<Column::Integers>();
            break;
        case ColumnType::Boolean:
            column.values.emplace<Column::Booleans>();
            break;
        case ColumnType::Text:
            column.values.emplace<Column::Texts>();
            break;
    }
    if (isList) {
        column.offsets.push_back(0);
    }
    return column;
}

}  // namespace

bool readInteger(std::string_view text, std::int64_t& value) {
    text = trimmed(text);
    const std::string_view digits = !text.empty() && text.front() == '+' ? text.substr(1) : text;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc() && end == digits.data() + digits.size()) {
        return true;
    }
    double real = 0.0;
    constexpr double limit = 9223372036854775808.0;
    if (error == std::errc::result_out_of_range || !readNumber(text, real) || real != std::trunc(real) ||
        real < -limit || real >= limit) {
        return false;
    }
    value = static_cast<std::int64_t>(real);
    return true;
}

bool readBoolean(std::string_view text, std::uint8_t& value) {
    text = trimmed(text);
    const bool isTrue = text == "1" || isWord(text, "true");
    if (!isTrue && text != "0" && !isWord(text, "false")) {
        return false;
    }
    value = isTrue ? 1 : 0;
    return true;
}

TupleBuilder::TupleBuilder(const std::vector<AidaColumn>& columns) : header(columns) {
    for (const AidaColumn& column : columns) {
        items.push_back(column.isNested ? addNested(column, column.name, 0) : addColumn(column));
    }
    allColumns = Schema(std::exchange(infos, {}));
    timesUsed.clear();
    maxRows = rowsInChunk(allColumns);
    for (std::size_t i = 0; i < allColumns.size(); ++i) {
        const bool isList = allColumns[i].isList;
        rowBytes += isList ? sizeof(std::uint64_t) : bytesInRow(Schema({allColumns[i]}));
        if (isList || allColumns[i].type == ColumnType::Text) {
            unequal.push_back(i);
        }
    }
}

TupleBuilder::Item TupleBuilder::addColumn(const AidaColumn& column) {
    Item item;
    item.slot = addSlot(column, column.name, false);
    return item;
}

TupleBuilder::Item TupleBuilder::addNested(const AidaColumn& column, const std::string& name, std::size_t depth) {
    Item item;
    item.isNested = true;
    if (depth > maxNestingDepth) {
        note(fmt::format(R"(the column "{}" is nested too deep and is left out)", name));
        return item;
    }
    if (column.children.empty()) {
        note(fmt::format(R"(the nested column "{}" does not say what it holds and is left out)", name));
    }
    for (const AidaColumn& child : column.children) {
        const std::string inside = name + "." + child.name;
        if (child.isNested) {
            item.children.push_back(addNested(child, inside, depth + 1));
        } else {
            item.children.emplace_back();
            item.children.back().slot = addSlot(child, column.children.size() == 1 ? name : inside, true);
        }
    }
    if (depth > 0 && !column.children.empty()) {
        item.countSlot = addCounter(name + ".count");
        item.rowSlot = addCounter(name + ".row");
    }
    return item;
}

std::size_t TupleBuilder::addCounter(const std::string& name) {
    AidaColumn counter;
    counter.type = ColumnType::Integer;
    return addSlot(counter, name, true);
}

/// Any number of columns may be wrong in the same way.
void TupleBuilder::note(std::string sentence) {
    constexpr std::size_t most = 1000;
    if (sentences.size() < most) {
        sentences.push_back(std::move(sentence));
    }
}

/// The search for a number goes on from the one that the last of the name has got.
std::string TupleBuilder::uniqueName(const std::string& given) {
    std::string unique = given;
    for (int number = 2; !timesUsed.try_emplace(unique, 1).second; ++number) {
        int& last = timesUsed[given];
        last = number = std::max(number, last + 1);
        unique = fmt::format("{};{}", given, number);
    }
    return unique;
}

std::size_t TupleBuilder::addSlot(const AidaColumn& column, const std::string& name, bool isList) {
    const std::string given = name.empty() ? fmt::format("column{}", slots.size() + 1) : name;
    const std::string unique = uniqueName(given);
    if (unique != given) {
        note(fmt::format(R"(there is more than one column "{}"; one is called "{}")", given, unique));
    }
    if (!column.isKnownType) {
        note(fmt::format(R"(the type "{}" of the column "{}" is not known; it is read as text)", column.typeText,
                         unique));
    }
    nameBytes += unique.size();
    if (nameBytes > maxNameBytes) {
        throw Failure(fmt::format("the names of its columns take more than {} MB", maxNameBytes >> 20U));
    }
    infos.push_back({unique, column.type, isList});
    Slot slot;
    slot.column = emptyColumn(column.type, isList);
    slot.isSingleCharacter = column.isSingleCharacter;
    slot.textDefault = column.defaultText;
    std::uint8_t truth = 0;
    if (!readNumber(column.defaultText, slot.realDefault)) {
        slot.realDefault = std::numeric_limits<double>::quiet_NaN();
    }
    if (column.type == ColumnType::Boolean && readBoolean(column.defaultText, truth)) {
        slot.integerDefault = truth;
    } else if (!readInteger(column.defaultText, slot.integerDefault)) {
        slot.integerDefault = 0;
    }
    slots.push_back(std::move(slot));
    return slots.size() - 1;
}

TupleBuilder::Item* TupleBuilder::nextItem() {
    std::vector<Item>* all = levels.empty() ? &items : levels.back().item ? &levels.back().item->children : nullptr;
    std::size_t& place = levels.empty() ? position : levels.back().position;
    return all && place < all->size() ? &(*all)[place++] : nullptr;
}

bool TupleBuilder::entry(const char* value) {
    const Item* item = nextItem();
    if (!item) {
        const Item* inside = levels.empty() ? nullptr : levels.back().item;
        hasExtra = hasExtra || levels.empty() || (inside && !inside->children.empty());
        return true;
    }
    // A single value where rows belong says nothing of them.
    if (item->isNested) {
        countRows(*item, 0);
    }
    return item->isNested || put(slots[item->slot], value);
}

void TupleBuilder::countRows(const Item& item, std::int64_t rows) {
    if (item.countSlot != Item::none) {
        std::get<Column::Integers>(slots[item.countSlot].column.values).push_back(rows);
    }
}

bool TupleBuilder::put(Slot& slot, const char* value) {
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
            fmt::format(R"("{:.40}" in column "{}" is no {})", value,
                        allColumns[static_cast<std::size_t>(&slot - slots.data())].name, nameOf(slot.column.type()));
    }
    return isValue;
}

void TupleBuilder::putDefault(Slot& slot) {
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
    const Item* item = nextItem();
    if (item && item->isNested) {
        countRows(*item, 0);
    } else if (item) {
        putDefault(slots[item->slot]);
    }
}

void TupleBuilder::beginNested() {
    Item* item = nextItem();
    if (levels.empty()) {
        nestedValues = 0;
    }
    // Rows where a single value belongs: the default takes its place.
    if (item && !item->isNested) {
        putDefault(slots[item->slot]);
    }
    levels.push_back({item && item->isNested ? item : nullptr});
}

bool TupleBuilder::endNestedRow() {
    Item* item = levels.back().item;
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
    if (item->rowSlot != Item::none) {
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

/// Counts the nested rows anew.
void TupleBuilder::restart(std::vector<Item>& items) {
    for (Item& item : items) {
        item.rows = 0;
        restart(item.children);
    }
}

void TupleBuilder::endRow() {
    while (position < items.size()) {
        missingEntry();
    }
    restart(items);
    position = 0;
    for (Slot& slot : slots) {
        if (slot.column.isList()) {
            slot.column.offsets.push_back(slot.column.valueCount());
        }
    }
    ++rowCount;
    weighRow();
}

void TupleBuilder::weighRow() {
    bytes += rowBytes;
    for (const std::size_t position : unequal) {
        const Column& column = slots[position].column;
        const std::size_t begin = column.isList() ? *(column.offsets.end() - 2) : rowCount - 1;
        std::visit(
            [&](const auto& values) {
                bytes += column.isList() ? (values.size() - begin) * sizeof(values[0]) : 0;
                if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                    for (std::size_t i = begin; i < values.size(); ++i) {
                        bytes += values[i].size();
                    }
                }
            },
            column.values);
    }
}

std::size_t TupleBuilder::roomFor(const PlainRows& rows, std::size_t first) const {
    const std::size_t most = std::min(rows.count() - first, maxRows - rowCount);
    std::size_t whole = bytes;
    for (std::size_t count = 0; count < most; ++count) {
        if (whole >= maxChunkBytes) {
            return count;
        }
        whole += rowBytes;
        for (const std::size_t position : unequal) {
            whole += rows.columns()[position].texts()[first + count].size();
        }
    }
    return most;
}

std::vector<PlainColumn> TupleBuilder::plainColumns() const {
    if (std::any_of(items.begin(), items.end(), [](const Item& item) { return item.isNested; })) {
        return {};
    }
    std::vector<PlainColumn> columns;
    columns.reserve(slots.size());
    for (const Slot& slot : slots) {
        columns.push_back({slot.column.type(), slot.isSingleCharacter});
    }
    return columns;
}

void TupleBuilder::appendRows(const PlainRows& rows, std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
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
    for (const std::size_t position : unequal) {
        for (std::size_t i = first; i < first + count; ++i) {
            bytes += rows.columns()[position].texts()[i].size();
        }
    }
}

void TupleBuilder::dropIncompleteRow() {
    for (Slot& slot : slots) {
        const std::size_t complete = slot.column.isList() ? slot.column.offsets.back() : rowCount;
        std::visit([&](auto& values) { values.resize(complete); }, slot.column.values);
    }
    position = 0;
    levels.clear();
    restart(items);
}

std::vector<ColumnPtr> TupleBuilder::take() {
    dropIncompleteRow();
    std::vector<ColumnPtr> columns;
    for (Slot& slot : slots) {
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
