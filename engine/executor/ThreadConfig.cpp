#include "executor/ThreadConfig.h"

#include <sched.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace velmorak {

ThreadConfig threadConfigFromEnvironment() {
    const char* const setting = std::getenv("VELMORAK_THREADS");
    const std::string_view text(setting ? setting : "");
    if (text.empty()) {
        return {processorCount()};
    }
    std::size_t threads = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    if (error == std::errc() && end == text.data() + text.size() && threads >= 1 && threads <= maxRunThreads) {
        return {threads};
    }
    return {processorCount(), "VELMORAK_THREADS=" + std::string(text) + " is not a number from 1 to " +
                                  std::to_string(maxRunThreads) + "; using all processors"};
}

std::size_t processorCount() {
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) == 0) {
        return static_cast<std::size_t>(std::max(1, CPU_COUNT(&processors)));
    }
    return std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace velmorak
