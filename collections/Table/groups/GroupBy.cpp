#include "Table/kinds.h"

#include "Table/groups/GroupPlan.h"
#include "Table/groups/GroupTable.h"
#include "Table/groups/SpilledGroups.h"
#include "shared/StoredRows.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/RowMemory.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// The groups of consecutive rows. They are merged from the first chunk to the last, so that it does not matter for the
/// sums where some of them went to a file.
class GroupState : public AccumulatorState {
public:
    GroupState(const GroupPlan& plan, std::shared_ptr<MemoryBudget> memory)
        : plan(plan), table(plan), share(std::move(memory)) {}

    void fill(const Chunk& chunk) override { table.fill(chunk); }
    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    const GroupTable& groups() const { return table; }
    const SpilledGroups* onDisk() const { return spilled.get(); }

private:
    void take(const GroupTable& next);
    void keepInLimit();

    const GroupPlan& plan;
    GroupTable table;
    MemoryShare share;
    std::unique_ptr<SpilledGroups> spilled;  ///< All groups, if they do not fit into memory; the table is empty then.
};

void GroupState::merge(AccumulatorState& other) {
    const auto& next = static_cast<GroupState&>(other);
    take(next.table);
    for (std::size_t part = 0; next.spilled && part < SpilledGroups::partitions; ++part) {
        take(next.spilled->partition(part));
    }
}

void GroupState::take(const GroupTable& next) {
    if (spilled) {
        spilled->append(next);
        return;
    }
    table.merge(next);
    keepInLimit();
}

void GroupState::keepInLimit() {
    if (const std::size_t bytes = table.bytes(); bytes > share.bytes() && !share.take(bytes - share.bytes())) {
        spilled = std::make_unique<SpilledGroups>(plan);
        spilled->append(table);
        table = GroupTable(plan);
        share.giveAll();
    }
}

void GroupState::save(StateWriter& writer) const {
    writer.version(1);
    if (!spilled) {
        table.save(writer);
        return;
    }
    GroupTable all(plan);
    for (std::size_t part = 0; part < SpilledGroups::partitions; ++part) {
        all.merge(spilled->partition(part));
    }
    all.save(writer);
}

void GroupState::load(StateReader& reader) {
    reader.version(1);
    table.load(reader);
}

class Grouping : public Accumulation {
public:
    Grouping(GroupPlan plan, RunContext& context)
        : plan(std::move(plan)), context(context), memory(memoryOf(context)) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<GroupState>(plan, memory); }
    void markColumns(std::vector<bool>& needed) const override { plan.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override;

private:
    std::shared_ptr<const StoredTable> rowsOf(const GroupTable& table) const;

    GroupPlan plan;
    RunContext& context;
    std::shared_ptr<MemoryBudget> memory;
};

void Grouping::finish(AccumulatorState& state, Results& results) {
    const auto& groups = static_cast<GroupState&>(state);
    std::int64_t missing = 0;
    std::size_t count = 0;
    if (const SpilledGroups* const onDisk = groups.onDisk()) {
        results.set("table", Value(DataObjectPtr(sortedGroups(plan, *onDisk, missing, count))));
    } else {
        missing = groups.groups().missing();
        count = groups.groups().size();
        results.set("table", Value(DataObjectPtr(rowsOf(groups.groups()))));
    }
    results.set("groups", count);
    results.set("missing", missing);
    if (missing > 0) {
        context.tell(std::to_string(missing) + (missing == 1 ? " value is" : " values are") +
                     " missing (NaN or an empty text) and left out\n");
    }
}

std::shared_ptr<const StoredTable> Grouping::rowsOf(const GroupTable& table) const {
    const std::vector<std::uint32_t> all = table.inOrder();
    const std::size_t most = rowsInChunk(plan.schema());
    std::vector<StoredRows::Piece> pieces;
    for (std::size_t first = 0; first < all.size(); first += most) {
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
        const std::size_t rows = std::min(most, all.size() - first);
        pieces.push_back({rows, plan.rowsOf(table, {begin, begin + static_cast<std::ptrdiff_t>(rows)})});
    }
    return std::make_shared<StoredRows>(plan.schema(), std::move(pieces));
}

