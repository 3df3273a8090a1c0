#include "shared/RowGroups.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>
#include <unordered_map>

namespace velmorak {

namespace {

using Words = std::vector<std::uint64_t>;

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

/// Adds rows one after the other.
class Grouping {
public:
    explicit Grouping(std::size_t rows) { made.ofRow.reserve(rows); }

    /// @param group of the row's word; none for a new one, and then set.
    void add(std::uint32_t& group);
    RowGroups take() { return std::move(made); }

private:
    RowGroups made;
};

void Grouping::add(std::uint32_t& group) {
    if (group == none) {
        group = static_cast<std::uint32_t>(made.firstRow.size());
        made.firstRow.push_back(static_cast<std::uint32_t>(made.ofRow.size()));
    }
    made.ofRow.push_back(group);
}

/// Groups by word in an open-addressing hash table that is at most half full.
class WordTable {
public:
    std::uint32_t& groupOf(std::uint64_t word);

private:
    struct Slot {
        std::uint64_t word = 0;
        std::uint32_t group = none;
    };

    Slot& slotOf(std::uint64_t word);
    void grow();

    std::vector<Slot> slots = std::vector<Slot>(256);
    std::size_t used = 0;
};

std::uint32_t& WordTable::groupOf(std::uint64_t word) {
    if (2 * (used + 1) > slots.size()) {
        grow();
    }
    Slot& slot = slotOf(word);
    if (slot.group == none) {
        slot.word = word;
        ++used;
    }
    return slot.group;
}

WordTable::Slot& WordTable::slotOf(std::uint64_t word) {
    std::size_t at = mixed(word) & (slots.size() - 1);
    while (slots[at].group != none && slots[at].word != word) {
        at = (at + 1) & (slots.size() - 1);
    }
    return slots[at];
}

void WordTable::grow() {
    std::vector<Slot> former(2 * slots.size());
    former.swap(slots);
    for (const Slot& slot : former) {
        if (slot.group != none) {
            slotOf(slot.word) = slot;
        }
    }
}

RowGroups groupWords(const Words& words) {
    constexpr std::uint64_t roomy = 4;
    Grouping grouping(words.size());
    const auto isLess = [](std::uint64_t a, std::uint64_t b) {
        return static_cast<std::int64_t>(a) < static_cast<std::int64_t>(b);
    };
    const auto [least, most] = std::minmax_element(words.begin(), words.end(), isLess);
    if (least != words.end() && *most - *least < roomy * words.size()) {
        std::vector<std::uint32_t> groups(*most - *least + 1, none);
        for (const std::uint64_t word : words) {
            grouping.add(groups[word - *least]);
        }
        return grouping.take();
    }
    WordTable table;
    for (const std::uint64_t word : words) {
        grouping.add(table.groupOf(word));
    }
    return grouping.take();
}

Words wordsOf(const Column::Texts& texts) {
    std::unordered_map<std::string_view, std::uint64_t> numbers;
    Words words;
    words.reserve(texts.size());
    for (const std::string& text : texts) {
        words.push_back(numbers.emplace(text, numbers.size()).first->second);
    }
    return words;
}

Words wordsOf(const Column& column) {
    if (column.type() == ColumnType::Text) {
        return wordsOf(column.texts());
    }
    Words words(column.valueCount());
    if (column.type() == ColumnType::Real) {
        std::transform(column.reals().begin(), column.reals().end(), words.begin(), [](double x) { return wordOf(x); });
    } else if (column.type() == ColumnType::Integer) {
        std::transform(column.integers().begin(), column.integers().end(), words.begin(),
                       [](std::int64_t x) { return static_cast<std::uint64_t>(x); });
    } else {
        std::copy(column.booleans().begin(), column.booleans().end(), words.begin());
    }
    return words;
}

}  // namespace

std::uint64_t wordOf(double number) {
    if (number == 0.0) {
        return 0;
    }
    return std::bit_cast<std::uint64_t>(std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number);
}

RowGroups groupRows(const std::vector<ColumnPtr>& keys, std::size_t rows) {
    RowGroups groups{std::vector<std::uint32_t>(rows, 0), std::vector<std::uint32_t>(rows == 0 ? 0 : 1, 0)};
    for (std::size_t key = 0; key < keys.size(); ++key) {
        Words words = wordsOf(*keys[key]);
        if (key > 0) {
            const RowGroups ofKey = groupWords(words);
            for (std::size_t row = 0; row < rows; ++row) {
                words[row] = (std::uint64_t{groups.ofRow[row]} << 32U) | ofKey.ofRow[row];
            }
        }
        groups = groupWords(words);
    }
    return groups;
}

RowsByGroup rowsByGroup(const RowGroups& groups) {
    RowsByGroup sorted{std::vector<std::uint32_t>(groups.ofRow.size()),
                       std::vector<std::uint32_t>(groups.size() + 1, 0)};
    for (const std::uint32_t group : groups.ofRow) {
        ++sorted.offsets[group + 1];
    }
    for (std::size_t group = 0; group < groups.size(); ++group) {
        sorted.offsets[group + 1] += sorted.offsets[group];
    }
    std::vector<std::uint32_t> next = sorted.offsets;
    for (std::size_t row = 0; row < groups.ofRow.size(); ++row) {
        sorted.rows[next[groups.ofRow[row]]++] = static_cast<std::uint32_t>(row);
    }
    return sorted;
}

}  // namespace velmorak
