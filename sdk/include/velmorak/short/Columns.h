#pragma once

#include <velmorak/Table.h>
#include <velmorak/short/Describe.h>
#include <velmorak/short/Signature.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace velmorak::shortkinds {

/// How a value of an author's function is stored in a column.
template <typename T>
struct StoredAs {
    static_assert(std::is_arithmetic_v<T> || std::is_same_v<T, std::string> || std::is_same_v<T, std::vector<double>>,
                  "a column takes numbers, bool, std::string, or a std::vector<double> for a list in each row");
    using Type = std::conditional_t<std::is_same_v<T, bool>, std::uint8_t,
                                    std::conditional_t<std::is_integral_v<T>, std::int64_t,
                                                       std::conditional_t<std::is_floating_point_v<T>, double, T>>>;
    static constexpr ColumnType columnType = std::is_same_v<T, bool>          ? ColumnType::Boolean
                                             : std::is_integral_v<T>          ? ColumnType::Integer
                                             : std::is_same_v<T, std::string> ? ColumnType::Text
                                                                              : ColumnType::Real;
    static constexpr bool isList = std::is_same_v<T, std::vector<double>>;
};

/// A column that is being made, of plain values.
template <typename T>
class ColumnMaker {
public:
    explicit ColumnMaker(std::size_t rows) : values(rows), data(values.data()) {}
    void set(std::size_t row, T&& value) { data[row] = static_cast<Stored>(std::move(value)); }
    ColumnPtr finish(std::size_t rows) && {
        values.resize(rows);
        return std::make_shared<Column>(Column{std::move(values), {}});
    }

private:
    using Stored = typename StoredAs<T>::Type;
    std::vector<Stored> values;
    Stored* data;
};

/// A column of lists. Rows come in order.
template <>
class ColumnMaker<std::vector<double>> {
public:
    explicit ColumnMaker(std::size_t rows) { offsets.reserve(rows + 1); }
    void set(std::size_t /*row*/, std::vector<double>&& list) {
        values.insert(values.end(), list.begin(), list.end());
        offsets.push_back(values.size());
    }
    ColumnPtr finish(std::size_t /*rows*/) && {
        return std::make_shared<Column>(Column{std::move(values), std::move(offsets)});
    }

private:
    std::vector<double> values;
    std::vector<std::uint64_t> offsets{0};
};

/// The columns for the values that a function returns for each row.
template <typename Types>
class ColumnMakers;
template <typename... Each>
class ColumnMakers<std::tuple<Each...>> {
public:
    static constexpr std::size_t count = sizeof...(Each);

    static void addTo(Schema& schema, const std::vector<ColumnDescription>& about) {
        constexpr ColumnType types[] = {StoredAs<Each>::columnType...};
        constexpr bool areLists[] = {StoredAs<Each>::isList...};
        for (std::size_t i = 0; i < count; ++i) {
            schema.add({.name = about[i].name, .type = types[i], .isList = areLists[i], .unit = about[i].unit});
        }
    }

    explicit ColumnMakers(std::size_t rows) : makers(ColumnMaker<Each>(rows)...) {}

    void set(std::size_t row, std::tuple<Each...>&& values) {
        forEachPosition<count>(
            [&](auto position) { std::get<position>(makers).set(row, std::move(std::get<position>(values))); });
    }
    void appendTo(std::vector<ColumnPtr>& columns, std::size_t rows) && {
        forEachPosition<count>(
            [&](auto position) { columns.push_back(std::move(std::get<position>(makers)).finish(rows)); });
    }

private:
    std::tuple<ColumnMaker<Each>...> makers;
};

template <typename Columns>
Schema schemaOf(const std::vector<ColumnDescription>& about) {
    Schema schema;
    Columns::addTo(schema, about);
    return schema;
}

}  // namespace velmorak::shortkinds
