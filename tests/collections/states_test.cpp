#include "KindHarness.h"

#include "run/pass/StateMerger.h"
#include "table/Checksum.h"

#include <velmorak/ObjectBytes.h>
#include <velmorak/OrderedAccumulation.h>
#include <velmorak/StateBytes.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::shippedGroups;
using test::SmallTable;

/// Values of a plug-in, and the table that it gets.
struct Case {
    std::string kind;
    std::string tableInput;
    ValueTexts values;
    std::size_t chunks = 23;
    std::size_t rowsInChunk = 9;
};

/// Several for each kind that accumulates: one for each class of its states and each form that they can have.
std::vector<Case> cases() {
    const ValueTexts plane = {{"x", "x"},     {"y", "y"},     {"weight", "w"}, {"xbins", "8"}, {"xlow", "-2"},
                              {"xhigh", "2"}, {"ybins", "7"}, {"ylow", "-2"},  {"yhigh", "2"}};
    ValueTexts space = plane;
    space.insert({{"z", "k"}, {"zbins", "3"}, {"zlow", "0"}, {"zhigh", "9"}});
    ValueTexts surface = plane;
    surface["z"] = "k";
    ValueTexts wide = plane;
    wide["xbins"] = "300";
    wide["ybins"] = "200";
    return {
        {"Statistics", "data", {{"expression", "y"}, {"weight", "w"}}},
        {"Statistics", "data", {{"expression", "y"}, {"weight", "w"}}, 23, 900},
        {"Statistics", "data", {{"expression", "x"}}},
        {"Statistics", "data", {{"expression", "k"}}},
        {"CutFlow", "table", {{"cuts", "first: x > -1; second: y < 1"}, {"weight", "y"}}},
        {"CutFlow", "table", {{"cuts", "first: k > 3"}}},
        {"Print", "object", {{"rows", "40"}}},
        {"Print", "object", {{"rows", "0"}}},
        {"CsvWriter", "object", {}},
        {"ParquetWriter", "table", {}},
        {"NumpyWriter", "table", {{"file", "rows.npz"}}},
        {"AidaWriter", "object", {}},
        {"RootWriter", "object", {}},
        {"Histogram1D", "table", {{"expression", "x"}, {"weight", "w"}, {"low", "-2"}, {"high", "2"}}},
        {"Histogram1D", "table", {{"expression", "x"}, {"low", "-2"}, {"high", "2"}, {"bins", "40000"}}},
        {"Histogram1D", "table", {{"expression", "k"}, {"range", "automatic"}, {"bins", "10"}}},
        {"Histogram1D", "table", {{"expression", "k"}, {"range", "automatic"}, {"bins", "10"}}, 23, 90},
        {"Histogram2D", "table", plane},
        {"Histogram2D", "table", wide},
        {"Profile1D", "table", {{"x", "x"}, {"y", "y"}, {"weight", "w"}, {"low", "-2"}, {"high", "2"}}},
        {"Profile1D", "table", {{"x", "x"}, {"y", "y"}, {"low", "-2"}, {"high", "2"}, {"bins", "40000"}}},
        {"Profile1D", "table", {{"x", "k"}, {"y", "y"}, {"range", "automatic"}, {"bins", "10"}}, 23, 90},
        {"Histogram3D", "table", space},
        {"Profile2D", "table", surface},
        {"CategoryHistogram", "table", {{"expression", "k > 3"}, {"weight", "w"}}},
        {"GroupedHistogram",
         "table",
         {{"key", "k"}, {"expression", "x"}, {"weight", "w"}, {"bins", "5"}, {"low", "-2"}, {"high", "2"}}},
        {"GroupedHistogram",
         "table",
         {{"key", "x"}, {"keyedges", "-1 0 1"}, {"expression", "y"}, {"bins", "5"}, {"low", "-2"}, {"high", "2"}}},
        {"CategoryHistogram", "table", {{"expression", "if(k > 5, 7, if(k > 2, -3, 11))"}, {"weight", "w"}}},
        {"CategoryHistogram", "table", {{"expression", "toDate(k)"}, {"weight", "w"}, {"order", "appearance"}}},
        {"QuantileEdges", "table", {{"expression", "y"}, {"bins", "7"}}},
    };
}

