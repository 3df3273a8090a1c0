#include "aida/read/TupleLayout.h"

#include "aida/text/EntryValues.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

namespace velmorak::io {

namespace {

constexpr std::size_t maxNestingDepth = 16;
/// The name of a nested column is part of the names of all columns in it.
constexpr std::size_t maxNameBytes = std::size_t{64} << 20U;
/// Any number of columns may be wrong in the same way.
constexpr std::size_t maxWarnings = 1000;

class LayoutBuilder {
public:
    TupleLayout build(const std::vector<AidaColumn>& columns);

private:
    TupleItem addColumn(const AidaColumn& column);
    TupleItem addNested(const AidaColumn& column, const std::string& name, std::size_t depth);
    std::size_t addCounter(const std::string& name);
    void warn(std::string sentence);
    std::string uniqueName(const std::string& given);
    std::size_t addSlot(const AidaColumn& column, const std::string& name, bool isList);

    TupleLayout layout;
    std::size_t nameBytes = 0;
    std::vector<ColumnInfo> infos;                   ///< Of the slots so far.
    std::unordered_map<std::string, int> timesUsed;  ///< Names, with the last number that one was given.
};

TupleLayout LayoutBuilder::build(const std::vector<AidaColumn>& columns) {
    for (const AidaColumn& column : columns) {
        layout.items.push_back(column.isNested ? addNested(column, column.name, 0) : addColumn(column));
    }
    layout.schema = Schema(std::move(infos));
    return std::move(layout);
}

TupleItem LayoutBuilder::addColumn(const AidaColumn& column) {
    TupleItem item;
    item.slot = addSlot(column, column.name, false);
    return item;
}

TupleItem LayoutBuilder::addNested(const AidaColumn& column, const std::string& name, std::size_t depth) {
    TupleItem item;
    item.isNested = true;
    if (depth > maxNestingDepth) {
        warn(fmt::format(R"(the column "{}" is nested too deeply and is left out)", name));
        return item;
    }
    if (column.children.empty()) {
        warn(fmt::format(R"(the nested column "{}" declares no columns and is left out)", name));
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

std::size_t LayoutBuilder::addCounter(const std::string& name) {
    AidaColumn counter;
    counter.type = ColumnType::Integer;
    return addSlot(counter, name, true);
}

void LayoutBuilder::warn(std::string sentence) {
    if (layout.warnings.size() < maxWarnings) {
        layout.warnings.push_back(std::move(sentence));
    }
}

/// Continues counting from the number that the last column of this name got, so that the time stays linear.
std::string LayoutBuilder::uniqueName(const std::string& given) {
    std::string unique = given;
    for (int number = 2; !timesUsed.try_emplace(unique, 1).second; ++number) {
        int& last = timesUsed[given];
        last = number = std::max(number, last + 1);
        unique = fmt::format("{};{}", given, number);
    }
    return unique;
}

std::size_t LayoutBuilder::addSlot(const AidaColumn& column, const std::string& name, bool isList) {
    const std::string given = name.empty() ? fmt::format("column{}", layout.slots.size() + 1) : name;
    const std::string unique = uniqueName(given);
    if (unique != given) {
        warn(fmt::format(R"(there is more than one column "{}"; one is renamed to "{}")", given, unique));
    }
    if (!column.isKnownType) {
        warn(
            fmt::format(R"(the type "{}" of the column "{}" is unknown; it is read as text)", column.typeText, unique));
    }
    nameBytes += unique.size();
    if (nameBytes > maxNameBytes) {
        throw Failure(fmt::format("the names of its columns take more than {} MB", maxNameBytes >> 20U));
    }
    infos.push_back({unique, column.type, isList});
    TupleSlot slot;
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
    layout.slots.push_back(std::move(slot));
    return layout.slots.size() - 1;
}

}  // namespace

TupleLayout layoutOf(const std::vector<AidaColumn>& columns) {
    return LayoutBuilder().build(columns);
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

}  // namespace velmorak::io
