#include "shared/SortedRows.h"

#include <velmorak/Ahead.h>
#include <velmorak/ChunkSize.h>
#include <velmorak/Failure.h>

#include <algorithm>
#include <functional>
#include <type_traits>
#include <utility>

namespace velmorak {

namespace {

using Order = std::vector<std::uint32_t>;

/// The rows by their keys; rows with equal keys stay in their order, because the row decides then.
Order orderOf(const RowKeys& keys) {
    std::vector<std::pair<std::uint64_t, std::uint32_t>> entries(keys.rows());
    for (std::size_t row = 0; row < entries.size(); ++row) {
        entries[row] = {keys.prefix(row), static_cast<std::uint32_t>(row)};
    }
    if (keys.isShort()) {
        std::sort(entries.begin(), entries.end());
    } else {
        std::sort(entries.begin(), entries.end(), [&keys](const auto& one, const auto& other) {
            const auto order = RowKeys::compare(keys, one.second, keys, other.second);
            return std::is_neq(order) ? std::is_lt(order) : one.second < other.second;
        });
    }
    Order order(entries.size());
    std::transform(entries.begin(), entries.end(), order.begin(), [](const auto& entry) { return entry.second; });
    return order;
}

/// Reads the values of a column of several parts.
template <typename Values>
std::vector<const Values*> valuesOf(const std::vector<SortedRowsPtr>& parts, std::size_t column) {
    std::vector<const Values*> values;
    values.reserve(parts.size());
    for (const SortedRowsPtr& part : parts) {
        values.push_back(part ? &std::get<Values>(part->columns[column]->values) : nullptr);
    }
    return values;
}

template <typename Values>
Column gatheredValues(const std::vector<SortedRowsPtr>& parts, std::size_t column, std::span<const RowAt> rows) {
    const std::vector<const Values*> from = valuesOf<Values>(parts, column);
    Values values;
    values.reserve(rows.size());
    for (const RowAt& at : rows) {
        values.push_back((*from[at.part])[at.row]);
    }
    return {std::move(values), {}};
}

template <typename Values>
Column gatheredLists(const std::vector<SortedRowsPtr>& parts, std::size_t column, std::span<const RowAt> rows) {
    const std::vector<const Values*> from = valuesOf<Values>(parts, column);
    Values values;
    std::vector<std::uint64_t> offsets{0};
    offsets.reserve(rows.size() + 1);
    for (const RowAt& at : rows) {
        const std::vector<std::uint64_t>& lists = parts[at.part]->columns[column]->offsets;
        values.insert(values.end(), from[at.part]->begin() + static_cast<std::ptrdiff_t>(lists[at.row]),
                      from[at.part]->begin() + static_cast<std::ptrdiff_t>(lists[at.row + 1]));
        offsets.push_back(values.size());
    }
    return {std::move(values), std::move(offsets)};
}

/// Of the first part that is there; all have the same columns.
const Column& example(const std::vector<SortedRowsPtr>& parts, std::size_t column) {
    const auto found =
        std::find_if(parts.begin(), parts.end(), [](const SortedRowsPtr& part) { return part != nullptr; });
    return *(*found)->columns[column];
}

class Merging {
public:
    Merging(const std::vector<SortedRowsPtr>& parts, const std::function<bool()>& isStopping);

    std::vector<RowAt> all();

private:
    using Run = std::vector<RowAt>;

    Run runOf(std::uint32_t part) const;
    Run merged(Run& one, Run& other) const;
    void poll() const;

    const std::vector<SortedRowsPtr>& parts;
    const std::function<bool()>& isStopping;
};

Merging::Merging(const std::vector<SortedRowsPtr>& parts, const std::function<bool()>& isStopping)
    : parts(parts), isStopping(isStopping) {}

void Merging::poll() const {
    if (isStopping && isStopping()) {
        throw Stopped();
    }
}

Merging::Run Merging::runOf(std::uint32_t part) const {
    const RowKeys& keys = parts[part]->keys;
    Run run(parts[part]->rows);
    for (std::uint32_t row = 0; row < run.size(); ++row) {
        run[row] = {keys.prefix(row), part, row};
    }
    return run;
}

/// Of two equal rows that of the first run comes first. Frees both runs.
Merging::Run Merging::merged(Run& one, Run& other) const {
    poll();
    Run both(one.size() + other.size());
    if (parts.front()->keys.isShort()) {
        std::merge(one.begin(), one.end(), other.begin(), other.end(), both.begin(),
                   [](const RowAt& a, const RowAt& b) { return a.prefix < b.prefix; });
    } else {
        std::merge(one.begin(), one.end(), other.begin(), other.end(), both.begin(),
                   [this](const RowAt& a, const RowAt& b) {
                       return std::is_lt(RowKeys::compare(parts[a.part]->keys, a.row, parts[b.part]->keys, b.row));
                   });
    }
    one = {};
    other = {};
    return both;
}

/// Tasks that use what the caller owns: none is at work any more when this is destroyed, whatever was thrown.
template <typename Product>
class OwnTasks {
public:
    OwnTasks() = default;
    ~OwnTasks() {
        for (const auto& task : tasks) {
            task->cancel();
        }
    }
    OwnTasks(const OwnTasks&) = delete;
    OwnTasks& operator=(const OwnTasks&) = delete;

