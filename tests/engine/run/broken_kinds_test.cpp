#include "RunFixture.h"

#include <velmorak/ChunkSize.h>

namespace velmorak::test {
namespace {

using Next = std::function<bool(Chunk&)>;

ColumnPtr reals(std::size_t count) {
    return std::make_shared<Column>(Column{Column::Reals(count, 1.0), {}});
}

ColumnPtr lists(std::vector<std::uint64_t> offsets, std::size_t values) {
    return std::make_shared<Column>(Column{Column::Reals(values, 1.0), std::move(offsets)});
}

Schema oneColumn(bool isList = false) {
    return Schema({{"x", ColumnType::Real, isList, ""}});
}

/// Throws from schema, or gives the one it was made with.
struct FreeSchema {
    Schema columns = oneColumn();
    bool isThrown = false;

    const Schema& get() const {
        if (isThrown) {
            throw 5;
        }
        return columns;
    }
};

/// Yields what the test puts into its chunks.
class FreeSource : public Source {
public:
    std::string name() const override { return "Free"; }
    std::string summary() const override { return "Yields anything."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments&, RunContext&) const override {
        return hasReader ? std::make_unique<Reader>(*this) : nullptr;
    }

    FreeSchema schema;
    bool hasReader = true;
    Next next;
    std::function<void(Chunk&)> complete = [](Chunk&) {};

private:
    class Reader : public TableReader {
    public:
        explicit Reader(const FreeSource& kind) : kind(kind) {}
        const Schema& schema() const override { return kind.schema.get(); }
        bool next(Chunk& chunk) override { return kind.next(chunk); }
        void complete(Chunk& chunk) const override { kind.complete(chunk); }

    private:
        const FreeSource& kind;
    };
};

class FreeRowWise : public RowWise {
public:
    std::string name() const override { return "Change"; }
    std::string summary() const override { return "Yields anything."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table)}, {output("table", ValueType::Table)}};
    }
    std::unique_ptr<RowOperation> prepare(const Arguments&, const Schema&, RunContext&) const override {
        return hasOperation ? std::make_unique<Operation>(*this) : nullptr;
    }

    FreeSchema schema;
    bool hasOperation = true;
    bool isCounting = false;
    std::function<Chunk(const Chunk&)> apply = [](const Chunk& chunk) { return chunk; };

private:
    class Operation : public RowOperation {
    public:
        explicit Operation(const FreeRowWise& kind) : kind(kind) {}
        const Schema& schema() const override { return kind.schema.get(); }
        Chunk apply(const Chunk& chunk) const override { return kind.apply(chunk); }
        bool countsRows() const override { return kind.isCounting; }
        std::optional<std::uint64_t> rowLimit() const override {
            if (kind.isCounting) {
                throw Failure("it does not know");
            }
            return std::nullopt;
        }

    private:
        const FreeRowWise& kind;
    };
};

class FreeAccumulator : public Accumulator {
public:
    explicit FreeAccumulator(MergeOrder order = MergeOrder::Tree) : order(order) {}
    std::string name() const override { return "Gather"; }
    std::string summary() const override { return "Has the columns that the test gives it."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("object", ValueType::Any, true)}, {output("text", ValueType::Text)}};
    }
    MergeOrder mergeOrder() const override { return order; }
    std::unique_ptr<Accumulation> prepare(const Arguments&, const Schema*, RunContext&) const override {
        return hasAccumulation ? std::make_unique<Gathering>() : nullptr;
    }

    bool hasAccumulation = true;

private:
    class Gathering : public Accumulation {
    public:
        std::unique_ptr<AccumulatorState> newState() const override { return nullptr; }
        void finish(AccumulatorState&, Results& results) override { results.set("text", std::string("done")); }
    };

    MergeOrder order;
};

class BrokenKinds : public RunTest {
protected:
    BrokenKinds() {
        source.next = [this](Chunk& chunk) { return givesOnce(chunk, 10, reals(10)); };
    }

