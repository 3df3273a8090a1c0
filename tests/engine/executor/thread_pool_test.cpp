#include "executor/ThreadPool.h"

#include <gtest/gtest.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace velmorak::test {
namespace {

/// A line of items that are counted: loaded, squared by many at once, and gathered in order.
struct Squares {
    explicit Squares(std::size_t places, int items) : values(places, 0), items(items) {}

    Line line() {
        Line made;
        made.load = [this](std::size_t place) {
            values[place] = loaded;
            return loaded++ < items;
        };
        made.stages.push_back({false, [this](std::size_t place) {
                                   beforeSquare(values[place]);
                                   values[place] *= values[place];
                               }});
        made.stages.push_back({true, [this](std::size_t place) { gathered.push_back(values[place]); }});
        return made;
    }
    std::vector<int> expected() const {
        std::vector<int> all;
        for (int i = 0; i < items; ++i) {
            all.push_back(i * i);
        }
        return all;
    }

    std::vector<int> values;
    int items;
    int loaded = 0;
    std::vector<int> gathered;
    std::function<void(int)> beforeSquare = [](int) {};
};

/// Among so many threads, as in a run, however few processors there are.
void workWith(Crew& crew, std::size_t threads, const Line& line) {
    const oneapi::tbb::global_control allowance(oneapi::tbb::global_control::max_allowed_parallelism, threads);
    oneapi::tbb::task_arena arena(static_cast<int>(threads));
    arena.execute([&] { crew.work(line); });
}

class CrewOf : public testing::TestWithParam<std::size_t> {
protected:
    void work(const Line& line) { workWith(crew, GetParam(), line); }

    Crew crew{GetParam()};
};

TEST_P(CrewOf, anyNumberKeepsTheOrder) {
    for (const int items : {0, 1, 2, 3, 1000}) {
        Squares squares(crew.places(), items);
        work(squares.line());
        EXPECT_EQ(squares.gathered, squares.expected()) << items;
    }
}

TEST_P(CrewOf, anyNumberEndsWhenAStageThrows) {
    Squares squares(crew.places(), 1000);
    squares.beforeSquare = [](int value) {
        if (value == 500) {
            throw std::runtime_error("five hundred");
        }
    };
    EXPECT_THROW(work(squares.line()), std::runtime_error);
    EXPECT_LE(squares.gathered.size(), 500U);
    EXPECT_LE(squares.loaded, 501 + static_cast<int>(crew.places()));
}

TEST_P(CrewOf, anyNumberEndsWhenLoadingThrows) {
    Squares squares(crew.places(), 10);
    Line line = squares.line();
    line.load = [](std::size_t) -> bool { throw std::bad_alloc(); };
    EXPECT_THROW(work(line), std::bad_alloc);
    EXPECT_TRUE(squares.gathered.empty());
}

INSTANTIATE_TEST_SUITE_P(Workers, CrewOf, testing::Values(1, 2, 3, 16));

TEST(Crew, worksOnSeveralItemsAtOnce) {
    Crew crew(3);
    Squares squares(crew.places(), 3);
    std::atomic<int> present = 0;
    squares.beforeSquare = [&](int) {
        ++present;
        while (present < 3) {
            std::this_thread::yield();
        }
    };
    workWith(crew, 3, squares.line());
    EXPECT_EQ(squares.gathered, squares.expected());
}

TEST(Crew, neverHasMoreItemsOnTheirWayThanPlaces) {
    Crew crew(4);
    Squares squares(crew.places(), 200);
    std::mutex lock;
    std::size_t most = 0;
    Line line = squares.line();
    const auto load = line.load;
    line.load = [&](std::size_t place) {
        const std::lock_guard guard(lock);
        const bool isLoaded = load(place);
        most = std::max(most, static_cast<std::size_t>(squares.loaded) - squares.gathered.size());
        return isLoaded;
    };
    const auto gather = line.stages.back().work;
    line.stages.back().work = [&](std::size_t place) {
        const std::lock_guard guard(lock);
        gather(place);
    };
    workWith(crew, 4, line);
    EXPECT_EQ(squares.gathered, squares.expected());
    EXPECT_LE(most, crew.places() + 1) << "the load that finds nothing counts as well";
}

/// All that may be done at once with two places, an item that is worked on, and stages of both sorts.
TEST(Timetable, offersEachStageInItsOrder) {
    Line line;
    line.stages.resize(2);
    line.stages[1].isInOrder = true;
    using Task = Timetable::Task;
    using Tasks = std::vector<Task>;
    constexpr std::size_t loading = Timetable::loading;
    Timetable timetable(line, 2);
    EXPECT_EQ(timetable.possible(), (Tasks{{0, loading}}));
    timetable.begin({0, loading});
    EXPECT_TRUE(timetable.possible().empty()) << "one loads at a time";
    timetable.end({0, loading});
    timetable.begin({1, loading});
    timetable.end({1, loading});
    EXPECT_EQ(timetable.possible(), (Tasks{{0, 0}, {1, 0}})) << "both places are taken";
    timetable.begin({1, 0});
    timetable.end({1, 0});
    EXPECT_EQ(timetable.possible(), (Tasks{{0, 0}})) << "the second waits for the first";
    timetable.begin({0, 0});
    timetable.end({0, 0});
    timetable.begin({0, 1});
    timetable.end({0, 1});
    EXPECT_EQ(timetable.possible(), (Tasks{{1, 1}, {2, loading}}));
    timetable.begin({2, loading});
    timetable.end({2, loading}, false);
    EXPECT_FALSE(timetable.isOver());
    timetable.begin({1, 1});
    timetable.end({1, 1});
    EXPECT_TRUE(timetable.isOver());
}

}  // namespace
}  // namespace velmorak::test