    void begin(std::function<Product()> maker) { tasks.push_back(Ahead<Product>::begin(std::move(maker))); }
    /// In the order in which they were begun.
    std::vector<Product> takeAll() {
        std::vector<Product> all;
        for (const auto& task : tasks) {
            all.push_back(task->take());
        }
        return all;
    }

private:
    std::vector<std::shared_ptr<Ahead<Product>>> tasks;
};

/// Merges neighbours, level by level.
std::vector<RowAt> Merging::all() {
    std::vector<Run> runs;
    runs.reserve(parts.size());
    for (std::uint32_t part = 0; part < parts.size(); ++part) {
        runs.push_back(runOf(part));
    }
    while (runs.size() > 1) {
        OwnTasks<Run> tasks;
        for (std::size_t i = 0; i + 1 < runs.size(); i += 2) {
            tasks.begin([this, &one = runs[i], &other = runs[i + 1]] { return merged(one, other); });
        }
        std::vector<Run> next = tasks.takeAll();
        if (runs.size() % 2 == 1) {
            next.push_back(std::move(runs.back()));
        }
        runs = std::move(next);
    }
    return runs.empty() ? Run() : std::move(runs.front());
}

}  // namespace

std::size_t SortedRows::bytesInMemory() const {
    std::size_t bytes = keys.bytesInMemory() + 2 * rows * sizeof(RowAt);
    for (const ColumnPtr& column : columns) {
        bytes += bytesIn(*column);
    }
    return bytes;
}

SortedRows sortedRows(const Chunk& chunk, const KeyMaker& keys) {
    auto unsorted = std::make_shared<SortedRows>(SortedRows{chunk.columns, keys.keysOf(chunk), chunk.rows});
    const Order order = orderOf(unsorted->keys);
    std::vector<RowAt> places(order.size());
    std::transform(order.begin(), order.end(), places.begin(),
                   [](std::uint32_t row) { return RowAt{.prefix = 0, .part = 0, .row = row}; });
    SortedRows sorted{{}, unsorted->keys.inOrder(order), chunk.rows};
    for (std::size_t column = 0; column < chunk.columns.size(); ++column) {
        sorted.columns.push_back(gathered({unsorted}, column, places));
    }
    return sorted;
}

std::vector<RowAt> mergedRows(const std::vector<SortedRowsPtr>& parts, const std::function<bool()>& isStopping) {
    return Merging(parts, isStopping).all();
}

ColumnPtr gathered(const std::vector<SortedRowsPtr>& parts, std::size_t column, std::span<const RowAt> rows) {
    const Column& first = example(parts, column);
    return std::visit(
        [&](const auto& values) {
            using Values = std::decay_t<decltype(values)>;
            return std::make_shared<const Column>(first.isList() ? gatheredLists<Values>(parts, column, rows)
                                                                 : gatheredValues<Values>(parts, column, rows));
        },
        first.values);
}

namespace {

/// @return the bytes of some values; of texts also those of their characters.
template <typename Values>
std::size_t bytesOfValues(const Values& values, std::size_t first, std::size_t end) {
    std::size_t bytes = (end - first) * sizeof(typename Values::value_type);
    if constexpr (std::is_same_v<Values, Column::Texts>) {
        for (std::size_t i = first; i < end; ++i) {
            bytes += values[i].size();
        }
    }
    return bytes;
}

}  // namespace

std::size_t bytesOfRow(const SortedRows& part, std::size_t row) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : part.columns) {
        const std::size_t first = column->isList() ? column->offsets[row] : row;
        const std::size_t end = column->isList() ? column->offsets[row + 1] : row + 1;
        bytes += std::visit([&](const auto& values) { return bytesOfValues(values, first, end); }, column->values);
    }
    return bytes;
}

}  // namespace velmorak