/// Computes aggregates of the rows with equal keys.
class GroupByKind : public Accumulator {
public:
    std::string name() const override { return "GroupBy"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string GroupByKind::summary() const {
    return "Computes counts, sums, means, extremes and medians of the rows that have equal keys.";
}

std::string GroupByKind::notes() const {
    return R"(The aggregates are:

| aggregate | value in each group |
|---|---|
| `count` | number of rows |
| `count(x)` | number of values that are not missing |
| `sum(x)` | sum |
| `mean(x)` | mean, and its error spread / root of n in a second column, whose name ends with `_error` |
| `spread(x)` | standard deviation of the population |
| `min(x)`, `max(x)` | extremes |
| `median(x)` | exact median; midway between the two middle values if their number is even |
| `first(x)`, `last(x)` | first and last value in the order of the rows |

`x` is a column or an expression; a truth value counts as 1 or 0, so that `mean(passed)` is an efficiency. Of texts there
are `count`, `first` and `last`. A value that is missing, NaN or an empty text, is left out; without any value, a real is
NaN, an integer 0 and a text empty. A key that is NaN or an empty text has a group of its own, the last one. For binned
keys, values below the first edge and from the last one on have groups as well, whose bins end at -Infinity or Infinity.

The rows come sorted by the keys: numbers ascend, texts byte by byte. Sums are compensated (D. E. Knuth, The Art of
Computer Programming 2, 4.2.2); mean and spread come from sums of squared distances from the mean, joined as in T. F. Chan,
G. H. Golub, R. J. LeVeque, Am. Stat. 37 (1983) 242. Chunks are joined from the first to the last: the result has the same
bits on any number of threads, and whatever the limit of memory is. Groups that exceed the limit (`VELMORAK_MEMORY_LIMIT`)
go to a temporary file.)";
}

Ports GroupByKind::ports(const ValueTexts&) const {
    return {{{.name = "table", .description = "Table whose rows are grouped.", .type = ValueType::Table},
             {.name = "keys",
              .description = "Columns, or expressions with names, by which the rows are grouped, separated by "
                             "semicolons: run; side: eta > 0. Empty: all rows are one group.",
              .type = ValueType::Text},
             {.name = "edges",
              .description = "Ascending edges of the bins of keys that are binned, in their unit: pt: 0 10 20 50; eta: "
                             "-2.5 0 2.5. The name may be left out if there is one key. Empty: no key is binned.",
              .type = ValueType::Text},
             {.name = "aggregates",
              .description = "What to compute for each group, separated by semicolons: count; mean(pt); total: "
                             "sum(energy * weight). One of count, sum, mean, spread, min, max, median, first and last; "
                             "of an expression only with a name before it.",
              .type = ValueType::Text,
              .value = "count"}},
            {{.name = "table",
              .description = "One row for each group, sorted by the keys: the keys, or the lower and upper edge "
                             "(NAME_low, NAME_high) of those that are binned, and the aggregates.",
              .type = ValueType::Table},
             {.name = "groups", .description = "Number of groups.", .type = ValueType::Number},
             {.name = "missing",
              .description = "Number of values that were left out because they are NaN or empty.",
              .type = ValueType::Number}}};
}

std::string GroupByKind::refusal(const std::string& input, const std::string& value) const {
    return groupingRefusal(input, value);
}

std::unique_ptr<Accumulation> GroupByKind::prepare(const Arguments& arguments, const Schema* schema,
                                                   RunContext& context) const {
    if (!schema) {
        throw Failure("table", "nothing is wired");
    }
    return std::make_unique<Grouping>(GroupPlan(arguments, *schema), context);
}

std::unique_ptr<Kind> makeGroupBy() {
    return std::make_unique<GroupByKind>();
}

}  // namespace velmorak
