/// velmorak_bench_stop: stops runs of the shipped kinds at random moments of every phase, as the editor does, and
/// measures how long they go on. Its status is 1 when a stopped run leaves a file that a whole run would not leave.
#include "Row.h"
#include "Timing.h"
#include "Work.h"

#include <QzManager.h>

#include <chrono>
#include <fstream>
#include <random>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace {

using namespace velmorak::bench;

constexpr int stopsOfAll = 200;
constexpr double limitMs = 250;

double percentile99(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[(values.size() * 99 + 99) / 100 - 1];
}

class Stops {
public:
    explicit Stops(const Work& work) : work(work) {}

    /// @return ms from the stop to the end of the run, for each of so many.
    std::vector<double> measure(const Phase& phase, int count) {
        QzManager manager("QzAnalysisFactory");
        manager.ReadDocument(work.write(phase).string());
        const double wholeMs = timeOf([&] { runAnew(manager); }, Clock::Wall);
        const auto whole = work.results();
        if (whole.empty()) {
            throw std::runtime_error("the run left nothing: " + phase.name);
        }
        std::vector<double> times;
        for (int i = 0; i < count; ++i) {
            times.push_back(stopAfter(manager, std::uniform_real_distribution<>(0, wholeMs)(random)));
            check(whole);
        }
        std::cout << phase.name << ": a run takes " << wholeMs << " ms; after " << count << " stops it goes on for "
                  << medianOf(times) << " ms (median), " << percentile99(times) << " ms (99 %)\n";
        return times;
    }

    bool isClean = true;
    std::vector<double> processorMs;  ///< Of all threads, from each stop on: what a busy machine hardly lengthens.

private:
    void runAnew(QzManager& manager) {
        manager.Reset();
        work.removeResults();
        manager.Run();
    }

    double stopAfter(QzManager& manager, double ms) {
        manager.Reset();
        work.removeResults();
        double endedMs = 0;
        std::binary_semaphore ended(0);
        std::thread runner([&] {
            manager.Run();
            endedMs = now(Clock::Wall);
            ended.release();
        });
        std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(ms));
        const double askedMs = now(Clock::Wall);
        const double askedProcessorMs = now(Clock::Processor);
        // As the window does: one that comes before the run has begun is lost.
        do {
            manager.Stop();
        } while (!ended.try_acquire_for(std::chrono::milliseconds(50)));
        runner.join();
        processorMs.push_back(now(Clock::Processor) - askedProcessorMs);
        return std::max(0.0, endedMs - askedMs);
    }

    /// Whatever is there is whole.
    void check(const std::map<std::string, std::string>& whole) {
        for (const auto& [name, content] : work.results()) {
            if (!whole.contains(name) || whole.at(name) != content) {
                std::cout << "A stopped run left " << name << ", which is not whole\n";
                isClean = false;
            }
        }
    }

    const Work& work;
    std::mt19937 random{20};
};

}  // namespace

int main() {
    std::cout.imbue(std::locale::classic());
    const Work work;
    std::ofstream nowhere("/dev/null");
    std::streambuf* const messages = std::cerr.rdbuf(nowhere.rdbuf());
    Stops stops(work);
    std::vector<double> all;
    for (const Phase& phase : phases()) {
        const std::vector<double> times = stops.measure(phase, stopsOfAll / static_cast<int>(phases().size()));
        all.insert(all.end(), times.begin(), times.end());
    }
    std::cerr.rdbuf(messages);
    const double p99 = percentile99(all);
    print({"stop at a random moment, 99 % of 200", "a limit", "ms", p99, limitMs, p99 / limitMs,
           Limit{Limit::Sense::AtMost, 1.0}});
    const double processor99 = percentile99(stops.processorMs);
    print({"the same, time on the processors", "a limit", "ms", processor99, limitMs, processor99 / limitMs,
           Limit{Limit::Sense::AtMost, 1.0}});
    return stops.isClean ? 0 : 1;
}
