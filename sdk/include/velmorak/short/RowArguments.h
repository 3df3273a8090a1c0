#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Describe.h>
#include <velmorak/short/Signature.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace velmorak {

/// Parameter of a short kind that has one value for all rows: an input for a number or a text, not an expression of
/// columns. Converts to the value.
template <typename T>
class Constant {
public:
    Constant() = default;
    explicit Constant(T value) : content(std::move(value)) {}
    operator const T&() const { return content; }
    const T& value() const { return content; }

private:
    T content{};
};

namespace shortkinds {

/// @return the number or text of an input as the type that the author's function takes.
template <typename T>
T constantOf(const velmorak::Arguments& arguments, const std::string& input) {
    if constexpr (std::is_same_v<T, std::string>) {
        return arguments.text(input);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(arguments.number(input));
    } else {
        static_assert(std::is_integral_v<T>, "a constant is a floating-point number, an integer or a std::string");
        return static_cast<T>(arguments.integer(input));
    }
}

template <typename T>
InputSpec constantInput(const InputDescription& about) {
    constexpr bool isText = std::is_same_v<T, std::string>;
    InputSpec input{.name = about.name, .description = about.description, .value = about.value};
    input.type = !isText ? ValueType::Number : about.choices.empty() ? ValueType::Text : ValueType::Choice;
    input.choices = about.choices;
    if constexpr (!isText) {
        input.value = about.value.empty() ? "0" : about.value;
        input.minimum = about.minimum;
        input.maximum = about.maximum;
        input.isInteger = std::is_integral_v<T>;
    }
    return input;
}

inline InputSpec expressionInput(const InputDescription& about) {
    return {.name = about.name,
            .description = about.description,
            .type = ValueType::Text,
            .value = about.value.empty() ? about.name : about.value};
}

/// One parameter of a function of rows. Cursor gives its value in each row of a chunk.
template <typename T>
class RowArgument;

/// What is common to parameters that are expressions of columns.
template <ColumnType type, bool isList>
class ExpressionArgument {
public:
    static constexpr bool isExpression = true;
    static InputSpec input(const InputDescription& about) { return expressionInput(about); }

    ExpressionArgument(const std::string& input, const velmorak::Arguments& arguments, const Schema& schema)
        : expression(textOf(input, arguments), schema) {
        if (isList != expression.isList()) {
            throw Failure(input, isList ? "expected a list in each row" : "expected one value in each row, not a list");
        }
        constexpr bool isReal = type == ColumnType::Real;
        if (isReal ? expression.type() == ColumnType::Text : expression.type() != type) {
            throw Failure(input, "expected " + std::string(nameOf(type)) + " values, but the expression is " +
                                     std::string(nameOf(expression.type())));
        }
    }
    void markColumns(std::vector<bool>& needed) const {
        for (const std::size_t column : expression.usedColumns()) {
            needed[column] = true;
        }
    }

protected:
    ColumnPtr valuesIn(const Chunk& chunk) const {
        ColumnPtr values = expression.evaluate(chunk);
        return type == ColumnType::Real ? asReals(values) : values;
    }

private:
    static const std::string& textOf(const std::string& input, const velmorak::Arguments& arguments) {
        if (arguments.text(input).empty()) {
            throw Failure(input, "the expression is empty");
        }
        return arguments.text(input);
    }

    Expression expression;
};

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
        explicit Cursor(ColumnPtr lists) : column(std::move(lists)) {}
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

/// All parameters of a function of rows.
template <typename Tuple>
class RowArguments;
template <typename... Each>
class RowArguments<std::tuple<Each...>> {
public:
    static constexpr std::size_t count = sizeof...(Each);

    RowArguments(const std::vector<InputDescription>& inputs, const velmorak::Arguments& arguments,
                 const Schema& schema)
        : RowArguments(inputs, arguments, schema, std::index_sequence_for<Each...>()) {}

    static void addInputs(const std::vector<InputDescription>& about, std::vector<InputSpec>& inputs) {
        forEachPosition<count>([&](auto position) {
            inputs.push_back(RowArgument<std::tuple_element_t<position, std::tuple<Each...>>>::input(about[position]));
        });
    }
    static std::string refusal(const std::vector<InputDescription>& about, const std::string& input,
                               const std::string& value) {
        std::string reason;
        forEachPosition<count>([&](auto position) {
            if (RowArgument<std::tuple_element_t<position, std::tuple<Each...>>>::isExpression &&
                about[position].name == input) {
                reason = expressionRefusal(value);
            }
        });
        return reason;
    }
    void markColumns(std::vector<bool>& needed) const {
        std::apply([&](const auto&... each) { (each.markColumns(needed), ...); }, parameters);
    }
    /// Calls body(row, parameters ...) for each row.
    template <typename Body>
    void forEachRow(const Chunk& chunk, const Body& body) const {
        const auto cursors =
            std::apply([&](const auto&... each) { return std::make_tuple(each.cursor(chunk)...); }, parameters);
        std::apply(
            [&](const auto&... cursor) {
                for (std::size_t row = 0; row < chunk.rows; ++row) {
                    body(row, cursor[row]...);
                }
            },
            cursors);
    }

private:
    template <std::size_t... positions>
    RowArguments(const std::vector<InputDescription>& inputs, const velmorak::Arguments& arguments,
                 const Schema& schema, std::index_sequence<positions...>)
        : parameters(RowArgument<Each>(inputs[positions].name, arguments, schema)...) {}

    std::tuple<RowArgument<Each>...> parameters;
};

}  // namespace shortkinds

}  // namespace velmorak
