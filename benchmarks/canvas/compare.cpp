/// velmorak_bench_compare: measures the editor's canvas, the same with each path lowered one by one, and the peer, each
/// in processes of its own, and prints figures, limits and ratios. Its status is 1 when a limit is exceeded.
#include "Measure.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Figures = std::map<std::string, double>;

struct Limit {
    int nodes;
    std::string name;
    double most;
};

const std::array<Limit, 3> limits{{{200, "drag", 16.7}, {1000, "open", 500}, {1000, "peak", 90}}};

/// How many times the peer's figure.
const std::array<Limit, 4> ratios{{{200, "drag", 2}, {1000, "drag", 2}, {200, "open", 1.3}, {1000, "open", 0.9}}};

Figures measured(const std::string& command) {
    Figures figures;
    FILE* pipe = popen(command.c_str(), "r");
    std::string text;
    std::array<char, 256> part{};
    while (pipe && std::fgets(part.data(), part.size(), pipe)) {
        text += part.data();
    }
    if (!pipe || pclose(pipe) != 0) {
        std::cerr << command << " failed" << std::endl;
        std::exit(2);
    }
    std::istringstream lines(text);
    lines.imbue(std::locale::classic());
    std::string name;
    for (double value = 0; lines >> name >> value;) {
        figures[name] = value;
    }
    return figures;
}

/// Figure by figure.
Figures mediansOf(const std::vector<Figures>& runs) {
    std::map<std::string, std::vector<double>> values;
    for (const Figures& run : runs) {
        for (const auto& [name, value] : run) {
            values[name].push_back(value);
        }
    }
    Figures medians;
    for (const auto& [name, each] : values) {
        medians[name] = medianOf(each);
    }
    return medians;
}

void print(const std::string& what, double ours, double other) {
    std::cout << "  " << std::left << std::setw(34) << what << std::right << std::setw(9) << ours << std::setw(9)
              << other << std::setw(9) << ours / other << '\n';
}

bool keepsLimits(int nodes, Figures& ours) {
    bool isKept = true;
    for (const Limit& limit : limits) {
        if (limit.nodes == nodes && ours[limit.name] > limit.most) {
            std::cout << "  TOO MUCH: " << limit.name << ' ' << ours[limit.name] << " > " << limit.most << '\n';
            isKept = false;
        }
    }
    return isKept;
}

bool keepsRatios(int nodes, Figures& ours, Figures& peer) {
    bool isKept = true;
    for (const Limit& limit : ratios) {
        const double ratio = ours[limit.name] / peer[limit.name];
        if (limit.nodes == nodes && !(ratio <= limit.most)) {
            std::cout << "  TOO MUCH: " << limit.name << ' ' << ratio << " times Ganv's > " << limit.most << '\n';
            isKept = false;
        }
    }
    return isKept;
}

bool compare(int nodes) {
    const std::string count = " " + std::to_string(nodes);
    constexpr int runs = 3;
    std::vector<Figures> oursEach;
    std::vector<Figures> peerEach;
    for (int run = 0; run < runs; ++run) {
        oursEach.push_back(measured(VELMORAK_BENCH_CANVAS " ours" + count));
        peerEach.push_back(measured(VELMORAK_BENCH_GANV + count));
    }
    Figures ours = mediansOf(oursEach);
    Figures peer = mediansOf(peerEach);
    Figures lowered = measured(VELMORAK_BENCH_CANVAS " lowered" + count);
    std::cout << nodes << " plug-ins, " << 2 * nodes << " connections" << std::setw(26) << "ours" << std::setw(9)
              << "other" << std::setw(9) << "ratio" << '\n';
    for (const std::string time : {"", "-processor"}) {
        std::cout << (time.empty() ? " time passed\n" : " processor time of the program\n");
        print("drag, handler: paths lowered [ms]", ours["handler" + time], lowered["handler" + time]);
        print("drag + repaint: paths lowered [ms]", ours["drag" + time], lowered["drag" + time]);
        print("drag + repaint: Ganv, part [ms]", ours["drag" + time], peer["drag" + time]);
        print("drag + repaint: Ganv, all [ms]", ours["drag" + time], peer["drag-all" + time]);
        print("open to first picture: Ganv [ms]", ours["open" + time], peer["open" + time]);
    }
    print("peak memory: Ganv [MB]", ours["peak"], peer["peak"]);
    const bool isKept = keepsLimits(nodes, ours);
    return keepsRatios(nodes, ours, peer) && isKept;
}

/// Times that passed say little on a busy machine.
void printLoad() {
    double processes = 0;
    getloadavg(&processes, 1);
    std::cout << "Processes that want to run on " << std::thread::hardware_concurrency() << " processors: " << processes
              << '\n';
}

}  // namespace

int main() {
    std::cout.imbue(std::locale::classic());
    std::cout << std::fixed << std::setprecision(2);
    printLoad();
    const bool isSmallKept = compare(200);
    const bool isLargeKept = compare(1000);
    printLoad();
    return isSmallKept && isLargeKept ? 0 : 1;
}
