#include "RunFixture.h"

#include <velmorak/RowBounds.h>

namespace velmorak::test {
namespace {

using Relation = ColumnBound::Relation;
using Bounds = std::vector<ColumnBound>;

/// Yields rows of a column x in two chunks: 0, 1, 2 and so on.
class RangedSource : public Source {
public:
    std::string name() const override { return "Ranged"; }
    std::string summary() const override { return "Yields one column."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments&, RunContext&) const override {
        return std::make_unique<Reader>(*this);
    }

    mutable std::vector<Bounds> told;

private:
    class Reader : public TableReader, public BoundedReader {
    public:
        explicit Reader(const RangedSource& kind) : kind(kind) {}
        const Schema& schema() const override { return columns; }
        void leaveOutBeyond(const Bounds& bounds) override {
            limits = bounds;
            kind.told.push_back(bounds);
        }
        bool next(Chunk& chunk) override {
            if (row == 2 * chunkRows) {
                return false;
            }
            Column::Reals values;
            for (std::size_t i = 0; i < chunkRows; ++i) {
                const auto value = static_cast<double>(row + i);
                const bool isBeyond = !limits.empty() && limits.front().excludes(value, value);
                values.push_back(isBeyond ? -1e9 : value);
            }
            chunk.rows = chunkRows;
            chunk.columns.push_back(columnOf(values));
            row += chunkRows;
            return true;
        }

    private:
        const RangedSource& kind;
        const Schema columns{{{"x", ColumnType::Real, false, ""}}};
        Bounds limits;
        std::size_t row = 0;
    };
};

/// Keeps the rows whose x is above its input "above".
class AboveKind : public RowWise {
public:
    std::string name() const override { return "Above"; }
    std::string summary() const override { return "Keeps rows."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), numberInput("above")}, {output("table", ValueType::Table)}};
    }
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext&) const override {
        return std::make_unique<Operation>(schema, arguments.number("above"));
    }

private:
    class Operation : public RowOperation, public BoundedOperation {
    public:
        Operation(Schema schema, double above) : columns(std::move(schema)), above(above) {}
        const Schema& schema() const override { return columns; }
        Bounds bounds() const override { return {{0, Relation::Greater, above}}; }
        Chunk apply(const Chunk& chunk) const override {
            std::vector<std::uint8_t> keep;
            for (const double value : chunk.columns[0]->reals()) {
                keep.push_back(value > above ? 1 : 0);
            }
            Chunk out = chunk;
            out.rows = static_cast<std::size_t>(std::count(keep.begin(), keep.end(), 1));
            out.columns[0] = keepRows(*chunk.columns[0], keep);
            return out;
        }

    private:
        const Schema columns;
        const double above;
    };
};

class RowBoundsOfARun : public RunTest {
protected:
    void addAbove(const std::string& name, const std::string& from, const std::string& limit) {
        add(above, name, {{"above", limit}});
        wire(from, "table", name, "table");
    }
    void addSum(const std::string& name, const std::string& from) {
        add(sum, name);
        wire(from, "table", name, "table");
    }

    RangedSource ranged;
    AboveKind above;
    SumKind sum;
};

TEST_F(RowBoundsOfARun, reachTheSourceThatOnlyOneOperationReads) {
    add(ranged, "rows");
    addAbove("cut", "rows", "7");
    addSum("a", "cut");
    addSum("b", "cut");
    run();
    EXPECT_EQ(ranged.told, (std::vector<Bounds>{{{0, Relation::Greater, 7.0}}}));
}

TEST_F(RowBoundsOfARun, areThoseOfTheFirstOperationAlone) {
    add(ranged, "rows");
    addAbove("cut", "rows", "7");
    addAbove("harder", "cut", "9");
    addSum("a", "harder");
    run();
    EXPECT_EQ(ranged.told, (std::vector<Bounds>{{{0, Relation::Greater, 7.0}}}));
}

TEST_F(RowBoundsOfARun, areNotToldWhereSomethingElseReadsTheRows) {
    add(ranged, "rows");
    addAbove("cut", "rows", "7");
    addSum("a", "cut");
    addSum("all", "rows");
    run();
    EXPECT_TRUE(ranged.told.empty());
}

TEST_F(RowBoundsOfARun, areNotToldWhereTwoOperationsReadTheRows) {
    add(ranged, "rows");
    addAbove("cut", "rows", "7");
    addAbove("other", "rows", "5");
    addSum("a", "cut");
    addSum("b", "other");
    run();
    EXPECT_TRUE(ranged.told.empty());
}

TEST_F(RowBoundsOfARun, leaveTheCountsOfRowsAsTheyAre) {
    add(ranged, "rows");
    addAbove("cut", "rows", "40000");
    addSum("a", "cut");
    run();
    double expected = 0.0;
    for (std::size_t i = 40001; i < 2 * chunkRows; ++i) {
        expected += static_cast<double>(i);
    }
    EXPECT_EQ(number("a"), expected);
    EXPECT_EQ(of("rows").rowsOut, 2 * chunkRows);
    EXPECT_EQ(of("cut").rowsIn, 2 * chunkRows);
    EXPECT_EQ(of("cut").rowsOut, 2 * chunkRows - 40001);
}

}  // namespace
}  // namespace velmorak::test
