#pragma once

#include <velmorak/Kind.h>
#include <velmorak/short/Constant.h>
#include <velmorak/short/ExpressionArgument.h>
#include <velmorak/short/Signature.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// One parameter of a function of rows. Cursor gives its value in each row of a chunk.
template <typename T>
class RowArgument;

/// The values of a chunk as an array that is kept for as long as the cursor.
template <typename T, typename Stored, const std::vector<Stored>& (Column::*values)() const>
class ArrayCursor {
public:
    explicit ArrayCursor(ColumnPtr column) : column(std::move(column)), data(((*this->column).*values)().data()) {}
    T operator[](std::size_t row) const { return static_cast<T>(data[row]); }

private:
    ColumnPtr column;
    const Stored* data;
};

template <>
class RowArgument<double> : public ExpressionArgument<ColumnType::Real, false> {
public:
    using ExpressionArgument::ExpressionArgument;
    using Cursor = ArrayCursor<double, double, &Column::reals>;
    Cursor cursor(const Chunk& chunk) const { return Cursor(valuesIn(chunk)); }
};

template <>
class RowArgument<std::int64_t> : public ExpressionArgument<ColumnType::Integer, false> {
public:
    using ExpressionArgument::ExpressionArgument;
    using Cursor = ArrayCursor<std::int64_t, std::int64_t, &Column::integers>;
    Cursor cursor(const Chunk& chunk) const { return Cursor(valuesIn(chunk)); }
};

template <>
class RowArgument<bool> : public ExpressionArgument<ColumnType::Boolean, false> {
public:
    using ExpressionArgument::ExpressionArgument;
    using Cursor = ArrayCursor<bool, std::uint8_t, &Column::booleans>;
    Cursor cursor(const Chunk& chunk) const { return Cursor(valuesIn(chunk)); }
};

template <>
class RowArgument<std::string_view> : public ExpressionArgument<ColumnType::Text, false> {
public:
    using ExpressionArgument::ExpressionArgument;
    using Cursor = ArrayCursor<std::string_view, std::string, &Column::texts>;
    Cursor cursor(const Chunk& chunk) const { return Cursor(valuesIn(chunk)); }
};

/// The list of each row.
template <>
class RowArgument<std::span<const double>> : public ExpressionArgument<ColumnType::Real, true> {
public:
    using ExpressionArgument::ExpressionArgument;
    class Cursor {
    public:
        explicit Cursor(ColumnPtr column) : column(std::move(column)) {}
        std::span<const double> operator[](std::size_t row) const {
            const std::uint64_t begin = column->offsets[row];
            return {column->reals().data() + begin, static_cast<std::size_t>(column->offsets[row + 1] - begin)};
        }

    private:
        ColumnPtr column;
    };
    Cursor cursor(const Chunk& chunk) const { return Cursor(valuesIn(chunk)); }
};

template <typename T>
class RowArgument<Constant<T>> {
public:
    static constexpr bool isExpression = false;
    static InputSpec input(const InputDescription& about) { return constantInput<T>(about); }

    RowArgument(const std::string& input, const velmorak::Arguments& arguments, const Schema& /*schema*/)
        : value(constantOf<T>(arguments, input)) {}
    void markColumns(std::vector<bool>& /*needed*/) const {}

    class Cursor {
    public:
        explicit Cursor(const Constant<T>& value) : value(&value) {}
        const Constant<T>& operator[](std::size_t /*row*/) const { return *value; }

    private:
        const Constant<T>* value;
    };
    Cursor cursor(const Chunk& /*chunk*/) const { return Cursor(value); }

private:
    Constant<T> value;
};

template <typename T>
class RowArgument {
    static_assert(isNever<T>,
                  "a parameter for each row is a double, std::int64_t, bool, std::string_view or "
                  "std::span<const double>; one for all rows is a velmorak::Constant of a number or a std::string");
};

}  // namespace shortkinds

}  // namespace velmorak
