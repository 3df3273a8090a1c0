#include "GslFit.h"
#include "Row.h"
#include "Timing.h"

#include <velmorak/Fit.h>
#include <velmorak/Value.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

/// A Gauss on a line with five parameters at 100 points, from the model's text and start values to parameters and
/// covariance. The peers have the model compiled, or as a function of arrays.
namespace {

using namespace velmorak;
using namespace velmorak::bench;

constexpr int problems = 50;
constexpr int repeats = 20;
constexpr std::size_t pointCount = 100;
constexpr PeakOnLine start{250.0, 4.5, 1.0, 30.0, 0.0};

std::vector<FitPoints> drawnPoints() {
    std::mt19937 engine(3);
    std::vector<FitPoints> all(problems);
    for (FitPoints& points : all) {
        const PeakOnLine truth{300.0, 5.0, 0.8, 40.0, -1.0};
        for (std::size_t i = 0; i < pointCount; ++i) {
            const double x = 0.1 * (static_cast<double>(i) + 0.5);
            const double mean = peakOnLine(x, truth.data());
            points.x.push_back(x);
            points.error.push_back(std::sqrt(mean));
            points.y.push_back(mean + points.error.back() * std::normal_distribution<double>()(engine));
        }
    }
    return all;
}

FitData asData(const FitPoints& points) {
    FitData data;
    for (std::size_t i = 0; i < points.x.size(); ++i) {
        data.entries.push_back({points.x[i], points.x[i], points.y[i], points.error[i]});
    }
    return data;
}

FitResult fittedByUs(const FitData& data) {
    FitOptions options;
    options.parameters = readFitParameters("amplitude=250, mean=4.5, sigma=1, p0=30, p1=0");
    return fit(FitModel("gauss + pol1"), data, options);
}

bool areAlike(const std::vector<double>& ours, const double* others, const std::vector<double>& errors) {
    for (std::size_t k = 0; k < ours.size(); ++k) {
        if (!(std::fabs(ours[k] - others[k]) < 1e-3 * errors[k])) {
            return false;
        }
    }
    return true;
}

template <typename Values>
void writeLine(std::ostream& out, const Values& values) {
    for (const double value : values) {
        out << textOf(value) << ' ';
    }
    out << '\n';
}

/// Median time of a fit in ms, then the parameters of the first data set; nothing when the program fails.
std::vector<double> answerOfScipy(const std::vector<FitPoints>& all) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "velmorak_bench_fit.txt";
    std::ofstream out(file);
    for (const FitPoints& points : all) {
        writeLine(out, start);
        writeLine(out, points.x);
        writeLine(out, points.y);
        writeLine(out, points.error);
    }
    out.close();
    const std::string command =
        "OMP_NUM_THREADS=1 /usr/bin/python3 '" VELMORAK_BENCH_SCIPY "' < '" + file.string() + "'";
    FILE* const pipe = popen(command.c_str(), "r");
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        text += static_cast<char>(c);
    }
    pclose(pipe);
    std::filesystem::remove(file);
    std::istringstream words(text);
    words.imbue(std::locale::classic());
    std::vector<double> values;
    for (double value = 0.0; words >> value;) {
        values.push_back(value);
    }
    return values;
}

}  // namespace

int main() {
    const std::vector<FitPoints> points = drawnPoints();
    std::vector<FitData> data;
    for (const FitPoints& each : points) {
        data.push_back(asData(each));
    }
    const FitResult first = fittedByUs(data.front());
    const PeakOnLine byGsl = fittedByGsl(points.front(), start);
    const auto us = [&] {
        for (int i = 0; i < repeats; ++i) {
            for (const FitData& each : data) {
                fittedByUs(each);
            }
        }
    };
    const auto gsl = [&] {
        for (int i = 0; i < repeats; ++i) {
            for (const FitPoints& each : points) {
                fittedByGsl(each, start);
            }
        }
    };
    const std::vector<double> medians = mediansOf({us, gsl}, Clock::Processor, 9);
    const std::vector<double> byScipy = answerOfScipy(points);
    if (byScipy.size() != 6 || !areAlike(first.values, byGsl.data(), first.errors) ||
        !areAlike(first.values, byScipy.data() + 1, first.errors)) {
        std::cerr << "the fits do not agree\n";
        return 1;
    }
    const double fits = problems * repeats;
    const std::string work = "fit of a Gauss on a line, 5 parameters, 100 points, model as text";
    constexpr double limit = 35.0;
    const double microseconds = 1e3 * medians[0] / fits;
    print({work, "a limit", "us", microseconds, limit, microseconds / limit, Limit{Limit::Sense::AtMost, 1.0}});
    printFaster(work, "GSL, numeric derivatives", medians[0] / fits, medians[1] / fits, 3.0);
    printFaster(work, "scipy curve_fit", medians[0] / fits, byScipy[0], 10.0);
    return 0;
}
