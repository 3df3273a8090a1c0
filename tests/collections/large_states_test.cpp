#include "KindHarness.h"

#include "run/pass/StateMerger.h"

#include <velmorak/ObjectBytes.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;

/// Numbers whose sums are exact in any order.
SmallTable exactTable(std::size_t rows) {
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t row = 0; row < rows; ++row) {
        x.push_back(static_cast<double>(row * 7 % 300));
        y.push_back(static_cast<double>(row * 11 % 200));
    }
    return test::tableOf({{"x", x}, {"y", y}}, 50);
}

TEST(LargeHistogramStates, areMergedOverFiles) {
    std::vector<std::string> results;
    for (const std::size_t chunksInFile : {100U, 3U, 1U}) {
        KindHarness harness("Histogram2D");
        for (const auto& [input, value] : ValueTexts{
                 {"x", "x"}, {"y", "y"}, {"xbins", "300"}, {"ybins", "200"}, {"xhigh", "300"}, {"yhigh", "200"}}) {
            harness.set(input, value);
        }
        const SmallTable table = exactTable(1000);
        harness.wire("table", table);
        const auto accumulation = harness.accumulation();
        StateMerger merger(*accumulation, Accumulator::MergeOrder::Tree);
        for (std::size_t chunk = 0; chunk < table.chunks.size(); ++chunk) {
            std::unique_ptr<AccumulatorState> state = accumulation->newState();
            state->fill(table.chunks[chunk]);
            merger.take({chunk / chunksInFile, chunk % chunksInFile}, std::move(state));
        }
        harness.finish(*accumulation, *merger.whole());
        results.push_back(bytesOf(*std::get<DataObjectPtr>(harness.value("histogram"))));
    }
    EXPECT_EQ(results[1], results[0]) << "3 chunks in each file";
    EXPECT_EQ(results[2], results[0]) << "1 chunk in each file";
}

}  // namespace