    /// One chunk, and no more.
    bool givesOnce(Chunk& chunk, std::size_t rows, ColumnPtr column) {
        chunk.rows = rows;
        chunk.columns = {std::move(column)};
        return std::exchange(isFirst, false);
    }
    void addAll() {
        add(source, "rows");
        add(rowWise, "change");
        add(sum, "sum");
        wire("rows", "table", "change", "table");
        wire("change", "table", "sum", "table");
    }
    void expectFailure(const std::string& plugin, const std::string& reason) {
        addAll();
        run();
        EXPECT_EQ(status(plugin), NodeStatus::Failed);
        EXPECT_EQ(sentence(plugin), reason);
        EXPECT_EQ(sentence("sum"), "not run because of \"" + plugin + "\"");
        EXPECT_EQ(sum.finished, 0);
    }
    /// @param columns that come from the source, or from what changes its rows.
    void expectRefused(const Schema& schema, std::size_t rows, std::vector<ColumnPtr> columns,
                       const std::string& reason) {
        source.schema.columns = schema;
        source.next = [&](Chunk& chunk) {
            chunk.rows = rows;
            chunk.columns = columns;
            return std::exchange(isFirst, false);
        };
        expectFailure("rows", reason);
        EXPECT_TRUE(wasSaid("Free \"rows\" failed: " + reason));
    }

    bool isFirst = true;
    FreeSource source;
    FreeRowWise rowWise;
    SumKind sum;
};

TEST_F(BrokenKinds, yieldTooFewValues) {
    expectRefused(oneColumn(), 12, {reals(10)}, "the kind yields a column \"x\" with 10 values for 12 rows");
}

TEST_F(BrokenKinds, yieldTooManyValues) {
    expectRefused(oneColumn(), 1, {reals(2)}, "the kind yields a column \"x\" with 2 values for 1 row");
}

TEST_F(BrokenKinds, yieldTooFewColumns) {
    expectRefused(oneColumn(), 10, {}, "the kind yields a chunk of 0 columns, and its table has 1");
}

TEST_F(BrokenKinds, yieldNullForAColumn) {
    expectRefused(oneColumn(), 10, {nullptr}, "the kind yields a column \"x\" without values");
}

TEST_F(BrokenKinds, yieldAnotherType) {
    expectRefused(oneColumn(), 1, {std::make_shared<Column>(Column{Column::Integers{1}, {}})},
                  "the kind yields a column \"x\" of type integer, and its table says real");
}

TEST_F(BrokenKinds, yieldListsThatWereNotPromised) {
    expectRefused(oneColumn(), 1, {lists({0, 1}, 1)},
                  "the kind yields a column \"x\" with lists, and its table says that it has none");
}

TEST_F(BrokenKinds, yieldNoListsThoughTheyWerePromised) {
    expectRefused(oneColumn(true), 1, {reals(1)},
                  "the kind yields a column \"x\" without lists, and its table says that it has them");
}

TEST_F(BrokenKinds, yieldTooFewOffsets) {
    expectRefused(oneColumn(true), 3, {lists({0, 1}, 1)},
                  "the kind yields a column \"x\" with 2 offsets for the lists of 3 rows");
}

TEST_F(BrokenKinds, yieldOffsetsThatFall) {
    expectRefused(oneColumn(true), 2, {lists({0, 5, 3}, 3)},
                  "the kind yields a column \"x\" whose offsets do not lead through its 3 values");
}

TEST_F(BrokenKinds, yieldOffsetsBeyondTheValues) {
    expectRefused(oneColumn(true), 1, {lists({0, 1000000}, 3)},
                  "the kind yields a column \"x\" whose offsets do not lead through its 3 values");
}

TEST_F(BrokenKinds, yieldMoreRowsThanAChunkHas) {
    expectRefused(oneColumn(), chunkRows + 1, {reals(chunkRows + 1)},
                  "the kind yields a chunk of 32769 rows, and 32768 are the most");
}

TEST_F(BrokenKinds, yieldARowThatIsTooLarge) {
    const std::string row(maxChunkBytes, 'x');
    expectRefused(Schema({{"x", ColumnType::Text, false, ""}}), 2,
                  {std::make_shared<Column>(Column{Column::Texts{"short", row}, {}})},
                  "row 2 takes 67108896 bytes, and 67108864 are the most");
}

