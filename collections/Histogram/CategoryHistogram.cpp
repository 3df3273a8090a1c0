#include "kinds.h"

#include "Binning.h"
#include "Categories.h"
#include "FillKind.h"
#include "Filling.h"

#include <velmorak/Expression.h>
#include <velmorak/Histogram.h>

#include <optional>
#include <utility>

namespace velmorak {

namespace {

/// The expression whose values are counted, and the weight of each.
class CategoryExpression {
public:
    CategoryExpression(const Arguments& arguments, const Schema& schema);

    ColumnType type() const { return values.type(); }
    /// Calls fill with each value, of the given class of column, and its weight.
    template <typename List, typename Fill>
    void forEach(const Chunk& chunk, const Fill& fill) const;
    /// Sets the entries of the columns that are used to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const;

private:
    Expression values;
    std::optional<Expression> weights;
};

CategoryExpression::CategoryExpression(const Arguments& arguments, const Schema& schema)
    : values(arguments.text("expression"), schema) {
    if (type() == ColumnType::Real) {
        throw Failure("expression", "\"" + arguments.text("expression") +
                                        "\" gives real numbers, but categories are texts, integers or truth values; "
                                        "Histogram1D fills real numbers");
    }
    const std::string& text = arguments.text("weight");
    if (text.empty()) {
        return;
    }
    weights.emplace(text, schema);
    if (weights->type() == ColumnType::Text) {
        throw Failure("weight", "\"" + text + "\" is a text, not a number");
    }
    if (weights->isList() && !values.isList()) {
        throw Failure("weight", "the weight is a list in each row, but the expression is a single value");
    }
}

template <typename List, typename Fill>
void CategoryExpression::forEach(const Chunk& chunk, const Fill& fill) const {
    const ColumnPtr column = values.evaluate(chunk);
    const ColumnPtr weight = weights ? asReals(weights->evaluate(chunk)) : nullptr;
    const bool hasWeights = weight && weight->isList();
    if (hasWeights && weight->offsets != column->offsets) {
        throw Failure("weight", "a row between " + std::to_string(chunk.firstRow) +
                                    " and the end of its chunk has lists of different lengths");
    }
    const List& list = std::get<List>(column->values);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const std::size_t begin = column->isList() ? column->offsets[row] : row;
        const std::size_t end = column->isList() ? column->offsets[row + 1] : row + 1;
        for (std::size_t i = begin; i < end; ++i) {
            fill(list[i], !weight ? 1.0 : weight->reals()[hasWeights ? i : row]);
        }
    }
}

void CategoryExpression::markColumns(std::vector<bool>& needed) const {
    values.markColumns(needed);
    if (weights) {
        weights->markColumns(needed);
    }
}

std::string labelOf(const std::string& key, ColumnType) {
    return key;
}
std::string labelOf(std::int64_t key, ColumnType type) {
    if (type == ColumnType::Boolean) {
        return key == 0 ? "false" : "true";
    }
    return std::to_string(key);
}

template <typename Key>
class CategoryState : public AccumulatorState {
public:
    explicit CategoryState(const CategoryExpression& quantity) : quantity(quantity) {}

    void fill(const Chunk& chunk) override {
        const auto add = [&](const auto& value, double weight) { categories.fill(Key(value), weight); };
        if constexpr (std::is_same_v<Key, std::string>) {
            quantity.forEach<Column::Texts>(chunk, add);
        } else if (quantity.type() == ColumnType::Boolean) {
            quantity.forEach<Column::Booleans>(chunk, add);
        } else {
            quantity.forEach<Column::Integers>(chunk, add);
        }
    }
    void merge(AccumulatorState& other) override { categories.merge(static_cast<CategoryState&>(other).categories); }
    void save(StateWriter& writer) const override {
        writer.version(1);
        categories.save(writer);
    }
    void load(StateReader& reader) override {
        reader.version(1);
        categories.load(reader);
    }

    const Categories<Key>& result() const { return categories; }

private:
    const CategoryExpression& quantity;
    Categories<Key> categories;
};

template <typename Key>
class CategoryFilling : public Accumulation {
public:
    CategoryFilling(CategoryExpression quantity, bool isSorted, Naming naming)
        : quantity(std::move(quantity)), isSorted(isSorted), naming(std::move(naming)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<CategoryState<Key>>(quantity);
    }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override {
        naming.deliver(histogramOf(static_cast<CategoryState<Key>&>(state).result()), "histogram", results);
    }

private:
    Histogram1D histogramOf(const Categories<Key>& categories) const {
        std::vector<std::string> labels;
        const std::vector<std::size_t> order = categories.order(isSorted);
        CellVector<BinSums> cells(std::max(order.size(), std::size_t{1}) + 2);
        for (const std::size_t position : order) {
            const CategorySums& sums = categories.sums(position);
            const auto x = static_cast<double>(labels.size());
            cells[labels.size() + 1] = BinSums::at({x}, sums.entries, sums.w, sums.ww);
            labels.push_back(labelOf(categories.key(position), quantity.type()));
        }
        if (labels.empty()) {
            labels.emplace_back();
        }
        return {Axis::ofCategories(std::move(labels)), std::move(cells), categories.nans()};
    }

    CategoryExpression quantity;
    bool isSorted;
    Naming naming;
};

Ports categoryPorts() {
    InputSpec expression = expressionInput();
    expression.description =
        "Quantity whose different values are counted: a column or an expression that gives texts, integers or truth "
        "values. Of a list, all values are filled.";
    return {{tableInput(),
             expression,
             weightInput(),
             {.name = "order",
              .description = "Order of the bins: by ascending value, or as the values appear in the table.",
              .type = ValueType::Choice,
              .value = "sorted",
              .choices = {"sorted", "appearance"}},
             titleInput(),
             axisTitleInput("axis", "the expression")},
            {{.name = "histogram",
              .description = "Entries and sums of weights for each value; NaN weights are counted separately.",
              .type = ValueType::Histogram}}};
}

std::unique_ptr<Accumulation> categoryFilling(const Arguments& arguments, const Schema& schema, RunContext& context) {
    CategoryExpression quantity(arguments, schema);
    Naming naming(arguments, context, {titleOr(arguments, "axis", arguments.text("expression"))});
    const bool isSorted = arguments.text("order") == "sorted";
    if (quantity.type() == ColumnType::Text) {
        return std::make_unique<CategoryFilling<std::string>>(std::move(quantity), isSorted, std::move(naming));
    }
    return std::make_unique<CategoryFilling<std::int64_t>>(std::move(quantity), isSorted, std::move(naming));
}

}  // namespace

/// Counts the different values of a quantity.
std::unique_ptr<Kind> makeCategoryHistogram() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "CategoryHistogram",
        .summary = "Fills a histogram with one bin for each different text or integer of a table, with weights.",
        .notes =
            R"(Each different value of the expression gets a bin, which is labelled with it; the bins are centred at 0, 1, 2 ... Sorted
bins ascend by number, or by the bytes of the texts, so that capital letters come before small ones. The order of
appearance is that of the rows. Either order, and every bit of the sums, is the same for any number of threads. If the
weight is NaN, the fill is counted separately and goes into no bin. There may be up to 100000 different values; a table
without rows gives one empty bin without a label.)",
        .ports = categoryPorts(),
        .prepare = categoryFilling});
}

}  // namespace velmorak
