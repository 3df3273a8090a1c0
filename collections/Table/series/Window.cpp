#include "Table/kinds.h"

#include "Table/series/SlidingSum.h"
#include "shared/AppendInputs.h"
#include "shared/RowKeys.h"

#include <velmorak/NamedNumbers.h>
#include <velmorak/OrderedRows.h>
#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>

#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace velmorak {

namespace {

constexpr double maxWindowRows = 100'000'000;
constexpr std::size_t bytesOfGroup = 256;  ///< About, beside its key and its rows.
constexpr std::size_t bytesOfRowInWindow = 24;

enum class WindowFunction { Mean, Sum, Cumulative, Difference };

WindowFunction functionOf(const std::string& choice) {
    if (choice == "mean") {
        return WindowFunction::Mean;
    }
    if (choice == "sum") {
        return WindowFunction::Sum;
    }
    return choice == "cumulative" ? WindowFunction::Cumulative : WindowFunction::Difference;
}

std::vector<InputSpec> windowInputs() {
    return {
        {.name = "table", .description = "Table, in whose order of rows the window moves.", .type = ValueType::Table},
        {.name = "function",
         .description =
             "Mean, sum: of the last rows, as many as the input rows says, with this one. Cumulative: the sum "
             "of all rows up to this one. Difference: to the row before.",
         .type = ValueType::Choice,
         .value = "mean",
         .choices = {"mean", "sum", "cumulative", "difference"}},
        {.name = "expression",
         .description = "Number in each row, for example a column. A number at an input of its own is written @name.",
         .type = ValueType::Text},
        {.name = "column",
         .description = "Name of the new column, one word. An existing column of that name is replaced.",
         .type = ValueType::Text,
         .value = "result"},
        {.name = "rows",
         .description = "Number of rows in the window of a mean or sum; the first rows have shorter windows.",
         .value = "10",
         .minimum = 1,
         .maximum = maxWindowRows,
         .isInteger = true},
        {.name = "by",
         .description =
             "Expressions, one a line or separated by semicolons: rows for which they differ have windows of "
             "their own, for example run; channel. Empty: one window for all rows.",
         .type = ValueType::Text},
        {.name = "unit", .description = "Unit of the new column, shown on axes.", .type = ValueType::Text},
    };
}

NamedNumbers numbersOf(const std::string& expression, const std::string& by) {
    std::vector<NamedNumbers::Text> texts = keyTexts("by", by);
    texts.insert(texts.begin(), {"expression", expression});
    return {std::move(texts), windowInputs()};
}

/// The state after the rows so far, for one key.
class Group {
public:
    Group(WindowFunction function, std::size_t length) : function(function), window(length) {}

    double next(double value);

private:
    WindowFunction function;
    SlidingSum window;
    double before = std::numeric_limits<double>::quiet_NaN();
    double sum = 0.0;
};

double Group::next(double value) {
    switch (function) {
        case WindowFunction::Difference:
            return value - std::exchange(before, value);
        case WindowFunction::Cumulative:
            sum += std::isnan(value) ? 0.0 : value;
            return std::isnan(value) ? value : sum;
        default:
            window.push(value);
            break;
    }
    if (std::isnan(value)) {
        return value;
    }
    return function == WindowFunction::Mean ? window.mean() : window.sum();
}

/// The windows of all keys.
class Groups {
public:
    Groups(WindowFunction function, std::size_t length, std::shared_ptr<MemoryBudget> budget);

    /// @param key empty where there is one group for all rows.
    /// @throws Failure if the windows need more memory than there is.
    Group& of(std::string key);

private:
    WindowFunction function;
    std::size_t length;
    std::unordered_map<std::string, Group> all;
    std::unique_ptr<MemoryShare> memory;
};

Groups::Groups(WindowFunction function, std::size_t length, std::shared_ptr<MemoryBudget> budget)
    : function(function), length(length), memory(std::make_unique<MemoryShare>(std::move(budget))) {}

/// The window is counted as full from the beginning, which is too much for short groups, but cannot be too little.
Group& Groups::of(std::string key) {
    if (const auto found = all.find(key); found != all.end()) {
        return found->second;
    }
    const bool hasWindow = function == WindowFunction::Mean || function == WindowFunction::Sum;
    const std::size_t bytes = bytesOfGroup + key.size() + (hasWindow ? length * bytesOfRowInWindow : 0);
    if (!memory->take(bytes)) {
        throw Failure("by", "the windows of " + std::to_string(all.size()) +
                                " keys fill the memory; set VELMORAK_MEMORY_LIMIT to more, or use fewer keys or rows");
    }
    return all.emplace(std::move(key), Group(function, length)).first->second;
}

/// The new column.
struct Target {
    std::string name;
    std::string unit;
};

class WindowOperation : public RowOperation, public OrderedRows {
public:
    WindowOperation(const Schema& schema, Expression expression, std::optional<KeyMaker> keys, Groups groups,
                    const Target& target);