TEST_F(BrokenKinds, yieldChunksWithoutRowsForEver) {
    source.next = [](Chunk& chunk) {
        chunk.columns = {reals(0)};
        return true;
    };
    expectFailure("rows", "the kind yields a chunk without rows");
}

TEST_F(BrokenKinds, yieldAShortChunkBeforeTheLast) {
    source.next = [chunks = 0](Chunk& chunk) mutable {
        chunk.rows = 10;
        chunk.columns = {reals(10)};
        return ++chunks < 3;
    };
    expectFailure("rows", "the kind yields a chunk of 10 rows before its last one, and 32768 are needed");
}

TEST_F(BrokenKinds, mayEndAChunkWhereItsTextsAreLarge) {
    source.schema.columns = Schema({{"x", ColumnType::Real, false, ""}, {"t", ColumnType::Text, false, ""}});
    source.next = [chunks = 0](Chunk& chunk) mutable {
        chunk.rows = 2;
        const Column::Texts texts(2, std::string(maxChunkBytes / 2, 'x'));
        chunk.columns = {reals(2), std::make_shared<Column>(Column{texts, {}})};
        return ++chunks < 3;
    };
    rowWise.schema.columns = source.schema.columns;
    addAll();
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done) << sentence("rows");
    EXPECT_EQ(number("sum"), 4.0);
}

TEST_F(BrokenKinds, completeAChunkWrongly) {
    source.next = [this](Chunk& chunk) { return givesOnce(chunk, 10, nullptr); };
    source.complete = [](Chunk& chunk) {
        chunk.rows = 5;
        chunk.columns = {reals(5)};
    };
    expectFailure("rows", "the kind yields a column \"x\" with 5 values for 10 rows");
}

TEST_F(BrokenKinds, changeRowsWrongly) {
    rowWise.apply = [](const Chunk& chunk) {
        Chunk made = chunk;
        made.columns = {reals(1)};
        return made;
    };
    expectFailure("change", "the kind yields a column \"x\" with 1 value for 10 rows");
    EXPECT_TRUE(wasSaid("Change \"change\" failed: the kind yields a column \"x\" with 1 value for 10 rows"));
}

TEST_F(BrokenKinds, giveNoReader) {
    source.hasReader = false;
    expectFailure("rows", "the kind gives no reader");
}

TEST_F(BrokenKinds, giveNoOperation) {
    rowWise.hasOperation = false;
    expectFailure("change", "the kind gives no operation");
}

TEST_F(BrokenKinds, throwWhenTheirReaderIsAskedForItsColumns) {
    source.schema.isThrown = true;
    expectFailure("rows", "it failed without saying why");
}

TEST_F(BrokenKinds, throwWhenTheirOperationIsAskedForItsColumns) {
    rowWise.schema.isThrown = true;
    expectFailure("change", "it failed without saying why");
}

TEST_F(BrokenKinds, throwWhenAskedHowManyRowsTheyNeed) {
    rowWise.isCounting = true;
    expectFailure("change", "it does not know");
}

TEST_F(BrokenKinds, giveNoAccumulationOrState) {
    FreeAccumulator bare;
    bare.hasAccumulation = false;
    const FreeAccumulator stateless;
    const FreeAccumulator inOrder(Accumulator::MergeOrder::FirstToLast);
    addAll();
    const std::map<std::string, const FreeAccumulator*> kinds{
        {"bare", &bare}, {"stateless", &stateless}, {"inOrder", &inOrder}};
    for (const auto& [name, kind] : kinds) {
        add(*kind, name);
        add(*kind, name + "Alone");
        wire("rows", "table", name, "object");
    }
    start("rows");
    run();
    for (const auto& [name, kind] : kinds) {
        EXPECT_EQ(sentence(name), kind == &bare ? "the kind gives no accumulation" : "the kind gives no state") << name;
    }
    EXPECT_EQ(status("sum"), NodeStatus::Done);
    for (const auto& [name, kind] : kinds) {
        start(name + "Alone");
        run();
        EXPECT_EQ(status(name + "Alone"), NodeStatus::Failed) << name;
    }
}

}  // namespace
}  // namespace velmorak::test
