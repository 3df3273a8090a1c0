#include "columnar/Columns.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

namespace velmorak::columnar {
namespace {

/// The representation of a missing value.
template <typename Value>
Value missingValue() {
    if constexpr (std::is_same_v<Value, double>) {
        return std::numeric_limits<double>::quiet_NaN();
    } else if constexpr (std::is_integral_v<Value>) {
        throw Failure("a value is missing where the file says that there is none");
    } else {
        return {};
    }
}

template <typename Values>
Values spreadValues(Values&& dense, const std::vector<std::uint8_t>& isPresent) {
    using Value = typename std::remove_reference_t<Values>::value_type;
    std::remove_reference_t<Values> target(isPresent.size(), missingValue<Value>());
    std::size_t next = 0;
    for (std::size_t i = 0; i < target.size(); ++i) {
        if (isPresent[i] != 0) {
            target[i] = std::move(dense.at(next));
            ++next;
        }
    }
    return target;
}

}  // namespace

Column emptyColumn(ColumnType type, bool isList) {
    Column column;
    switch (type) {
        case ColumnType::Real:
            column.values = Column::Reals();
            break;
        case ColumnType::Integer:
            column.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans();
            break;
        case ColumnType::Text:
            column.values = Column::Texts();
            break;
    }
    if (isList) {
        column.offsets.push_back(0);
    }
    return column;
}

void appendValues(const Column& source, std::size_t first, std::size_t last, Column& target) {
    std::visit(
        [&](auto& values) {
            const auto& from = std::get<std::remove_reference_t<decltype(values)>>(source.values);
            values.insert(values.end(), from.begin() + static_cast<std::ptrdiff_t>(first),
                          from.begin() + static_cast<std::ptrdiff_t>(last));
        },
        target.values);
}

void appendLists(const Column& source, std::size_t first, std::size_t last, Column& target) {
    const std::uint64_t begin = source.offsets[first];
    const std::uint64_t before = target.offsets.back();
    appendValues(source, begin, source.offsets[last], target);
    for (std::size_t row = first + 1; row <= last; ++row) {
        target.offsets.push_back(before + source.offsets[row] - begin);
    }
}

Column spread(Column&& dense, const std::vector<std::uint8_t>& isPresent) {
    if (dense.valueCount() == isPresent.size()) {
        return std::move(dense);
    }
    Column target;
    std::visit([&](auto& values) { target.values = spreadValues(std::move(values), isPresent); }, dense.values);
    return target;
}

void clearMissing(const std::vector<std::uint8_t>& isPresent, Column& column) {
    if (std::find(isPresent.begin(), isPresent.end(), 0) == isPresent.end()) {
        return;
    }
    std::visit(
        [&](auto& values) {
            const auto missing = missingValue<typename std::remove_reference_t<decltype(values)>::value_type>();
            for (std::size_t i = 0; i < isPresent.size(); ++i) {
                if (isPresent[i] == 0) {
                    values[i] = missing;
                }
            }
        },
        column.values);
}

void checkListValues(std::uint64_t count, std::uint64_t bytes) {
    constexpr std::uint64_t always = std::uint64_t{1} << 27U;
    constexpr std::uint64_t most = std::uint64_t{1} << 31U;
    constexpr std::uint64_t mostPerByte = 64;
    if (count > most || (count > always && count / mostPerByte > bytes)) {
        throw Failure(
            fmt::format("the lists of a chunk of rows have {} values in {} bytes, which are too many", count, bytes));
    }
}

std::string listOf(const std::vector<std::string>& names) {
    constexpr std::size_t maxListed = 20;
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), maxListed); ++i) {
        list += (i == 0 ? "\"" : ", \"") + names[i] + "\"";
    }
    return names.size() > maxListed ? list + " and " + std::to_string(names.size() - maxListed) + " more" : list;
}

}  // namespace velmorak::columnar
