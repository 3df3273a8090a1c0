#include "Table/kinds.h"

#include "shared/AppendInputs.h"
#include "shared/RowKeys.h"
#include "shared/RowSorter.h"

#include <velmorak/NamedNumbers.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> sortInputs() {
    return {
        {.name = "table", .description = "Table whose rows are sorted.", .type = ValueType::Table},
        {.name = "by",
         .description = "Expressions to sort by, the most important first, one a line or separated by semicolons; "
                        "\"descending\" after an expression puts large values first: run; pt descending. A number "
                        "at an input of its own is written @name.",
         .type = ValueType::Text},
    };
}

NamedNumbers sortNumbers(const std::string& by) {
    return {keyTexts("by", by), sortInputs()};
}

class SortState : public AccumulatorState {
public:
    SortState(const Schema& schema, std::shared_ptr<const KeyMaker> keys, RunContext& context);

    void fill(const Chunk& chunk) override { filled = sortedRows(chunk, *keys); }
    void merge(AccumulatorState& other) override;

    std::unique_ptr<RowSorter> sorter;
    std::uint64_t missing = 0;

private:
    const Schema& schema;
    std::shared_ptr<const KeyMaker> keys;
    RunContext& context;
    std::optional<SortedRows> filled;  ///< Until it is merged.
};

SortState::SortState(const Schema& schema, std::shared_ptr<const KeyMaker> keys, RunContext& context)
    : schema(schema), keys(std::move(keys)), context(context) {}

void SortState::merge(AccumulatorState& other) {
    auto& next = static_cast<SortState&>(other);
    if (!next.filled || next.filled->rows == 0) {
        return;
    }
    if (!sorter) {
        sorter = std::make_unique<RowSorter>(schema, keys, context);
    }
    missing += next.filled->keys.missing();
    sorter->add(*std::exchange(next.filled, std::nullopt));
}

class SortAccumulation : public Accumulation {
public:
    SortAccumulation(Schema schema, KeyMaker keyMaker, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override;
    void finish(AccumulatorState& state, Results& results) override;

private:
    Schema schema;
    std::shared_ptr<const KeyMaker> keys;
    RunContext& context;
};

SortAccumulation::SortAccumulation(Schema schema, KeyMaker keyMaker, RunContext& context)
    : schema(std::move(schema)), keys(std::make_shared<const KeyMaker>(std::move(keyMaker))), context(context) {}

std::unique_ptr<AccumulatorState> SortAccumulation::newState() const {
    return std::make_unique<SortState>(schema, keys, context);
}

void SortAccumulation::finish(AccumulatorState& state, Results& results) {
    auto& whole = static_cast<SortState&>(state);
    if (!whole.sorter) {
        whole.sorter = std::make_unique<RowSorter>(schema, keys, context);
    }
    results.set("table", Value(DataObjectPtr(whole.sorter->finish())));
    results.set("missing", whole.missing);
}

/// Sorts the rows of a table.
class SortKind : public Accumulator {
public:
    std::string name() const override { return "Sort"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string SortKind::summary() const {
    return "Sorts the rows of a table by one or several expressions.";
}

std::string SortKind::notes() const {
    return "The sort is stable: rows with equal keys stay in their order. Missing values, NaN and empty texts, come "
           "last in either direction. Numbers are compared by value, texts by their characters in the order of "
           "Unicode, so that Z comes before a; -0 equals 0. An expression that gives a list in each row is refused; "
           "columns with lists are carried along.\n\n"
           "Rows that do not fit into `VELMORAK_MEMORY_LIMIT` are sorted in temporary files, with the same result. A "
           "planned run sorts while its parts are merged, because every row is needed before the first can be given.";
}

Ports SortKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = sortInputs();
    if (const auto by = values.find("by"); by != values.end()) {
        appendInputs(ports.inputs, sortNumbers(by->second).inputs(values));
    }
    ports.outputs = {
        {.name = "table", .description = "All rows in their new order, with all columns.", .type = ValueType::Table},
        {.name = "missing", .description = "Number of rows in which one of the expressions is NaN or an empty text."}};
    return ports;
}

std::string SortKind::refusal(const std::string& input, const std::string& value) const {
    return input == "by" ? keyOrdersRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> SortKind::prepare(const Arguments& arguments, const Schema* schema,
                                                RunContext& context) const {
    const std::string& by = arguments.text("by");
    const std::vector<KeyOrder> orders = keyOrdersIn(by);
    if (orders.empty()) {
        throw Failure("by", "no expression to sort by is given, for example: pt descending");
    }
    KeyMaker keys("by", orders, *schema, sortNumbers(by).values(arguments, *schema, context));
    return std::make_unique<SortAccumulation>(*schema, std::move(keys), context);
}

std::unique_ptr<Kind> makeSort() {
    return std::make_unique<SortKind>();
}

}  // namespace velmorak
