#include "shared/RowGather.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace velmorak {

namespace {

template <typename Values>
auto missingOf() {
    if constexpr (std::is_same_v<Values, Column::Reals>) {
        return std::numeric_limits<double>::quiet_NaN();
    } else {
        return typename Values::value_type{};
    }
}

template <typename Values>
Values gathered(const Values& values, const std::vector<std::uint32_t>& rows) {
    Values chosen;
    chosen.reserve(rows.size());
    for (const std::uint32_t row : rows) {
        chosen.push_back(row == noRow ? missingOf<Values>() : values[row]);
    }
    return chosen;
}

template <typename Values>
Column gatheredLists(const Values& values, const std::vector<std::uint64_t>& offsets,
                     const std::vector<std::uint32_t>& rows) {
    Values chosen;
    Column column{.values = {}, .offsets = {0}};
    column.offsets.reserve(rows.size() + 1);
    for (const std::uint32_t row : rows) {
        if (row != noRow) {
            chosen.insert(chosen.end(), values.begin() + static_cast<std::ptrdiff_t>(offsets[row]),
                          values.begin() + static_cast<std::ptrdiff_t>(offsets[row + 1]));
        }
        column.offsets.push_back(chosen.size());
    }
    column.values = std::move(chosen);
    return column;
}

}  // namespace

ColumnPtr gatherRows(const Column& column, const std::vector<std::uint32_t>& rows) {
    return std::visit(
        [&](const auto& values) {
            return std::make_shared<const Column>(column.isList() ? gatheredLists(values, column.offsets, rows)
                                                                  : Column{gathered(values, rows), {}});
        },
        column.values);
}

void appendRows(Column& target, const Column& more) {
    const std::uint64_t before = target.valueCount();
    std::visit(
        [&]<typename Values>(Values& values) {
            const auto& others = std::get<Values>(more.values);
            values.insert(values.end(), others.begin(), others.end());
        },
        target.values);
    for (std::size_t row = 1; row < more.offsets.size(); ++row) {
        target.offsets.push_back(before + more.offsets[row]);
    }
}

}  // namespace velmorak