double oneOf(std::mt19937_64& random, double otherwise) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array special = {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, -0.0};
    return random() % 40 == 0 ? special[random() % special.size()] : otherwise;
}

/// x with NaN and infinities, finite y, weights w of both signs, small integers k.
SmallTable tableFor(const Case& each) {
    std::mt19937_64 random(7);
    std::normal_distribution<double> gauss;
    std::vector<std::pair<std::string, std::vector<double>>> columns = {{"x", {}}, {"y", {}}, {"w", {}}, {"k", {}}};
    for (std::size_t row = 0; row < each.chunks * each.rowsInChunk; ++row) {
        columns[0].second.push_back(oneOf(random, gauss(random)));
        columns[1].second.push_back(gauss(random));
        columns[2].second.push_back(gauss(random) + 0.5);
        columns[3].second.push_back(static_cast<double>(random() % 10));
    }
    return test::tableOf(columns, each.rowsInChunk);
}

/// A prepared accumulation; each simulates a separate process.
class Harness {
public:
    explicit Harness(const Case& each)
        : harness(each.kind), table(tableFor(each)), kindName(each.kind), orderOfKind(orderOf(harness.kind())) {
        for (const auto& [input, value] : each.values) {
            harness.set(input, value);
        }
        harness.wire(each.tableInput, table).expectWarnings();
        prepared = harness.accumulation();
    }

    std::unique_ptr<AccumulatorState> empty() const { return prepared->newState(); }
    std::unique_ptr<AccumulatorState> filled(std::size_t chunk) const {
        std::unique_ptr<AccumulatorState> state = empty();
        state->fill(table.chunks[chunk]);
        return state;
    }
    std::unique_ptr<AccumulatorState> loaded(const std::string& bytes) const {
        std::unique_ptr<AccumulatorState> state = empty();
        loadState(*state, bytes, kindName);
        return state;
    }
    std::string saved(const AccumulatorState& state) const { return savedState(state, kindName); }
    bool isOrdered() const {
        return orderOfKind == Accumulator::MergeOrder::FirstToLast ||
               dynamic_cast<const OrderedAccumulation*>(prepared.get());
    }
    StateMerger merger() const { return {*prepared, orderOfKind}; }
    StateMerger merger(const PassRange& range, std::function<void(StatePiece)> give) const {
        return {*prepared, orderOfKind, range, std::move(give)};
    }
    std::size_t chunks() const { return table.chunks.size(); }

    /// Every bit of the results: values, messages and files.
    std::string results(AccumulatorState& state) {
        harness.finish(*prepared, state);
        std::string text = harness.printed();
        for (const auto& [output, value] : harness.values()) {
            text += output + "=" + std::visit([](const auto& it) { return bitsOf(it); }, value) + "\n";
        }
        for (const auto& file : std::filesystem::directory_iterator(harness.folder())) {
            text += test::textIn(file.path());
        }
        return text;
    }

private:
    static Accumulator::MergeOrder orderOf(const Kind& kind) {
        return dynamic_cast<const Accumulator&>(kind).mergeOrder();
    }
    static std::string bitsOf(double number) { return std::to_string(std::bit_cast<std::uint64_t>(number)); }
    static std::string bitsOf(const std::string& text) { return text; }
    static std::string bitsOf(const DataObjectPtr& object) { return bytesOf(*object); }
    template <typename Other>
    static std::string bitsOf(const Other&) {
        return "nothing";
    }

    KindHarness harness;
    SmallTable table;
    std::string kindName;
    Accumulator::MergeOrder orderOfKind;
    std::unique_ptr<Accumulation> prepared;
};

std::string nameOf(const Case& each, std::size_t number) {
    return each.kind + ", case " + std::to_string(number);
}

std::string resultsOf(const Case& each) {
    Harness bench(each);
    StateMerger merger = bench.merger();
    for (std::size_t chunk = 0; chunk < bench.chunks(); ++chunk) {
        merger.take({0, chunk}, bench.filled(chunk));
    }
    return bench.results(*merger.whole());
}

