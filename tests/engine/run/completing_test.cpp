#include "RunFixture.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>

namespace velmorak::test {
namespace {

class SourceCompletion : public RunTest {
protected:
    SourceCompletion() {
        late.isLate = true;
        add(late, "late", {{"rows", std::to_string(20 * chunkRows + 3)}});
        add(sum, "sum");
        wire("late", "table", "sum", "table");
    }

    double sumOf(std::size_t threads) {
        runner.setThreads(threads);
        runner.reset();
        run();
        EXPECT_EQ(status("sum"), NodeStatus::Done) << sentence("sum");
        return number("sum");
    }

    RowSource late;
    RowSource rows;
    SumKind sum;
    CutKind cut;
};

TEST_F(SourceCompletion, givesTheSameBitsForAnyThreads) {
    const double inOne = sumOf(1);
    for (const std::size_t threads : {2U, 3U, 16U}) {
        const double inMany = sumOf(threads);
        EXPECT_EQ(std::memcmp(&inOne, &inMany, sizeof inOne), 0) << threads;
    }
    late.isLate = false;
    EXPECT_EQ(sumOf(2), inOne) << "as rows that are made one chunk after the other";
}

TEST_F(SourceCompletion, isDoneOnceForEachChunkHoweverManyTakeIt) {
    add(sum, "another");
    add(cut, "cut");
    wire("late", "table", "another", "table");
    wire("late", "table", "cut", "table");
    sumOf(4);
    EXPECT_EQ(late.completed, 21);
    EXPECT_EQ(number("another"), number("sum"));
    EXPECT_EQ(of("late").rowsOut, 20 * chunkRows + 3);
}

TEST_F(SourceCompletion, isDoneByTwoThreadsAtOnce) {
    std::mutex mutex;
    std::condition_variable changed;
    int inside = 0;
    bool haveMet = false;
    late.beforeComplete = [&](std::uint64_t) {
        std::unique_lock<std::mutex> lock(mutex);
        haveMet = haveMet || ++inside == 2;
        changed.notify_all();
        changed.wait_for(lock, std::chrono::seconds(20), [&] { return haveMet; });
    };
    sumOf(2);
    EXPECT_TRUE(haveMet);
}

TEST_F(SourceCompletion, endsTheSourceWhereItFails) {
    late.beforeComplete = [](std::uint64_t chunk) {
        if (chunk >= 7) {
            throw Failure("chunk " + std::to_string(chunk) + " is no good");
        }
    };
    add(rows, "a", {{"rows", "10"}});
    add(sum, "ofA");
    wire("a", "table", "ofA", "table");
    for (const std::size_t threads : {1U, 4U}) {
        runner.setThreads(threads);
        runner.reset();
        run();
        EXPECT_EQ(sentence("late"), "chunk 7 is no good") << "the first in order, for any number of threads";
        EXPECT_EQ(sentence("sum"), "not run because of \"late\"");
    }
    start("a");
    run();
    EXPECT_EQ(status("ofA"), NodeStatus::Done);
}

TEST_F(SourceCompletion, isDoneForATableThatNothingTakes) {
    add(late, "alone", {{"rows", "40000"}});
    start("alone");
    run();
    EXPECT_EQ(status("alone"), NodeStatus::Done);
    EXPECT_EQ(late.completed, 2);
}

}  // namespace
}  // namespace velmorak::test
