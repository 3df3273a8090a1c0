#pragma once

#include "executor/StagePipeline.h"

#include <random>

namespace velmorak::test {

/// Does on a line what is possible, one task after the other, in an order that a crew would hardly ever take: any at
/// all, or the newest item first, so that what must be in order waits as long as it can.
class Adversary : public Workers {
public:
    explicit Adversary(std::uint32_t seed) : random(seed), most(1 + random() % 12), isHasty(random() % 3 == 0) {}
    std::size_t places() const override { return most; }

    void work(const Line& line) override {
        Timetable timetable(line, most);
        while (!timetable.isOver()) {
            const std::vector<Timetable::Task> tasks = timetable.possible();
            const Timetable::Task task = isHasty ? tasks.back() : tasks[random() % tasks.size()];
            timetable.begin(task);
            timetable.end(task, perform(line, task, timetable.placeOf(task)));
        }
    }

private:
    std::mt19937 random;
    std::size_t most;
    bool isHasty;
};

}  // namespace velmorak::test