    const Schema& schema() const override { return result; }
    bool countsRows() const override { return true; }
    std::shared_ptr<const void> look(const Chunk& chunk) override;
    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    Expression expression;
    std::optional<KeyMaker> keys;
    Groups groups;
    Group* single = nullptr;  ///< Of all rows, where there are no keys.
    std::size_t place;
    Schema result;
    bool isWanted = true;  ///< Somebody uses the new column.
};

WindowOperation::WindowOperation(const Schema& schema, Expression expression, std::optional<KeyMaker> keys,
                                 Groups groups, const Target& target)
    : expression(std::move(expression)),
      keys(std::move(keys)),
      groups(std::move(groups)),
      place(schema.find(target.name).value_or(schema.size())) {
    std::vector<ColumnInfo> columns = schema.columns();
    if (place == columns.size()) {
        columns.emplace_back();
    }
    columns[place] = {.name = target.name, .type = ColumnType::Real, .isList = false, .unit = target.unit};
    result = Schema(std::move(columns));
}

std::shared_ptr<const void> WindowOperation::look(const Chunk& chunk) {
    if (!isWanted) {
        return nullptr;
    }
    const ColumnPtr values = asReals(expression.evaluate(chunk));
    const RowKeys rowKeys = keys ? keys->keysOf(chunk) : RowKeys();
    if (!keys && !single) {
        single = &groups.of({});
    }
    Column::Reals results(chunk.rows);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        Group& group = keys ? groups.of(rowKeys.whole(row)) : *single;
        results[row] = group.next(values->reals()[row]);
    }
    return std::make_shared<const Column>(Column{std::move(results), {}});
}

Chunk WindowOperation::apply(const Chunk& chunk) const {
    Chunk out = chunk;
    out.columns.resize(result.size());
    out.columns[place] = std::static_pointer_cast<const Column>(chunk.owner);
    return out;
}

void WindowOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    isWanted = wanted[place];
    for (std::size_t i = 0; i < needed.size(); ++i) {
        needed[i] = i != place && wanted[i];
    }
    if (isWanted) {
        expression.markColumns(needed);
        if (keys) {
            keys->markColumns(needed);
        }
    }
}

/// Means, sums and differences over the rows before each row.
class WindowKind : public RowWise, public CountingKind {
public:
    std::string name() const override { return "Window"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

std::string textIn(const ValueTexts& values, const std::string& input) {
    const auto found = values.find(input);
    return found == values.end() ? std::string() : found->second;
}

Expression numberExpression(const std::string& text, const Schema& schema,
                            const std::map<std::string, double>& numbers) {
    if (text.empty()) {
        throw Failure("expression", "the expression is empty");
    }
    Expression expression(text, schema, numbers);
    if (expression.isList() || expression.type() == ColumnType::Text) {
        throw Failure("expression", "\"" + text + "\" is " + (expression.isList() ? "a list" : "a text") +
                                        " in each row; expected a number");
    }
    return expression;
}

}  // namespace

std::string WindowKind::summary() const {
    return "Computes running means and sums, cumulative sums, and differences to the row before.";
}

std::string WindowKind::notes() const {
    return "The rows count in their order in the table; sort the table first if it has another. A missing value (NaN) "
           "gives NaN in its row; it has a place in the windows of later rows, but the mean and the sums leave it out. "
           "The difference of the first row of each key is NaN, as is that of a row whose value, or the value before, "
           "is "
           "missing.\n\n"
           "Sums over a window are not updated by subtraction, so that the rounding errors of former rows do not "
           "accumulate.";
}

Ports WindowKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = windowInputs();
    appendInputs(ports.inputs, numbersOf(textIn(values, "expression"), textIn(values, "by")).inputs(values));
    ports.outputs = {{.name = "table", .description = "The table with the new column.", .type = ValueType::Table}};
    return ports;
}

std::string WindowKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "by") {
        return keyOrdersRefusal(value);
    }
    if (input == "expression") {
        return expressionRefusal(value);
    }
    const bool isBadName = input == "column" && !value.empty() && !isColumnName(value);
    return isBadName ? "\"" + value + "\" is not a valid name for a column: expressions could not refer to it." : "";
}

std::unique_ptr<RowOperation> WindowKind::prepare(const Arguments& arguments, const Schema& schema,
                                                  RunContext& context) const {
    const Target target{arguments.text("column"), arguments.text("unit")};
    if (target.name.empty()) {
        throw Failure("column", "the new column has no name");
    }
    if (std::string reason = refusal("column", target.name); !reason.empty()) {
        throw Failure("column", reason);
    }
    const std::string& text = arguments.text("expression");
    const std::string& by = arguments.text("by");
    const auto numbers = numbersOf(text, by).values(arguments, schema, context);
    std::optional<KeyMaker> keys;
    if (const std::vector<KeyOrder> orders = keyOrdersIn(by); !orders.empty()) {
        keys.emplace("by", orders, schema, numbers);
    }
    Groups groups(functionOf(arguments.text("function")), static_cast<std::size_t>(arguments.integer("rows")),
                  memoryOf(context));
    return std::make_unique<WindowOperation>(schema, numberExpression(text, schema, numbers), std::move(keys),
                                             std::move(groups), target);
}

std::unique_ptr<Kind> makeWindow() {
    return std::make_unique<WindowKind>();
}

}  // namespace velmorak
