#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <iostream>
#include <locale>
#include <string>
#include <vector>

/// The time for a piece of work, in ms. A busy machine lengthens the time on the processor much less than the other.
struct Spent {
    double wall = 0;
    double processor = 0;  ///< Of this process alone, without the X server.
};

inline Spent operator+(const Spent& one, const Spent& other) {
    return {one.wall + other.wall, one.processor + other.processor};
}

class Clock {
public:
    Spent spent() const {
        const auto wall = std::chrono::steady_clock::now() - start;
        return {std::chrono::duration<double, std::milli>(wall).count(), processorMs() - processorStart};
    }

private:
    static double processorMs() {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }

    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    double processorStart = processorMs();
};

inline double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Median of what the calls say that they took, for at most so many calls and for some seconds. The first calls, which
/// fill caches, do not count.
template <typename Step>
Spent medianOf(int calls, Step step) {
    constexpr int warmUp = 2;
    constexpr double enoughMs = 5000;
    std::vector<double> wall;
    std::vector<double> processor;
    const Clock all;
    for (int i = 0; i < calls + warmUp && (i <= warmUp || all.spent().wall < enoughMs); ++i) {
        const Spent took = step(i);
        if (i >= warmUp) {
            wall.push_back(took.wall);
            processor.push_back(took.processor);
        }
    }
    return {medianOf(wall), medianOf(processor)};
}

inline double peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// One line on standard output: name and value.
inline void report(const std::string& name, double value) {
    std::cout.imbue(std::locale::classic());
    std::cout << name << ' ' << value << std::endl;
}

inline void report(const std::string& name, const Spent& spent) {
    report(name, spent.wall);
    report(name + "-processor", spent.processor);
}
