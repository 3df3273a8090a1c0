#include "RunFixture.h"

#include <set>

namespace velmorak::test {
namespace {

using Columns = std::vector<bool>;

/// Yields rows of the columns x, y and z, without those that nobody needs.
class WideSource : public Source {
public:
    std::string name() const override { return "Wide"; }
    std::string summary() const override { return "Yields three columns."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments&, RunContext&) const override;

    mutable std::vector<Columns> selections;
    bool isLate = false;
    bool leavesOutX = false;

private:
    class Reader;
};

class WideSource::Reader : public TableReader {
public:
    explicit Reader(const WideSource& kind) : kind(kind) {}
    const Schema& schema() const override { return columns; }
    void selectColumns(const Columns& isNeeded) override {
        needed = isNeeded;
        kind.selections.push_back(needed);
    }
    bool next(Chunk& chunk) override {
        chunk.rows = std::min(chunkRows, rows - row);
        if (!kind.isLate) {
            make(chunk, row);
        }
        row += chunk.rows;
        return chunk.rows > 0;
    }
    void complete(Chunk& chunk) const override {
        if (kind.isLate) {
            make(chunk, chunk.firstRow);
        }
    }

private:
    void make(Chunk& chunk, std::uint64_t first) const {
        for (std::size_t column = 0; column < 3; ++column) {
            Column::Reals values;
            for (std::size_t i = 0; i < chunk.rows; ++i) {
                values.push_back(valueOfRow(3 * (first + i) + column));
            }
            const bool isLeftOut = !needed[column] || (column == 0 && kind.leavesOutX);
            chunk.columns.push_back(isLeftOut ? nullptr : std::make_shared<Column>(Column{std::move(values), {}}));
        }
    }

    static constexpr std::size_t rows = 100'000;

    const WideSource& kind;
    Schema columns{
        {{"x", ColumnType::Real, false, ""}, {"y", ColumnType::Real, false, ""}, {"z", ColumnType::Real, false, ""}}};
    Columns needed;
    std::size_t row = 0;
};

std::unique_ptr<TableReader> WideSource::open(const Arguments&, RunContext&) const {
    return std::make_unique<Reader>(*this);
}

/// Keeps the rows whose column "by" is positive, and passes all columns through.
class KeepKind : public RowWise {
public:
    std::string name() const override { return "Keep"; }
    std::string summary() const override { return "Keeps rows."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), textInput("by", "x")}, {output("table", ValueType::Table)}};
    }
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext&) const override {
        return std::make_unique<Operation>(schema, *schema.find(arguments.text("by")));
    }

private:
    class Operation : public RowOperation {
    public:
        Operation(Schema schema, std::size_t by) : columns(std::move(schema)), by(by) {}
        const Schema& schema() const override { return columns; }
        void markColumns(const Columns& wanted, Columns& needed) override {
            needed = wanted;
            needed[by] = true;
        }
        Chunk apply(const Chunk& chunk) const override {
            std::vector<std::uint8_t> keep;
            for (const double value : chunk.columns[by]->reals()) {
                keep.push_back(value > 0.0 ? 1 : 0);
            }
            Chunk out = chunk;
            out.rows = static_cast<std::size_t>(std::count(keep.begin(), keep.end(), 1));
            for (ColumnPtr& column : out.columns) {
                column = column ? keepRows(*column, keep) : nullptr;
            }
            return out;
        }

    private:
        Schema columns;
        std::size_t by;
    };
};

/// Sums up the column "of", and says which columns it has seen.
class TotalKind : public Accumulator {
public:
    std::string name() const override { return "Total"; }
    std::string summary() const override { return "Sums up one column."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), textInput("of", "x")},
                {output("total", ValueType::Number), output("seen", ValueType::Text)}};
    }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext&) const override {
        return std::make_unique<Totalling>(*this, *schema->find(arguments.text("of")));
    }

    bool saysWhatItNeeds = true;
    bool marksTooMany = false;
    bool throwsWhenItMarks = false;

private:
    struct State : AccumulatorState {
        explicit State(std::size_t of) : of(of) {}
        void fill(const Chunk& chunk) override {
            for (const double value : chunk.columns[of]->reals()) {
                total += value;
            }
            for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
                if (chunk.columns[i]) {
                    seen.insert("xyz"[i]);
                }
            }
        }
        void merge(AccumulatorState& other) override {
            total += dynamic_cast<State&>(other).total;
            seen.merge(dynamic_cast<State&>(other).seen);
        }
        std::size_t of;
        double total = 0.0;
        std::set<char> seen;
    };

    class Totalling : public Accumulation {
    public:
        Totalling(const TotalKind& kind, std::size_t of) : kind(kind), of(of) {}
        std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<State>(of); }
        void markColumns(Columns& needed) const override {
            if (kind.throwsWhenItMarks) {
                throw Failure("of", "nothing can be marked");
            }
            if (kind.marksTooMany) {
                needed.resize(5);
            }
            if (!kind.saysWhatItNeeds) {
                return Accumulation::markColumns(needed);
            }
            needed[of] = true;
        }
        void finish(AccumulatorState& state, Results& results) override {
            const State& all = dynamic_cast<State&>(state);
            results.set("total", all.total);
            results.set("seen", std::string(all.seen.begin(), all.seen.end()));
        }

    private:
        const TotalKind& kind;
        std::size_t of;
    };
};

