#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <functional>
#include <vector>

namespace velmorak::bench {

enum class Clock {
    Wall,      ///< For work of several threads.
    Processor  ///< Time on the processors of this process: what other programs do meanwhile hardly counts.
};

/// In ms, from some beginning.
inline double now(Clock clock) {
    if (clock == Clock::Wall) {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

inline double timeOf(const std::function<void()>& work, Clock clock) {
    const double begin = now(clock);
    work();
    return now(clock) - begin;
}

inline double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Medians in ms of pieces of work that are done in turn, so that a busy minute of the machine meets all of them. The
/// first round, which fills caches, does not count.
inline std::vector<double> mediansOf(const std::vector<std::function<void()>>& works, Clock clock, int rounds = 7) {
    std::vector<std::vector<double>> times(works.size());
    for (int round = 0; round <= rounds; ++round) {
        for (std::size_t i = 0; i < works.size(); ++i) {
            const double time = timeOf(works[i], clock);
            if (round > 0) {
                times[i].push_back(time);
            }
        }
    }
    std::vector<double> medians;
    medians.reserve(times.size());
    for (std::vector<double>& each : times) {
        medians.push_back(medianOf(std::move(each)));
    }
    return medians;
}

}  // namespace velmorak::bench
