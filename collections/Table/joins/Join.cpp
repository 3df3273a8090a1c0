#include "Table/kinds.h"

#include "Table/joins/JoinIndex.h"
#include "Table/joins/JoinPlan.h"
#include "Table/joins/JoinRows.h"
#include "shared/ColumnList.h"
#include "shared/RowGather.h"

#include <velmorak/EndedOperation.h>
#include <velmorak/RowMemory.h>
#include <velmorak/StoredTable.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <utility>

namespace velmorak {

namespace {

/// The second table, and the index that finds its rows.
struct Lookup {
    Lookup(const JoinPlan& plan, const StoredTable& table, RunContext& context);

    JoinIndex index;
    JoinRows rows;

private:
    static std::vector<ColumnInfo> addedColumns(const JoinPlan& plan);
    void append(const JoinPlan& plan, const Chunk& chunk);
};

std::vector<ColumnInfo> Lookup::addedColumns(const JoinPlan& plan) {
    const std::vector<ColumnInfo>& all = plan.schema().columns();
    const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(all.size()) - (plan.countsMatches() ? 1 : 0);
    return {all.begin() + last - static_cast<std::ptrdiff_t>(plan.added().size()), all.begin() + last};
}

Lookup::Lookup(const JoinPlan& plan, const StoredTable& table, RunContext& context)
    : index(plan), rows(addedColumns(plan), memoryOf(context)) {
    const std::unique_ptr<TableReader> reader = table.open();
    std::vector<bool> needed(table.schema().size(), false);
    plan.markSecond(needed);
    reader->selectColumns(needed);
    for (Chunk chunk; reader->next(chunk); chunk = {}) {
        if (context.isStopping()) {
            throw Stopped();
        }
        reader->complete(chunk);
        append(plan, chunk);
    }
    index.finish();
}

void Lookup::append(const JoinPlan& plan, const Chunk& chunk) {
    index.append(chunk);
    std::vector<ColumnPtr> columns;
    for (std::size_t i = 0; i < plan.added().size(); ++i) {
        const ColumnPtr& column = chunk.columns[plan.added()[i]];
        columns.push_back(plan.isMadeReal(i) ? asReals(column) : column);
    }
    rows.append(columns, chunk.rows);
}

class JoinOperation : public RowOperation, public EndedOperation {
public:
    JoinOperation(JoinPlan joined, std::size_t firstColumns, const StoredTable& second, RunContext& context);

    const Schema& schema() const override { return plan.schema(); }
    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;
    void end() override;

private:
    static void addUnmatched(JoinIndex::Matches& matches);
    static void keepUnmatched(JoinIndex::Matches& matches);

