#include "Table/groups/GroupTable.h"

#include "shared/KeyBytes.h"
#include "shared/RowGroups.h"
#include "shared/StoredColumns.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>
#include <span>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

std::vector<std::uint32_t> numbersUpTo(std::size_t count) {
    std::vector<std::uint32_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0U);
    return numbers;
}

}  // namespace

GroupTable::GroupTable(const GroupPlan& plan) : plan(&plan) {
    for (const GroupPlan::Quantity& quantity : plan.quantities()) {
        all.push_back(makeGroupValues(quantity.type, quantity.isKept));
    }
}

void GroupTable::fill(const Chunk& chunk) {
    if (!keys.empty()) {
        GroupTable more(*plan);
        more.fill(chunk);
        merge(more);
        return;
    }
    const std::vector<ColumnPtr> keyColumns = plan->keysOf(chunk);
    const RowGroups groups = groupRows(keyColumns, chunk.rows);
    const RowsByGroup sorted = rowsByGroup(groups);
    for (std::size_t group = 0; group < groups.size(); ++group) {
        keys.push_back(keyBytes(keyColumns, groups.firstRow[group]));
        keyBytesUsed += keys.back().size();
        rows.push_back(sorted.offsets[group + 1] - sorted.offsets[group]);
    }
    for (std::size_t quantity = 0; quantity < all.size(); ++quantity) {
        all[quantity]->fill(*plan->valuesOf(quantity, chunk), sorted);
    }
}

void GroupTable::merge(const GroupTable& other) {
    std::vector<std::uint32_t> targets;
    targets.reserve(other.size());
    for (std::size_t group = 0; group < other.size(); ++group) {
        targets.push_back(groupFor(other.keys[group]));
        rows[targets.back()] += other.rows[group];
    }
    for (std::size_t quantity = 0; quantity < all.size(); ++quantity) {
        all[quantity]->merge(*other.all[quantity], targets);
    }
}

/// @return the group with the key, which is a new one without rows if there was none.
std::uint32_t GroupTable::groupFor(const std::string& key) {
    if (2 * (keys.size() + 1) > slots.size()) {
        index();
    }
    std::size_t at = mixed(std::hash<std::string>()(key)) & (slots.size() - 1);
    while (slots[at] != 0 && keys[slots[at] - 1] != key) {
        at = (at + 1) & (slots.size() - 1);
    }
    if (slots[at] == 0) {
        keys.push_back(key);
        rows.push_back(0);
        keyBytesUsed += key.size();
        slots[at] = static_cast<std::uint32_t>(keys.size());
    }
    return slots[at] - 1;
}

void GroupTable::index() {
    constexpr std::size_t fewest = 64;
    slots.assign(std::max({fewest, 2 * slots.size(), std::bit_ceil(4 * (keys.size() + 1))}), 0);
    for (std::size_t group = 0; group < keys.size(); ++group) {
        std::size_t at = mixed(std::hash<std::string>()(keys[group])) & (slots.size() - 1);
        while (slots[at] != 0) {
            at = (at + 1) & (slots.size() - 1);
        }
        slots[at] = static_cast<std::uint32_t>(group + 1);
    }
}

std::size_t GroupTable::bytes() const {
    std::size_t sum = keys.size() * (sizeof(std::string) + sizeof(std::int64_t)) + keyBytesUsed +
                      slots.size() * sizeof(std::uint32_t);
    for (const auto& values : all) {
        sum += values->bytes();
    }
    return sum;
}

std::int64_t GroupTable::missing() const {
    return std::accumulate(all.begin(), all.end(), std::int64_t{0},
                           [](std::int64_t sum, const auto& values) { return sum + values->missing(); });
}

std::vector<std::uint32_t> GroupTable::inOrder() const {
    std::vector<std::uint32_t> groups = numbersUpTo(size());
    std::sort(groups.begin(), groups.end(), [this](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    return groups;
}

std::vector<std::string> GroupTable::keysOf(const std::vector<std::uint32_t>& groups) const {
    std::vector<std::string> chosen;
    chosen.reserve(groups.size());
    for (const std::uint32_t group : groups) {
        chosen.push_back(keys[group]);
    }
    return chosen;
}

ColumnPtr GroupTable::rowCounts(const std::vector<std::uint32_t>& groups) const {
    Column::Integers counts;
    counts.reserve(groups.size());
    for (const std::uint32_t group : groups) {
        counts.push_back(rows[group]);
    }
    return std::make_shared<const Column>(Column{std::move(counts), {}});
}

std::vector<ColumnPtr> GroupTable::store(const std::vector<std::uint32_t>& groups) const {
    std::vector<ColumnPtr> columns{std::make_shared<const Column>(Column{keysOf(groups), {}}), rowCounts(groups)};
    for (const auto& values : all) {
        values->store(groups, columns);
    }
    return columns;
}

void GroupTable::load(const std::vector<ColumnPtr>& columns) {
    if (columns.size() < 2 || columns[0]->type() != ColumnType::Text || columns[1]->type() != ColumnType::Integer ||
        columns[0]->valueCount() != columns[1]->valueCount()) {
        throw std::invalid_argument("the columns are not those of groups");
    }
    keys = columns[0]->texts();
    rows = columns[1]->integers();
    columnsOfKeys(plan->keyTypes(), keys);
    for (const std::string& key : keys) {
        keyBytesUsed += key.size();
    }
    std::span<const ColumnPtr> others(columns.begin() + 2, columns.end());
    for (const auto& values : all) {
        values->load(others, keys.size());
    }
    if (!others.empty() || std::any_of(rows.begin(), rows.end(), [](std::int64_t count) { return count < 0; })) {
        throw std::invalid_argument("the columns are not those of these groups");
    }
}

void GroupTable::save(StateWriter& writer) const {
    saveColumns(store(numbersUpTo(size())), writer);
}

void GroupTable::load(StateReader& reader) {
    try {
        load(loadColumns(reader));
    } catch (const std::invalid_argument& reason) {
        reader.fail(reason.what());
    }
}

}  // namespace velmorak