/// Every process but the last saves the states of some chunks; the last one loads them and takes the other chunks.
std::string resultsOfTree(const Case& each, std::size_t cut) {
    const Harness first(each);
    MergeTree before;
    for (std::size_t chunk = 0; chunk < cut; ++chunk) {
        before.take({0, chunk}, first.loaded(first.saved(*first.filled(chunk))));
    }
    Harness second(each);
    MergeTree whole;
    for (TreeNode& part : before.release()) {
        part.node.state = second.loaded(first.saved(*part.node.state));
        whole.take(std::move(part));
    }
    for (std::size_t chunk = cut; chunk < second.chunks(); ++chunk) {
        whole.take({0, chunk}, second.filled(chunk));
    }
    return second.results(*whole.whole());
}

std::string resultsInOrder(const Case& each, std::size_t cut) {
    const Harness first(each);
    std::unique_ptr<AccumulatorState> state = first.empty();
    for (std::size_t chunk = 0; chunk < cut; ++chunk) {
        state->merge(*first.loaded(first.saved(*first.filled(chunk))));
    }
    Harness second(each);
    const std::unique_ptr<AccumulatorState> whole = second.loaded(first.saved(*state));
    for (std::size_t chunk = cut; chunk < second.chunks(); ++chunk) {
        whole->merge(*second.filled(chunk));
    }
    return second.results(*whole);
}

/// Such a kind works while the parts of a run are merged, and its states are never saved.
bool storesTable(const Kind& kind) {
    const std::vector<OutputSpec> outputs = kind.ports({}).outputs;
    return std::any_of(outputs.begin(), outputs.end(),
                       [](const OutputSpec& output) { return output.type == ValueType::Table; });
}

TEST(ShippedStates, ofEveryAccumulatorAreTested) {
    std::set<std::string> tested;
    for (const Case& each : cases()) {
        tested.insert(each.kind);
    }
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            if (dynamic_cast<const Accumulator*>(kind.get()) && !storesTable(*kind)) {
                EXPECT_TRUE(tested.contains(kind->name())) << kind->name() << " needs a case above";
            }
        }
    }
}

/// Chunks are dealt out to files at random.
std::vector<ChunkPlace> placesOf(std::size_t chunks, std::mt19937_64& random) {
    std::vector<ChunkPlace> places = {{0, 0}};
    while (places.size() < chunks) {
        const ChunkPlace last = places.back();
        places.push_back(random() % 4 == 0 ? ChunkPlace{last.file + 1 + random() % 2, 0}
                                           : ChunkPlace{last.file, last.chunk + 1});
    }
    return places;
}

std::string resultsOfPlaces(const Case& each, const std::vector<ChunkPlace>& places) {
    Harness bench(each);
    StateMerger merger = bench.merger();
    for (std::size_t i = 0; i < places.size(); ++i) {
        merger.take(places[i], bench.filled(i));
    }
    return bench.results(*merger.whole());
}

/// Each range between two cuts is merged by a process of its own, which saves what it has.
std::string resultsOfRanges(const Case& each, const std::vector<ChunkPlace>& places, std::vector<std::size_t> cuts) {
    Harness last(each);
    StateMerger whole = last.merger();
    cuts.push_back(places.size());
    for (std::size_t part = 0, next = 0; part < cuts.size(); ++part) {
        const PassRange range{next == 0 ? ChunkPlace{} : places[next],
                              cuts[part] == places.size() ? ChunkPlace{places.back().file + 1, 0} : places[cuts[part]]};
        const Harness bench(each);
        StateMerger merger = bench.merger(range, [&](StatePiece piece) {
            piece.state = last.loaded(bench.saved(*piece.state));
            whole.take(std::move(piece));
        });
        for (; next < cuts[part]; ++next) {
            merger.take(places[next], bench.filled(next));
        }
        merger.release();
    }
    return last.results(*whole.whole());
}

/// How many times each case is cut; scripts/test --long sets more.
int trials() {
    const char* const given = std::getenv("VELMORAK_TEST_TRIALS");
    return given ? std::atoi(given) : 12;
}

TEST(ShippedStates, haveTheSameBitsForEveryCutIntoParts) {
    std::mt19937_64 random(20261122);
    std::size_t number = 0;
    for (const Case& each : cases()) {
        const std::string name = nameOf(each, number++);
        for (int trial = 0; trial < trials(); ++trial) {
            const std::vector<ChunkPlace> places = placesOf(each.chunks, random);
            std::vector<std::size_t> cuts;
            for (std::size_t at = 1; at < places.size(); ++at) {
                if (random() % (trial % 2 == 0 ? 3 : 9) == 0) {
                    cuts.push_back(at);
                }
            }
            ASSERT_EQ(resultsOfRanges(each, places, cuts), resultsOfPlaces(each, places)) << name << ", " << trial;
        }
    }
}

