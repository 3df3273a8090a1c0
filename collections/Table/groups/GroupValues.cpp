#include "Table/groups/GroupValues.h"

#include "Table/groups/Aggregates.h"
#include "Table/groups/NumberGroups.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmorak {

namespace {

/// The texts of groups that are not empty.
class TextGroups : public GroupValues {
public:
    void fill(const Column& values, const RowsByGroup& rows) override;
    void merge(const GroupValues& other, const std::vector<std::uint32_t>& targets) override;
    void store(const std::vector<std::uint32_t>& groups, std::vector<ColumnPtr>& columns) const override;
    void load(std::span<const ColumnPtr>& columns, std::size_t groups) override;
    std::size_t bytes() const override;
    std::int64_t missing() const override;
    void finish(Aggregate function, const std::vector<std::uint32_t>& groups,
                std::vector<ColumnPtr>& columns) const override;

private:
    struct Texts {
        std::int64_t count = 0;
        std::int64_t missing = 0;
        std::string first{};
        std::string last{};
    };

    template <typename Value>
    ColumnPtr columnOf(const std::vector<std::uint32_t>& groups, Value Texts::*member) const;

    std::vector<Texts> all;  ///< By group.
    std::size_t textBytes = 0;
};

void TextGroups::fill(const Column& values, const RowsByGroup& rows) {
    all.resize(rows.groups());
    for (std::size_t group = 0; group < rows.groups(); ++group) {
        Texts& texts = all[group];
        for (std::uint32_t i = rows.offsets[group]; i < rows.offsets[group + 1]; ++i) {
            const std::string& text = values.texts()[rows.rows[i]];
            if (text.empty()) {
                ++texts.missing;
                continue;
            }
            texts.first = texts.count == 0 ? text : texts.first;
            texts.last = text;
            ++texts.count;
        }
        textBytes += texts.first.size() + texts.last.size();
    }
}

void TextGroups::merge(const GroupValues& other, const std::vector<std::uint32_t>& targets) {
    const auto& more = static_cast<const TextGroups&>(other);
    for (std::size_t group = 0; group < targets.size(); ++group) {
        all.resize(std::max<std::size_t>(all.size(), targets[group] + 1));
        Texts& texts = all[targets[group]];
        const Texts& added = more.all[group];
        texts.missing += added.missing;
        if (added.count > 0) {
            textBytes -= texts.first.size() + texts.last.size();
            texts.first = texts.count == 0 ? added.first : texts.first;
            texts.last = added.last;
            texts.count += added.count;
            textBytes += texts.first.size() + texts.last.size();
        }
    }
}

template <typename Value>
ColumnPtr TextGroups::columnOf(const std::vector<std::uint32_t>& groups, Value Texts::*member) const {
    std::vector<Value> values;
    values.reserve(groups.size());
    for (const std::uint32_t group : groups) {
        values.push_back(all[group].*member);
    }
    return std::make_shared<const Column>(Column{std::move(values), {}});
}

void TextGroups::store(const std::vector<std::uint32_t>& groups, std::vector<ColumnPtr>& columns) const {
    for (const auto member : {&Texts::count, &Texts::missing}) {
        columns.push_back(columnOf(groups, member));
    }
    for (const auto member : {&Texts::first, &Texts::last}) {
        columns.push_back(columnOf(groups, member));
    }
}

void TextGroups::load(std::span<const ColumnPtr>& columns, std::size_t groups) {
    constexpr std::size_t stored = 4;
    const auto isOf = [&](const ColumnPtr& column, ColumnType type) {
        return column->type() == type && !column->isList() && column->valueCount() == groups;
    };
    if (columns.size() < stored || !isOf(columns[0], ColumnType::Integer) || !isOf(columns[1], ColumnType::Integer) ||
        !isOf(columns[2], ColumnType::Text) || !isOf(columns[3], ColumnType::Text)) {
        throw std::invalid_argument("the columns are not those of the texts of groups");
    }
    for (std::size_t group = 0; group < groups; ++group) {
        all.push_back({columns[0]->integers()[group], columns[1]->integers()[group], columns[2]->texts()[group],
                       columns[3]->texts()[group]});
        textBytes += all.back().first.size() + all.back().last.size();
        if (all.back().count < 0 || all.back().missing < 0) {
            throw std::invalid_argument("a group has a negative number of texts");
        }
    }
    columns = columns.subspan(stored);
}

std::size_t TextGroups::bytes() const {
    return all.size() * sizeof(Texts) + textBytes;
}

std::int64_t TextGroups::missing() const {
    std::int64_t sum = 0;
    for (const Texts& texts : all) {
        sum += texts.missing;
    }
    return sum;
}

void TextGroups::finish(Aggregate function, const std::vector<std::uint32_t>& groups,
                        std::vector<ColumnPtr>& columns) const {
    if (function == Aggregate::Count) {
        columns.push_back(columnOf(groups, &Texts::count));
    } else {
        columns.push_back(columnOf(groups, function == Aggregate::First ? &Texts::first : &Texts::last));
    }
}

}  // namespace

std::unique_ptr<GroupValues> makeGroupValues(ColumnType type, bool isKept) {
    if (type == ColumnType::Text) {
        return std::make_unique<TextGroups>();
    }
    if (type == ColumnType::Real) {
        return std::make_unique<NumberGroups<double>>(isKept);
    }
    return std::make_unique<NumberGroups<std::int64_t>>(isKept);
}

}  // namespace velmorak