    const JoinPlan plan;
    const std::size_t firstColumns;
    const Lookup second;
    RunContext& context;
    std::vector<bool> wantedOfSecond;
    mutable std::atomic<std::uint64_t> unmatched = 0;
    mutable std::atomic<std::uint64_t> seen = 0;
};

JoinOperation::JoinOperation(JoinPlan joined, std::size_t firstColumns, const StoredTable& second, RunContext& context)
    : plan(std::move(joined)), firstColumns(firstColumns), second(plan, second, context), context(context) {}

void JoinOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    const auto end = wanted.begin() + static_cast<std::ptrdiff_t>(firstColumns);
    std::copy(wanted.begin(), end, needed.begin());
    wantedOfSecond.assign(end, end + static_cast<std::ptrdiff_t>(plan.added().size()));
    plan.markFirst(needed);
}

void JoinOperation::addUnmatched(JoinIndex::Matches& matches) {
    JoinIndex::Matches all{{}, {}, std::move(matches.counts)};
    std::size_t next = 0;
    for (std::uint32_t row = 0; row < all.counts.size(); ++row) {
        if (all.counts[row] == 0) {
            all.first.push_back(row);
            all.second.push_back(noRow);
        }
        for (std::uint32_t i = 0; i < all.counts[row]; ++i, ++next) {
            all.first.push_back(row);
            all.second.push_back(matches.second[next]);
        }
    }
    matches = std::move(all);
}

void JoinOperation::keepUnmatched(JoinIndex::Matches& matches) {
    matches.first.clear();
    for (std::uint32_t row = 0; row < matches.counts.size(); ++row) {
        if (matches.counts[row] == 0) {
            matches.first.push_back(row);
        }
    }
    matches.second.assign(matches.first.size(), noRow);
}

Chunk JoinOperation::apply(const Chunk& chunk) const {
    JoinIndex::Matches matches = second.index.matches(chunk);
    const auto without = static_cast<std::uint64_t>(std::count(matches.counts.begin(), matches.counts.end(), 0U));
    seen += chunk.rows;
    unmatched += without;
    if (plan.rows() == JoinPlan::Rows::Anti) {
        keepUnmatched(matches);
    } else if (plan.rows() == JoinPlan::Rows::Left && without > 0) {
        addUnmatched(matches);
    }
    const bool isEachOnce = matches.first.size() == chunk.rows &&
                            std::adjacent_find(matches.first.begin(), matches.first.end()) == matches.first.end();
    Chunk out = chunk;
    out.rows = matches.first.size();
    for (ColumnPtr& column : out.columns) {
        column = column && !isEachOnce ? gatherRows(*column, matches.first) : column;
    }
    for (ColumnPtr& column : second.rows.at(matches.second, wantedOfSecond)) {
        out.columns.push_back(std::move(column));
    }
    if (plan.countsMatches()) {
        Column::Integers counts;
        counts.reserve(out.rows);
        for (const std::uint32_t row : matches.first) {
            counts.push_back(matches.counts[row]);
        }
        out.columns.push_back(std::make_shared<const Column>(Column{std::move(counts), {}}));
    }
    return out;
}

void JoinOperation::end() {
    if (unmatched > 0) {
        context.tell(std::to_string(unmatched) + " of " + std::to_string(seen) +
                     " rows have no row of the second table\n");
    }
}

/// Adds the columns of a second table.
class JoinKind : public RowWise {
public:
    std::string name() const override { return "Join"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

std::string joinKeysRefusal(const std::string& value) {
    for (const JoinKeyText& key : joinKeysIn(value)) {
        if (key.first.empty() || key.second.empty()) {
            return "A key has nothing on one side of the equals sign.";
        }
        for (const std::string& expression : {key.first, key.second}) {
            if (std::string reason = expressionRefusal(expression); !reason.empty()) {
                return reason;
            }
        }
    }
    return {};
}

}  // namespace

std::string JoinKind::summary() const {
    return "Adds to each row of a table the rows of a second table that have equal keys, or in whose range it lies.";
}

std::string JoinKind::notes() const {
    return R"(A row of the first table that has several rows of the second one comes once with each of them, in the order of
the second table. Numbers are equal as numbers, whatever their types; a key that is missing, NaN or an empty text, equals
nothing. `rows` says which rows are made:

| rows | |
|---|---|
| `left` | every row of the first table; without a row of the second one, its columns are NaN or empty texts, and integers become reals for it |
| `inner` | only rows of the first table that have rows of the second one |
| `anti` | only rows that have none; no columns are added |

A message says how many rows of the first table have none.

With `value`, `from` and `to`, the value must also lie in the range of the row of the second table: from <= value <= to,
for example a run number between the first and the last run for which calibration constants are valid. An end that is NaN is
open. Without `to`, a range ends where the next one with equal keys begins.

The second table is read as a whole before the first one. The columns that are added stay in memory up to the limit
(`VELMORAK_MEMORY_LIMIT`); beyond it they are in a temporary file, and rows that are in no order take longer.)";
}

Ports JoinKind::ports(const ValueTexts&) const {
    return {
        {{.name = "table", .description = "First table; its rows keep their order.", .type = ValueType::Table},
         {.name = "with", .description = "Second table, whose columns are added.", .type = ValueType::Table},
         {.name = "keys",
          .description =
              "Columns or expressions that must be equal, separated by semicolons: run; or, where the second "
              "table calls them otherwise, run = number; detector = id.",
          .type = ValueType::Text},
         {.name = "rows",
          .description = "Left: all rows of the first table. Inner: those with rows of the second table. Anti: those "
                         "without.",
          .type = ValueType::Choice,
          .value = "left",
          .choices = {"left", "inner", "anti"}},
         {.name = "value",
          .description = "Column or expression of the first table that must lie in the range of the row of the second "
                         "table. Empty: there are no ranges.",
          .type = ValueType::Text},
         {.name = "from",
          .description = "Where the range begins: a column or expression of the second table, in the unit of value.",
          .type = ValueType::Text},
         {.name = "to",
          .description = "Where the range ends, which is still in it. Empty: where the next range begins.",
          .type = ValueType::Text},
         {.name = "columns",
          .description =
              "Names of the columns of the second table to add, separated by blanks or commas. Empty: all but "
              "keys that have the same name in both tables.",
          .type = ValueType::Text},
         {.name = "prefix",
          .description = "Text before the names of the added columns, for names that both tables have.",
          .type = ValueType::Text},
         {.name = "matches",
          .description = "Name of a new column for the number of rows of the second table. Empty: none.",
          .type = ValueType::Text}},
        {{.name = "table",
          .description = "Columns of the first table, followed by those of the second one.",
          .type = ValueType::Table}}};
}

std::string JoinKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "columns") {
        return columnListRefusal(input, value);
    }
    if (input == "value" || input == "from" || input == "to") {
        return expressionRefusal(value);
    }
    return input == "keys" ? joinKeysRefusal(value) : std::string();
}

std::unique_ptr<RowOperation> JoinKind::prepare(const Arguments& arguments, const Schema& schema,
                                                RunContext& context) const {
    const auto* const value = std::get_if<DataObjectPtr>(&arguments.value("with"));
    const auto second = std::dynamic_pointer_cast<const StoredTable>(value ? *value : nullptr);
    if (!second) {
        throw Failure("with", "nothing is wired");
    }
    return std::make_unique<JoinOperation>(JoinPlan(arguments, schema, second->schema()), schema.size(), *second,
                                           context);
}

std::unique_ptr<Kind> makeJoin() {
    return std::make_unique<JoinKind>();
}

}  // namespace velmorak