TEST(ShippedStates, goOnWithTheSameBitsAfterTheyWereLoaded) {
    std::mt19937 random(11);
    std::size_t number = 0;
    for (const Case& each : cases()) {
        const std::string name = nameOf(each, number++);
        const std::string expected = resultsOf(each);
        for (const std::size_t cut : {std::size_t{0}, random() % each.chunks, random() % each.chunks, each.chunks}) {
            const bool isOrdered = Harness(each).isOrdered();
            EXPECT_EQ(isOrdered ? resultsInOrder(each, cut) : resultsOfTree(each, cut), expected)
                << name << ", cut at chunk " << cut;
        }
    }
}

std::string resealed(std::string bytes) {
    const std::uint64_t sum = checksum(bytes);
    return bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
}

/// Loads the bytes, and merges what comes out on either side.
std::unique_ptr<AccumulatorState> merged(const Harness& bench, const std::string& bytes) {
    const std::unique_ptr<AccumulatorState> state = bench.loaded(bytes);
    state->merge(*bench.filled(0));
    std::unique_ptr<AccumulatorState> whole = bench.filled(1);
    whole->merge(*state);
    return whole;
}

/// Gives the damaged byte a right checksum, and uses the state as the run would.
/// @param bench a new one if the state is finished, too.
void use(Harness& bench, std::string bytes, bool isFinished) {
    bytes.resize(bytes.size() - sizeof(std::uint64_t));
    try {
        const std::unique_ptr<AccumulatorState> whole = merged(bench, resealed(bytes));
        if (isFinished) {
            bench.results(*whole);
        }
    } catch (const Failure& failure) {
        EXPECT_STRNE(failure.what(), "");
    } catch (const std::exception& error) {  // Of numbers that make no sense together; the run reports it.
        EXPECT_STRNE(error.what(), "");
    }
}

/// The state of the first chunks of a case. Ordered accumulations are merged into a new one, as in a run.
std::string someBytes(const Case& each) {
    const Harness bench(each);
    const std::unique_ptr<AccumulatorState> state = bench.isOrdered() ? bench.empty() : bench.filled(0);
    for (std::size_t chunk = 1; chunk < each.chunks; ++chunk) {
        state->merge(*bench.filled(chunk));
    }
    return bench.saved(*state);
}

TEST(ShippedStates, thatEndTooEarlyAreRefused) {
    for (const Case& each : cases()) {
        const std::string bytes = someBytes(each);
        const std::string body = bytes.substr(0, bytes.size() - sizeof(std::uint64_t));
        const Harness bench(each);
        const std::size_t step = bytes.size() < 20000 ? 1 : bytes.size() / 1000;
        for (std::size_t size = 0; size < bytes.size(); size += step) {
            EXPECT_THROW(bench.loaded(bytes.substr(0, size)), Failure) << each.kind << ", " << size;
        }
        for (std::size_t size = 0; size < body.size(); size += step) {
            EXPECT_THROW(bench.loaded(resealed(body.substr(0, size))), Failure) << each.kind << ", " << size;
        }
    }
}

TEST(ShippedStates, thatAreDamagedGiveAFailureOrAState) {
    std::mt19937 random(3);
    for (const Case& each : cases()) {
        const std::string bytes = someBytes(each);
        Harness bench(each);
        // What decides about the rest is at the beginning: each byte of it, and 1000 of all.
        constexpr std::size_t first = 200;
        for (std::size_t i = 0; i < first + 1000; ++i) {
            std::string damaged = bytes;
            const std::size_t at = i < std::min(first, bytes.size()) ? i : random() % bytes.size();
            damaged[at] = static_cast<char>(damaged[at] ^ static_cast<char>(1 + random() % 255));
            EXPECT_THROW(bench.loaded(damaged), Failure) << each.kind << ", " << at;
            use(bench, damaged, false);
            if (i % 20 == 0) {
                Harness another(each);
                use(another, damaged, true);
            }
        }
    }
}

}  // namespace
