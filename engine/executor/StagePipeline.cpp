#include "executor/StagePipeline.h"

#include <algorithm>

namespace velmorak {

Timetable::Timetable(const Line& line, std::size_t places)
    : line(line), items(std::max<std::size_t>(places, 1)), passed(line.stages.size(), 0) {}

bool Timetable::mayBegin(std::uint64_t item) const {
    const Item& state = items[item % items.size()];
    return !state.isBusy && (!line.stages[state.stage].isInOrder || passed[state.stage] == item);
}

std::vector<Timetable::Task> Timetable::possible() const {
    std::vector<Task> tasks;
    if (isClosed) {
        return tasks;
    }
    for (std::uint64_t item = done; item < loaded; ++item) {
        if (mayBegin(item)) {
            tasks.push_back({item, items[item % items.size()].stage});
        }
    }
    if (!isLoading && !isExhausted && loaded - done < items.size()) {
        tasks.push_back({loaded, loading});
    }
    return tasks;
}

void Timetable::begin(const Task& task) {
    ++busy;
    if (task.stage == loading) {
        isLoading = true;
    } else {
        items[placeOf(task)].isBusy = true;
    }
}

void Timetable::end(const Task& task, bool isLoaded) {
    --busy;
    if (task.stage == loading) {
        isLoading = false;
        isExhausted = !isLoaded;
        loaded += isLoaded ? 1 : 0;
        items[placeOf(task)] = isLoaded ? Item{} : items[placeOf(task)];
        return;
    }
    Item& item = items[placeOf(task)];
    item.isBusy = false;
    ++item.stage;
    if (line.stages[task.stage].isInOrder) {
        ++passed[task.stage];
    }
    if (item.stage == line.stages.size()) {
        ++done;
    }
}

void Timetable::close() {
    isClosed = true;
}

bool Timetable::isOver() const {
    return busy == 0 && (isClosed || (isExhausted && done == loaded));
}

bool perform(const Line& line, const Timetable::Task& task, std::size_t place) {
    if (task.stage == Timetable::loading) {
        return line.load(place);
    }
    line.stages[task.stage].work(place);
    return true;
}

}  // namespace velmorak
