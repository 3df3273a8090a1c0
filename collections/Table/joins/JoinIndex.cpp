#include "Table/joins/JoinIndex.h"

#include "shared/KeyBytes.h"
#include "shared/RowGather.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <string>
#include <utility>

namespace velmorak {

namespace {

ColumnPtr evaluated(const Expression& expression, const Chunk& chunk, bool isReal) {
    ColumnPtr column = expression.evaluate(chunk);
    if (column->type() == ColumnType::Boolean && !isReal) {
        const Column::Booleans& values = column->booleans();
        return std::make_shared<const Column>(Column{Column::Integers(values.begin(), values.end()), {}});
    }
    return isReal ? asReals(column) : column;
}

/// Adds the words of a key to those of the keys before it.
template <typename Values, typename WordOf, typename IsMissing>
void addWords(const Values& values, const WordOf& wordOf, const IsMissing& isMissing, bool isFirst,
              std::vector<std::uint64_t>& words, std::vector<std::uint8_t>& areMissing) {
    for (std::size_t row = 0; row < values.size(); ++row) {
        const std::uint64_t word = wordOf(values[row]);
        words[row] = isFirst ? word : mixed(words[row]) + word;
        areMissing[row] |= static_cast<std::uint8_t>(isMissing(values[row]));
    }
}

bool areEqual(const Column& one, std::size_t row, const Column& other, std::size_t otherRow) {
    if (one.type() == ColumnType::Text) {
        return one.texts()[row] == other.texts()[otherRow];
    }
    return one.type() == ColumnType::Integer ? one.integers()[row] == other.integers()[otherRow]
                                             : one.reals()[row] == other.reals()[otherRow];
}

/// Words of the ends of ranges and of values in them, which are compared as reals or as integers.
std::vector<std::uint64_t> rangeWords(const Expression& expression, const Chunk& chunk, bool isReal) {
    return orderedWords(*evaluated(expression, chunk, isReal));
}

}  // namespace

void JoinIndex::append(const Chunk& chunk) {
    if (chunk.rows > noRow - 1 - count) {
        throw Failure("with", "the second table has more than " + std::to_string(noRow - 1) + " rows");
    }
    for (std::size_t i = 0; i < plan.keys().size(); ++i) {
        const ColumnPtr column = evaluated(plan.keys()[i].second, chunk, plan.keys()[i].isReal);
        if (i == keys.size()) {
            keys.push_back(*column);
        } else {
            appendRows(keys[i], *column);
        }
    }
    if (plan.range()) {
        const Words begins = rangeWords(plan.range()->from, chunk, plan.range()->isReal);
        from.insert(from.end(), begins.begin(), begins.end());
    }
    if (plan.range() && plan.range()->to) {
        const Words ends = rangeWords(*plan.range()->to, chunk, plan.range()->isReal);
        to.insert(to.end(), ends.begin(), ends.end());
    }
    count += static_cast<std::uint32_t>(chunk.rows);
}

void JoinIndex::finish() {
    std::vector<ColumnPtr> columns;
    for (const Column& key : keys) {
        columns.push_back(std::make_shared<const Column>(key));
    }
    groups = groupRows(columns, count);
    rows = rowsByGroup(groups);
    if (plan.range()) {
        sortRanges();
    }
    indexGroups();
    groups.ofRow = {};
}

void JoinIndex::indexGroups() {
    std::vector<ColumnPtr> columns;
    for (const Column& key : keys) {
        columns.push_back(gatherRows(key, groups.firstRow));
    }
    isExact = keys.empty() || (keys.size() == 1 && keys.front().type() != ColumnType::Text);
    const KeyWords known = wordsOf(columns, groups.size());
    slots.resize(std::bit_ceil(2 * groups.size() + 2));
    for (std::uint32_t group = 0; group < groups.size(); ++group) {
        std::size_t at = mixed(known.words[group]) & (slots.size() - 1);
        while (slots[at].group != 0) {
            at = (at + 1) & (slots.size() - 1);
        }
        slots[at] = {known.words[group], known.areMissing[group] != 0 ? 0 : group + 1};
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i] = *columns[i];
    }
}

/// Sorts the rows of each group by the beginnings of their ranges.
void JoinIndex::sortRanges() {
    for (std::size_t row = 0; row < to.size(); ++row) {
        if (to[row] < from[row] && from[row] != wordOfNan) {
            throw Failure("to", "the range in row " + std::to_string(row) +
                                    " of the second table, counted from 0, ends before it begins");
        }
    }
    largestEnd.resize(rows.rows.size());
    for (std::size_t group = 0; group < groups.size(); ++group) {
        const auto begin = rows.rows.begin() + rows.offsets[group];
        const auto end = rows.rows.begin() + rows.offsets[group + 1];
        std::stable_sort(begin, end, [this](std::uint32_t a, std::uint32_t b) { return from[a] < from[b]; });
        std::uint64_t largest = 0;
        for (std::uint32_t i = rows.offsets[group]; i < rows.offsets[group + 1]; ++i) {
            // The end of a range that is missing is no end at all.
            largest = to.empty() ? 0 : std::max(largest, to[rows.rows[i]]);
            largestEnd[i] = largest;
        }
    }
}

