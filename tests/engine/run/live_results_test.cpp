#include "RunFixture.h"

#include "run/RunListener.h"
#include "run/announce/Announcement.h"
#include "run/announce/RuntimeFolder.h"

#include <velmorak/Histogram.h>
#include <velmorak/Mutex.h>
#include <velmorak/StateBytes.h>

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <chrono>
#include <optional>
#include <thread>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

struct FillState : AccumulatorState {
    explicit FillState(Axis axis) : histogram(std::move(axis)) {}
    void fill(const Chunk& chunk) override {
        for (const double x : chunk.columns[0]->reals()) {
            histogram.fill(x, 1.0);
        }
    }
    void merge(AccumulatorState& other) override { histogram.merge(dynamic_cast<FillState&>(other).histogram); }
    void save(StateWriter& writer) const override { writer.object(histogram); }
    void load(StateReader& reader) override { histogram = *reader.object<Histogram1D>(); }

    Histogram1D histogram;
};

/// Fills x into a histogram with as many bins as its input "bins" says.
class FillKind : public Accumulator {
public:
    std::string name() const override { return "Fill"; }
    std::string summary() const override { return "Fills."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table), numberInput("bins", "10")},
                {output("histogram", ValueType::Histogram)}};
    }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema*,
                                          RunContext& context) const override {
        ++prepared;
        context.warn("prepared");
        return std::make_unique<Filling>(arguments.integer("bins"));
    }

    mutable std::atomic<int> prepared = 0;

private:
    class Filling : public Accumulation {
    public:
        explicit Filling(std::int64_t bins) : bins(bins) {}
        std::unique_ptr<AccumulatorState> newState() const override {
            return std::make_unique<FillState>(Axis(static_cast<std::size_t>(bins), -1e6, 1e6));
        }
        void finish(AccumulatorState& state, Results& results) override {
            auto& filled = dynamic_cast<FillState&>(state);
            results.set("histogram", DataObjectPtr(std::make_shared<Histogram1D>(std::move(filled.histogram))));
        }

    private:
        std::int64_t bins;
    };
};

double entriesOf(const Value& value) {
    const auto histogram = std::dynamic_pointer_cast<const Histogram1D>(std::get<DataObjectPtr>(value));
    double entries = 0.0;
    for (const auto& cell : histogram->cells()) {
        entries += cell.w;
    }
    return entries;
}

/// Looks after every chunk.
class Looking : public RunListener {
public:
    void began(const Pipeline&, int) override {}
    bool isProgressDue() override { return false; }
    void progressed(const ProgressNow&) override {}
    void nodeFinished(const PipelineNode&, const NodeReport&) override {}
    void ended(const RunReport&) override {}
    bool isLookDue() override { return looks; }
    void looked(const std::vector<ResultsSoFar>& results, std::chrono::nanoseconds) override {
        if (throws) {
            throw std::runtime_error("no picture");
        }
        for (const ResultsSoFar& it : results) {
            seen.push_back(it);
        }
    }
    bool wantsTables() override { return true; }
    void sawTable(const TableHead& head) override { tables[head.node] = head; }

    bool looks = true;
    bool throws = false;
    std::vector<ResultsSoFar> seen;
    std::map<std::size_t, TableHead> tables;
};

class LiveResults : public RunTest {
protected:
    LiveResults() {
        add(source, "rows", {{"rows", std::to_string(10 * chunkRows + 7)}});
        add(cut, "cut", {{"cut", "0"}});
        add(fill, "fill");
        wire("rows", "table", "cut", "table");
        wire("cut", "table", "fill", "table");
        runner.setListener(&listener);
    }

    std::string bytesOfResult() const {
        StateWriter writer("any");
        writer.object(*std::get<DataObjectPtr>(of("fill").outputs.at(0)));
        return writer.sealed();
    }

    std::vector<double> firstOf(const std::string& name) const {
        std::vector<double> all;
        const auto found = listener.tables.find(positionOf(name));
        for (const Chunk& piece : found == listener.tables.end() ? std::vector<Chunk>() : found->second.pieces) {
            const Column::Reals& values = piece.columns.at(0)->reals();
            all.insert(all.end(), values.begin(), values.end());
        }
        return all;
    }

    Looking listener;
    RowSource source;
    CutKind cut;
    FillKind fill;
};

TEST_F(LiveResults, areThoseOfTheRowsThatHavePassed) {
    run();
    ASSERT_EQ(listener.seen.size(), 11U);
    for (const ResultsSoFar& it : listener.seen) {
        EXPECT_EQ(it.node, positionOf("fill"));
        EXPECT_EQ(entriesOf(it.outputs.at(0)), static_cast<double>(it.rows));
    }
    EXPECT_LT(listener.seen.front().rows, listener.seen.back().rows);
    EXPECT_EQ(listener.seen.back().rows, of("fill").rowsIn);
}

TEST_F(LiveResults, changeNoBitOfTheResult) {
    for (const std::size_t threads : {1U, 4U}) {
        runner.setThreads(threads);
        listener.looks = true;
        runner.reset();
        run();
        const std::string looked = bytesOfResult();
        listener.looks = false;
        runner.reset();
        run();
        EXPECT_EQ(looked, bytesOfResult()) << threads;
    }
}

TEST_F(LiveResults, areNotMadeWhenNobodyAsks) {
    listener.looks = false;
    run();
    EXPECT_TRUE(listener.seen.empty());
    EXPECT_EQ(fill.prepared, 1);
}

TEST_F(LiveResults, warnOnlyOnce) {
    run();
    const std::string all = messages.str();
    const std::string warning = "Fill \"fill\": warning: prepared\n";
    ASSERT_NE(all.find(warning), std::string::npos) << all;
    EXPECT_EQ(all.find(warning), all.rfind(warning)) << all;
}

