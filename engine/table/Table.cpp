#include <velmorak/Table.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace velmorak {

namespace {

template <typename Values>
Values keptValues(const Values& values, const std::vector<std::uint8_t>& keep, std::size_t keptRows) {
    Values kept;
    if constexpr (std::is_same_v<Values, Column::Texts>) {
        kept.reserve(keptRows);
        for (std::size_t row = 0; row < keep.size(); ++row) {
            if (keep[row] != 0) {
                kept.push_back(values[row]);
            }
        }
    } else {
        // Branch-free: every value is written, and overwritten by the next one unless it is kept.
        kept.resize(keptRows + 1);
        std::size_t next = 0;
        for (std::size_t row = 0; row < keep.size(); ++row) {
            kept[next] = values[row];
            next += keep[row] != 0 ? 1 : 0;
        }
        kept.resize(keptRows);
    }
    return kept;
}

template <typename Values>
Values keptLists(const Values& values, const std::vector<std::uint64_t>& offsets,
                 const std::vector<std::uint8_t>& keep) {
    Values kept;
    for (std::size_t row = 0; row < keep.size(); ++row) {
        if (keep[row] != 0) {
            kept.insert(kept.end(), values.begin() + static_cast<std::ptrdiff_t>(offsets[row]),
                        values.begin() + static_cast<std::ptrdiff_t>(offsets[row + 1]));
        }
    }
    return kept;
}

std::vector<std::uint64_t> keptOffsets(const std::vector<std::uint64_t>& offsets,
                                       const std::vector<std::uint8_t>& keep) {
    std::vector<std::uint64_t> kept{0};
    for (std::size_t row = 0; row < keep.size(); ++row) {
        if (keep[row] != 0) {
            kept.push_back(kept.back() + offsets[row + 1] - offsets[row]);
        }
    }
    return kept;
}

/// For fewer columns a linear search is faster.
constexpr std::size_t fewColumns = 16;

[[noreturn]] void throwDuplicate(const std::string& name) {
    throw std::invalid_argument(R"(two columns have the name ")" + name + "\"");
}

std::size_t countKept(const std::vector<std::uint8_t>& keep) {
    std::size_t count = 0;
    for (const std::uint8_t isKept : keep) {
        count += isKept != 0 ? 1 : 0;
    }
    return count;
}

}  // namespace

std::string_view nameOf(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return "real";
        case ColumnType::Integer:
            return "integer";
        case ColumnType::Boolean:
            return "boolean";
        case ColumnType::Text:
            return "text";
    }
    throw std::logic_error("unknown column type");
}

Schema::Schema(std::vector<ColumnInfo> columns) {
    all.reserve(columns.size());
    for (ColumnInfo& column : columns) {
        add(std::move(column));
    }
}

std::optional<std::size_t> Schema::find(std::string_view name) const {
    if (!slots.empty()) {
        const std::uint32_t found = slots[slotOf(name)];
        return found == 0 ? std::nullopt : std::optional<std::size_t>(found - 1);
    }
    for (std::size_t position = 0; position < all.size(); ++position) {
        if (all[position].name == name) {
            return position;
        }
    }
    return std::nullopt;
}

/// @return the slot of the column with the name, or the free one where it belongs.
std::size_t Schema::slotOf(std::string_view name) const {
    std::size_t slot = std::hash<std::string_view>{}(name) % slots.size();
    while (slots[slot] != 0 && all[slots[slot] - 1].name != name) {
        slot = (slot + 1) % slots.size();
    }
    return slot;
}

void Schema::growIndex() {
    constexpr std::size_t slotsPerColumn = 4;
    slots.assign(slotsPerColumn * all.size(), 0);
    for (std::size_t position = 0; position < all.size(); ++position) {
        slots[slotOf(all[position].name)] = static_cast<std::uint32_t>(position + 1);
    }
}

void Schema::add(ColumnInfo column) {
    if (find(column.name)) {
        throwDuplicate(column.name);
    }
    all.push_back(std::move(column));
    if (all.size() < fewColumns) {
        return;
    }
    if (slots.size() < 2 * all.size()) {
        growIndex();
    } else {
        slots[slotOf(all.back().name)] = static_cast<std::uint32_t>(all.size());
    }
}

std::size_t Column::valueCount() const {
    return std::visit([](const auto& all) { return all.size(); }, values);
}

ColumnPtr keepRows(const Column& column, const std::vector<std::uint8_t>& keep) {
    const std::size_t rows = column.isList() ? column.offsets.size() - 1 : column.valueCount();
    if (keep.size() != rows) {
        throw std::invalid_argument("a row filter must have one entry for each row");
    }
    auto kept = std::make_shared<Column>();
    const std::size_t keptRows = countKept(keep);
    std::visit(
        [&](const auto& values) {
            if (column.isList()) {
                kept->values = keptLists(values, column.offsets, keep);
            } else {
                kept->values = keptValues(values, keep, keptRows);
            }
        },
        column.values);
    if (column.isList()) {
        kept->offsets = keptOffsets(column.offsets, keep);
    }
    return kept;
}

ColumnPtr asReals(const ColumnPtr& column) {
    if (column->type() == ColumnType::Real) {
        return column;
    }
    auto reals = std::make_shared<Column>();
    reals->offsets = column->offsets;
    auto& target = reals->values.emplace<Column::Reals>();
    std::visit(
        [&](const auto& values) {
            using Values = std::decay_t<decltype(values)>;
            if constexpr (std::is_same_v<Values, Column::Texts>) {
                target.assign(values.size(), std::numeric_limits<double>::quiet_NaN());
            } else {
                for (const auto value : values) {
                    target.push_back(static_cast<double>(value));
                }
            }
        },
        column->values);
    return reals;
}

}  // namespace velmorak
