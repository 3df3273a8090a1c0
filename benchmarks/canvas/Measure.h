#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <locale>
#include <string>
#include <vector>

class Clock {
public:
    double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// Median of what the calls say that they took, in ms. The first calls, which fill caches, do not count.
template <typename Step>
double medianOf(int calls, Step step) {
    constexpr int warmUp = 3;
    std::vector<double> times;
    for (int i = 0; i < calls + warmUp; ++i) {
        const double took = step(i);
        if (i >= warmUp) {
            times.push_back(took);
        }
    }
    std::nth_element(times.begin(), times.begin() + calls / 2, times.end());
    return times[static_cast<std::size_t>(calls / 2)];
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