std::vector<ColumnPtr> JoinIndex::firstKeys(const Chunk& chunk) const {
    std::vector<ColumnPtr> columns;
    for (const JoinPlan::Key& key : plan.keys()) {
        columns.push_back(evaluated(key.first, chunk, key.isReal));
    }
    return columns;
}

JoinIndex::KeyWords JoinIndex::wordsOf(const std::vector<ColumnPtr>& columns, std::size_t size) {
    KeyWords known{Words(size, 0), std::vector<std::uint8_t>(size, 0)};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto add = [&](const auto& values, const auto& wordOf, const auto& isMissing) {
            addWords(values, wordOf, isMissing, i == 0, known.words, known.areMissing);
        };
        if (columns[i]->type() == ColumnType::Text) {
            add(columns[i]->texts(), std::hash<std::string>(), [](const std::string& text) { return text.empty(); });
        } else if (columns[i]->type() == ColumnType::Integer) {
            add(
                columns[i]->integers(), [](std::int64_t value) { return static_cast<std::uint64_t>(value); },
                [](std::int64_t) { return false; });
        } else {
            add(
                columns[i]->reals(), [](double value) { return wordOf(value); },
                [](double value) { return std::isnan(value); });
        }
    }
    return known;
}

bool JoinIndex::isGroup(std::uint32_t group, const std::vector<ColumnPtr>& columns, std::size_t row) const {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!areEqual(keys[i], group, *columns[i], row)) {
            return false;
        }
    }
    return true;
}

/// @return the group whose keys are equal, or noRow.
std::uint32_t JoinIndex::groupOf(std::uint64_t word, const std::vector<ColumnPtr>& columns, std::size_t row) const {
    for (std::size_t at = mixed(word) & (slots.size() - 1); slots[at].group != 0; at = (at + 1) & (slots.size() - 1)) {
        if (slots[at].word == word && (isExact || isGroup(slots[at].group - 1, columns, row))) {
            return slots[at].group - 1;
        }
    }
    return noRow;
}

/// Appends the rows of the group in whose ranges the value is, in their order.
void JoinIndex::addInRange(std::uint32_t group, std::uint64_t value, std::vector<std::uint32_t>& found) const {
    if (value == wordOfNan) {
        return;
    }
    const auto begin = rows.rows.begin() + rows.offsets[group];
    const auto end = rows.rows.begin() + rows.offsets[group + 1];
    const auto after = std::upper_bound(begin, end, value,
                                        [this](std::uint64_t wanted, std::uint32_t row) { return wanted < from[row]; });
    if (to.empty()) {
        if (after != begin) {
            found.push_back(*(after - 1));
        }
        return;
    }
    const std::size_t before = found.size();
    for (auto at = after; at != begin && largestEnd[static_cast<std::size_t>(at - 1 - rows.rows.begin())] >= value;
         --at) {
        if (to[*(at - 1)] >= value) {
            found.push_back(*(at - 1));
        }
    }
    std::sort(found.begin() + static_cast<std::ptrdiff_t>(before), found.end());
}

JoinIndex::Matches JoinIndex::matches(const Chunk& chunk) const {
    constexpr std::size_t most = 4'000'000;
    const std::vector<ColumnPtr> columns = firstKeys(chunk);
    const KeyWords known = wordsOf(columns, chunk.rows);
    const Words values = plan.range() ? rangeWords(plan.range()->value, chunk, plan.range()->isReal) : Words();
    Matches found;
    found.first.reserve(chunk.rows);
    found.second.reserve(chunk.rows);
    found.counts.reserve(chunk.rows);
    for (std::uint32_t row = 0; row < chunk.rows; ++row) {
        const std::uint32_t group = known.areMissing[row] != 0 ? noRow : groupOf(known.words[row], columns, row);
        const std::size_t before = found.second.size();
        if (group != noRow && plan.range()) {
            addInRange(group, values[row], found.second);
        } else if (group != noRow) {
            found.second.insert(found.second.end(), rows.rows.begin() + rows.offsets[group],
                                rows.rows.begin() + rows.offsets[group + 1]);
        }
        found.counts.push_back(static_cast<std::uint32_t>(found.second.size() - before));
        found.first.resize(found.second.size(), row);
        if (found.second.size() > most) {
            throw Failure("keys", "more than " + std::to_string(most) + " rows match the rows " +
                                      std::to_string(chunk.firstRow) + " to " +
                                      std::to_string(chunk.firstRow + chunk.rows - 1) +
                                      " of the first table; the keys do not tell the rows apart");
        }
    }
    return found;
}

}  // namespace velmorak
