#include "RunFixture.h"

#include <velmorak/OrderedRows.h>
#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>
#include <velmorak/StoredTable.h>

#include <algorithm>
#include <vector>

namespace velmorak::test {
namespace {

/// Rows in memory, last chunk first; counts how many such tables there are.
class Reversed : public StoredTable {
public:
    Reversed(Schema schema, std::vector<Chunk> kept, std::shared_ptr<std::atomic<int>> count)
        : columns(std::move(schema)), chunks(std::move(kept)), alive(std::move(count)) {
        ++*alive;
        for (Chunk& chunk : chunks) {
            for (ColumnPtr& column : chunk.columns) {
                column = !column ? nullptr : reversed(*column);
            }
        }
    }
    ~Reversed() override { --*alive; }
    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override { return std::make_unique<Reader>(*this); }

private:
    static ColumnPtr reversed(const Column& column) {
        Column::Reals values = column.reals();
        std::reverse(values.begin(), values.end());
        return std::make_shared<const Column>(Column{std::move(values), {}});
    }

    class Reader : public TableReader {
    public:
        explicit Reader(const Reversed& table) : table(table) {}
        const Schema& schema() const override { return table.columns; }
        bool next(Chunk& chunk) override {
            if (done < table.chunks.size()) {
                chunk = table.chunks[done++];
            }
            return chunk.rows > 0;
        }

    private:
        const Reversed& table;
        std::size_t done = 0;
    };

    Schema columns;
    std::vector<Chunk> chunks;
    std::shared_ptr<std::atomic<int>> alive;
};

struct ReverseState : AccumulatorState {
    void fill(const Chunk& chunk) override { chunks = {chunk}; }
    void merge(AccumulatorState& other) override {
        auto& next = dynamic_cast<ReverseState&>(other);
        chunks.insert(chunks.end(), next.chunks.begin(), next.chunks.end());
    }
    std::vector<Chunk> chunks;
};

/// Gives the rows of each chunk from the last to the first; fails on demand.
class ReverseKind : public Accumulator {
public:
    std::string name() const override { return "Reverse"; }
    std::string summary() const override { return "Reverses the rows of each chunk."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), numberInput("fail")}, {output("table", ValueType::Table)}};
    }
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;

    std::shared_ptr<std::atomic<int>> alive = std::make_shared<std::atomic<int>>(0);
    mutable std::atomic<int> finished = 0;
    mutable std::size_t limit = 0;  ///< Of the memory of the run.
};

class ReverseAccumulation : public Accumulation {
public:
    ReverseAccumulation(const ReverseKind& kind, Schema schema, bool fails)
        : kind(kind), schema(std::move(schema)), fails(fails) {}
    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<ReverseState>(); }
    void finish(AccumulatorState& state, Results& results) override {
        ++kind.finished;
        if (fails) {
            throw Failure("fail", "it was told to");
        }
        results.set("table", Value(DataObjectPtr(std::make_shared<const Reversed>(
                                 schema, dynamic_cast<ReverseState&>(state).chunks, kind.alive))));
    }

private:
    const ReverseKind& kind;
    Schema schema;
    bool fails;
};

std::unique_ptr<Accumulation> ReverseKind::prepare(const Arguments& arguments, const Schema* schema,
                                                   RunContext& context) const {
    limit = memoryOf(context)->limit();
    return std::make_unique<ReverseAccumulation>(*this, *schema, arguments.number("fail") != 0.0);
}

/// Sums of x from the first row to each, which only a look in order can give.
class RunningOperation : public RowOperation, public OrderedRows {
public:
    RunningOperation(Schema schema, double failAt) : columns(std::move(schema)), failAt(failAt) {}
    const Schema& schema() const override { return columns; }
    bool countsRows() const override { return true; }
    std::shared_ptr<const void> look(const Chunk& chunk) override {
        Column::Reals sums;
        for (const double x : chunk.columns[0]->reals()) {
            if (static_cast<double>(rows++) == failAt) {
                throw Failure("failAt", "row " + std::to_string(rows) + " is bad");
            }
            sums.push_back(sum += x);
        }
        return std::make_shared<const Column>(Column{std::move(sums), {}});
    }
    Chunk apply(const Chunk& chunk) const override {
        Chunk out = chunk;
        out.columns = {std::static_pointer_cast<const Column>(chunk.owner)};
        return out;
    }

private:
    Schema columns;
    double failAt;
    double sum = 0.0;
    std::uint64_t rows = 0;
};

class RunningKind : public RowWise, public CountingKind {
public:
    std::string name() const override { return "Running"; }
    std::string summary() const override { return "Running sums."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), numberInput("failAt", "-1")},
                {output("table", ValueType::Table)}};
    }
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext&) const override {
        return std::make_unique<RunningOperation>(schema, arguments.number("failAt"));
    }
};

/// rows -> reverse -> cut -> sum
class StoredTables : public RunTest {
protected:
    StoredTables() {
        add(rows, "rows", {{"rows", "70000"}});
        add(reverse, "reverse");
        add(cut, "cut", {{"cut", "-1e300"}});
        add(sum, "sum");
        add(sum, "direct");
        wire("rows", "table", "reverse", "table");
        wire("reverse", "table", "cut", "table");
        wire("cut", "table", "sum", "table");
        wire("rows", "table", "direct", "table");
    }