class ColumnUse : public RunTest {
protected:
    void addTotal(const std::string& name, const std::string& from, const std::string& column) {
        add(total, name, {{"of", column}});
        wire(from, "table", name, "table");
    }
    void addKeep(const std::string& name, const std::string& from, const std::string& column) {
        add(keep, name, {{"by", column}});
        wire(from, "table", name, "table");
    }

    /// Without results of earlier runs.
    void runAnew() {
        Runner other{messages, false};
        report = other.run(pipeline);
    }

    WideSource wide;
    KeepKind keep;
    TotalKind total;
    CutKind cut;
    JoinKind join;
};

TEST_F(ColumnUse, tellsASourceWhichColumnsSomebodyReads) {
    add(wide, "wide");
    addTotal("a", "wide", "y");
    run();
    EXPECT_EQ(wide.selections, (std::vector<Columns>{{false, true, false}}));
    EXPECT_EQ(text("a", 1), "y");
}

TEST_F(ColumnUse, goesBackThroughOperationsThatPassColumnsOn) {
    add(wide, "wide");
    addKeep("keep", "wide", "z");
    addTotal("a", "keep", "y");
    run();
    EXPECT_EQ(wide.selections, (std::vector<Columns>{{false, true, true}}));
    EXPECT_EQ(text("a", 1), "y") << "the filter alone needs z";
}

TEST_F(ColumnUse, unitesTheNeedsOfAllConsumers) {
    add(wide, "wide");
    addTotal("a", "wide", "x");
    addKeep("keep", "wide", "x");
    addTotal("b", "keep", "z");
    run();
    EXPECT_EQ(wide.selections, (std::vector<Columns>{{true, false, true}}));
}

TEST_F(ColumnUse, givesTheSameBitsAsAllColumns) {
    const auto totalWith = [this](bool saysWhatItNeeds, bool isLate) {
        wide.isLate = isLate;
        total.saysWhatItNeeds = saysWhatItNeeds;
        pipeline.nodes.clear();
        add(wide, "wide");
        addKeep("keep", "wide", "z");
        addTotal("a", "keep", "y");
        runAnew();
        return number("a");
    };
    const double all = totalWith(false, false);
    EXPECT_NE(all, 0.0);
    EXPECT_EQ(totalWith(true, false), all);
    EXPECT_EQ(totalWith(false, true), all);
    EXPECT_EQ(totalWith(true, true), all);
    EXPECT_EQ(wide.selections,
              (std::vector<Columns>{{true, true, true}, {false, true, true}, {true, true, true}, {false, true, true}}));
}

TEST_F(ColumnUse, isAllColumnsForKindsThatDoNotSay) {
    add(wide, "wide");
    add(cut, "cut");
    wire("wide", "table", "cut", "table");
    add(join, "join");
    wire("wide", "table", "join", "first");
    wire("wide", "table", "join", "second");
    addTotal("a", "join", "y");
    run();
    for (const Columns& selection : wide.selections) {
        EXPECT_EQ(selection, (Columns{true, true, true}));
    }
    EXPECT_EQ(wide.selections.size(), 3U) << "once for the cut, twice for the concatenation";
}

TEST_F(ColumnUse, isAllColumnsWhereTheRowsAreTheResult) {
    add(wide, "wide");
    addKeep("keep", "wide", "z");
    run();
    EXPECT_EQ(wide.selections, (std::vector<Columns>{{true, true, true}}));
    pipeline.nodes.clear();
    wide.selections.clear();
    add(wide, "wide");
    runAnew();
    EXPECT_EQ(wide.selections, (std::vector<Columns>{{true, true, true}}));
}

TEST_F(ColumnUse, doesNotExcuseASourceThatLeavesOutMore) {
    wide.leavesOutX = true;
    add(wide, "wide");
    addTotal("a", "wide", "x");
    run();
    EXPECT_EQ(status("wide"), NodeStatus::Failed);
    EXPECT_NE(sentence("wide").find("a column \"x\" without values"), std::string::npos) << sentence("wide");
}

TEST_F(ColumnUse, refusesMarksOfColumnsThatDoNotExist) {
    total.marksTooMany = true;
    add(wide, "wide");
    addTotal("a", "wide", "x");
    run();
    EXPECT_EQ(status("a"), NodeStatus::Failed);
    EXPECT_NE(sentence("a").find("marks 5 columns of a table that has 3"), std::string::npos) << sentence("a");
}

TEST_F(ColumnUse, failsAPlugInThatCannotMark) {
    total.throwsWhenItMarks = true;
    add(wide, "wide");
    addTotal("a", "wide", "x");
    run();
    EXPECT_EQ(status("a"), NodeStatus::Failed);
    EXPECT_NE(sentence("a").find("nothing can be marked"), std::string::npos) << sentence("a");
}

}  // namespace
}  // namespace velmorak::test