TEST_F(LiveResults, leaveOutObjectsWithVeryManyCells) {
    set("fill", "bins", "1000000");
    run();
    EXPECT_TRUE(listener.seen.empty());
    EXPECT_EQ(status("fill"), NodeStatus::Done);
}

TEST_F(LiveResults, doNotEndTheRunWhenTheyCannotBeShown) {
    listener.throws = true;
    run();
    EXPECT_EQ(status("fill"), NodeStatus::Done);
}

TEST_F(LiveResults, tablesShowTheirFirstRowsForAnyNumberOfThreads) {
    for (const std::size_t threads : {1U, 4U}) {
        runner.setThreads(threads);
        runner.reset();
        listener.tables.clear();
        run();
        const std::vector<double> rows = firstOf("rows");
        ASSERT_GE(rows.size(), 20U);
        std::vector<double> above;
        for (std::uint64_t row = 0; above.size() < 20; ++row) {
            if (row < 20) {
                EXPECT_EQ(rows.at(row), valueOfRow(row));
            }
            if (valueOfRow(row) > 0.0) {
                above.push_back(valueOfRow(row));
            }
        }
        std::vector<double> kept = firstOf("cut");
        kept.resize(20);
        EXPECT_EQ(kept, above);
        EXPECT_EQ(listener.tables.size(), 2U);
    }
}

TEST_F(LiveResults, tablesWithFewRowsAreShownAsWell) {
    set("rows", "rows", "3");
    set("cut", "cut", "1e300");
    run();
    EXPECT_EQ(firstOf("rows"), std::vector<double>({valueOfRow(0), valueOfRow(1), valueOfRow(2)}));
    EXPECT_EQ(firstOf("cut"), std::vector<double>());
}

class AnnouncedResults : public LiveResults {
protected:
    AnnouncedResults() {
        runner.setListener(nullptr);
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    }
    ~AnnouncedResults() override { unsetenv("XDG_RUNTIME_DIR"); }

    bool isShown() {
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(folder / "velmorak", none)) {
            if (entry.path().extension() == liveEnding) {
                shown = nlohmann::json::parse(content(entry.path()), nullptr, false);
            }
        }
        return shown.is_object();
    }

    nlohmann::json shown;
};

TEST_F(AnnouncedResults, areInAFileWhileSomebodyLooks) {
    noteLook(runtimeFolder());
    set("rows", "rows", "1e12");
    constexpr std::uint64_t muchLaterThanTheFirstLook = 100000;
    source.beforeChunk = [&](std::uint64_t chunk, RunContext&) {
        if (isShown() || chunk == muchLaterThanTheFirstLook) {
            runner.stop();
        }
    };
    run();
    ASSERT_TRUE(shown.is_object());
    EXPECT_EQ(shown.at("plugins").at(0).at("name"), "fill");
    EXPECT_EQ(shown.at("plugins").at(0).at("outputs").at(0).at("heights").size(), 10U);
    for (const auto& entry : fs::directory_iterator(folder / "velmorak")) {
        EXPECT_NE(entry.path().extension(), liveEnding) << "the file goes with the run";
    }
}

TEST_F(AnnouncedResults, areNotMadeWhenNobodyLooks) {
    bool wasShown = false;
    source.beforeChunk = [&](std::uint64_t, RunContext&) { wasShown = wasShown || isShown(); };
    run();
    EXPECT_FALSE(wasShown);
    EXPECT_EQ(fill.prepared, 1);
    EXPECT_FALSE(isLookedAt(runtimeFolder()));
}

/// The time until results may be made again, after making them has taken so long.
std::chrono::milliseconds pauseAfter(Announcement& announcement, std::chrono::milliseconds spent) {
    const auto begin = std::chrono::steady_clock::now();
    announcement.looked({}, spent);
    while (!announcement.isLookDue()) {
        std::this_thread::yield();
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

TEST_F(AnnouncedResults, areMadeAtMostTwiceASecondAndForTwoPercentOfTheTime) {
    noteLook(runtimeFolder());
    const std::unique_ptr<Announcement> announcement = Announcement::begin();
    announcement->began(pipeline, 1);
    EXPECT_GE(pauseAfter(*announcement, std::chrono::milliseconds(0)), std::chrono::milliseconds(500));
    EXPECT_GE(pauseAfter(*announcement, std::chrono::milliseconds(20)), std::chrono::milliseconds(1000));
}

TEST_F(AnnouncedResults, endSomeSecondsAfterTheLastLook) {
    const fs::path place = runtimeFolder();
    noteLook(place);
    EXPECT_TRUE(isLookedAt(place));
    fs::last_write_time(place / "look", fs::file_time_type::clock::now() - std::chrono::seconds(30));
    EXPECT_FALSE(isLookedAt(place));
}

TEST_F(AnnouncedResults, haveTheFirstRowsOfEachTableOnce) {
    set("rows", "rows", "3");
    run();
    std::vector<nlohmann::json> tables;
    for (const auto& entry : fs::directory_iterator(folder / "velmorak")) {
        std::istringstream lines(content(entry.path()));
        for (std::string line; std::getline(lines, line);) {
            const nlohmann::json event = nlohmann::json::parse(line);
            if (event.at("event") == "table") {
                tables.push_back(event);
            }
        }
    }
    ASSERT_FALSE(tables.empty());
    EXPECT_EQ(tables.front().at("plugin"), "rows");
    EXPECT_EQ(tables.front().at("output"), "table");
    EXPECT_EQ(tables.front().at("columns").at(0).at("name"), "x");
    EXPECT_EQ(tables.front().at("rows").size(), 3U);
}

}  // namespace
}  // namespace velmorak::test