    RowSource rows;
    ReverseKind reverse;
    CutKind cut;
    SumKind sum{Accumulator::MergeOrder::FirstToLast};
    JoinKind join;
    RunningKind running;
};

TEST_F(StoredTables, areReadInALaterPass) {
    run();
    EXPECT_FALSE(report.hasFailure()) << messages.str();
    EXPECT_EQ(of("reverse").rowsIn, 70000U);
    EXPECT_EQ(of("reverse").rowsOut, 70000U);
    EXPECT_EQ(of("sum").rowsIn, 70000U);
    EXPECT_NE(number("sum"), number("direct")) << "the order of the terms shows in the last bits";
    EXPECT_NEAR(number("sum") / number("direct"), 1, 1e-9);
    EXPECT_EQ(rows.opened, 1);
}

TEST_F(StoredTables, areFreedWhenNobodyReadsThemAnyMore) {
    int aliveAtLast = -1;
    FreeFunction last("Last", {{numberInput("value")}, {}},
                      [&](const Arguments&, Results&, RunContext&) { aliveAtLast = *reverse.alive; });
    add(last, "last");
    wire("sum", "sum", "last", "value");
    run();
    EXPECT_FALSE(report.hasFailure()) << messages.str();
    EXPECT_EQ(*reverse.alive, 0);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(of("reverse").outputs.at(0)));
    EXPECT_EQ(aliveAtLast, 0) << "before the plug-ins that follow its last reader";
}

TEST_F(StoredTables, thatFailSkipWhatIsDownstream) {
    set("reverse", "fail", "1");
    run();
    EXPECT_EQ(sentence("reverse"), "input \"fail\": it was told to");
    EXPECT_EQ(status("cut"), NodeStatus::Skipped);
    EXPECT_EQ(status("sum"), NodeStatus::Skipped);
    EXPECT_EQ(status("direct"), NodeStatus::Done);
}

TEST_F(StoredTables, areMadeAgainOnlyForResultsThatAreNotKept) {
    run();
    const double before = number("sum");
    run();
    EXPECT_EQ(reverse.finished, 1);
    EXPECT_EQ(number("sum"), before);
    set("sum", "scale", "2");
    run();
    EXPECT_EQ(reverse.finished, 2);
    EXPECT_EQ(number("sum"), 2 * before);
    EXPECT_EQ(status("direct"), NodeStatus::Reused);
}

TEST_F(StoredTables, followEachOther) {
    add(reverse, "again");
    add(sum, "forwards");
    wire("cut", "table", "again", "table");
    wire("again", "table", "forwards", "table");
    run();
    EXPECT_FALSE(report.hasFailure()) << messages.str();
    EXPECT_EQ(of("forwards").rowsIn, 70000U);
}

TEST_F(StoredTables, canBeConcatenatedWithTheirOwnSource) {
    add(join, "join");
    add(sum, "both");
    wire("cut", "table", "join", "first");
    wire("rows", "table", "join", "second");
    wire("join", "table", "both", "table");
    run();
    EXPECT_FALSE(report.hasFailure()) << messages.str();
    EXPECT_EQ(of("both").rowsIn, 140000U);
}

TEST_F(StoredTables, atTheEndOfAChainAreMade) {
    add(reverse, "end");
    wire("rows", "table", "end", "table");
    run();
    EXPECT_EQ(status("end"), NodeStatus::Done);
    EXPECT_EQ(of("end").rowsIn, 70000U);
}

TEST_F(StoredTables, kindsSeeTheMemoryLimitOfTheRun) {
    std::ostringstream text;
    RunConfig config;
    config.memory.limitBytes = 123'456'789;
    Runner limited(text, false, config);
    report = limited.run(pipeline);
    EXPECT_FALSE(report.hasFailure()) << text.str();
    EXPECT_EQ(reverse.limit, 123'456'789U);
}

class OrderedLook : public StoredTables {
protected:
    OrderedLook() {
        add(running, "running");
        add(sum, "sums");
        wire("rows", "table", "running", "table");
        wire("running", "table", "sums", "table");
    }
};

TEST_F(OrderedLook, hasTheSameBitsForAnyThreads) {
    rows.isLate = true;
    std::vector<double> found;
    for (const std::size_t threads : {1U, 2U, 5U}) {
        runner.reset();
        runner.setThreads(threads);
        run();
        ASSERT_FALSE(report.hasFailure()) << messages.str();
        EXPECT_EQ(of("running").rowsOut, 70000U);
        found.push_back(number("sums"));
    }
    EXPECT_EQ(found[0], found[1]);
    EXPECT_EQ(found[0], found[2]);
}

TEST_F(OrderedLook, worksBehindAnOperatorThatDropsRows) {
    wire("cut", "table", "running", "table");
    set("cut", "cut", "0");
    run();
    EXPECT_FALSE(report.hasFailure()) << messages.str();
    EXPECT_EQ(of("running").rowsIn, of("cut").rowsOut);
}

TEST_F(OrderedLook, thatFailsNamesTheFirstBadRow) {
    set("running", "failAt", "40000");
    for (const std::size_t threads : {1U, 4U}) {
        runner.reset();
        runner.setThreads(threads);
        run();
        EXPECT_EQ(sentence("running"), "input \"failAt\": row 40001 is bad");
        EXPECT_EQ(status("sums"), NodeStatus::Skipped);
        EXPECT_EQ(status("direct"), NodeStatus::Done);
    }
}

}  // namespace
}  // namespace velmorak::test
