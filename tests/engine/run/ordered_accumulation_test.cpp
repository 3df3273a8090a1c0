#include "RunFixture.h"

#include <velmorak/OrderedAccumulation.h>

namespace velmorak::test {
namespace {

/// Writes down the numbers of the chunks, and where states met.
struct Numbers : AccumulatorState {
    void fill(const Chunk& chunk) override { text += std::to_string(chunk.number); }
    void merge(AccumulatorState& other) override { text = "(" + text + "+" + dynamic_cast<Numbers&>(other).text + ")"; }
    std::string text;
};

template <typename Base>
class Numbering : public Base {
public:
    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<Numbers>(); }
    void finish(AccumulatorState& state, Results& results) override {
        results.set("text", dynamic_cast<Numbers&>(state).text);
    }
};

/// Its accumulation is ordered where its input says so.
class NumberingKind : public Accumulator {
public:
    std::string name() const override { return "Numbering"; }
    std::string summary() const override { return "Numbers chunks."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), numberInput("ordered")}, {output("text", ValueType::Text)}};
    }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema*, RunContext&) const override {
        if (arguments.number("ordered") != 0.0) {
            return std::make_unique<Numbering<OrderedAccumulation>>();
        }
        return std::make_unique<Numbering<Accumulation>>();
    }
};

class OrderedAccumulations : public RunTest {};

TEST_F(OrderedAccumulations, meetFromFirstToLastThoughOthersOfTheirKindMeetInATree) {
    const RowSource rows;
    const NumberingKind kind;
    add(rows, "rows", {{"rows", std::to_string(3 * chunkRows + 5)}});
    add(kind, "tree");
    add(kind, "ordered", {{"ordered", "1"}});
    wire("rows", "table", "tree", "table");
    wire("rows", "table", "ordered", "table");
    for (const std::size_t threads : {1U, 4U}) {
        runner.setThreads(threads);
        runner.reset();
        run();
        EXPECT_EQ(text("tree"), "((0+1)+(2+3))");
        EXPECT_EQ(text("ordered"), "((((+0)+1)+2)+3)");
    }
}

}  // namespace
}  // namespace velmorak::test
