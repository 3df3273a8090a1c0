#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <gsl/gsl_histogram.h>
#include <unistd.h>

#include <boost/histogram.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include "Row.h"
#include "Timing.h"

/// Histograms filled with 8 million entries on one core, beside Boost.Histogram with its weighted storage, GSL and
/// numpy. All must find the same sum of heights.
namespace {

namespace bh = boost::histogram;
using namespace velmorak;
using bench::Clock;

constexpr std::size_t entries = 8'000'000;
constexpr std::size_t bins = 100;
constexpr double low = -3.0;
constexpr double high = 3.0;

struct Columns {
    std::vector<double> x = std::vector<double>(entries);
    std::vector<double> y = std::vector<double>(entries);
    std::vector<double> w = std::vector<double>(entries);
};

Columns randomColumns() {
    std::mt19937_64 random(2026);
    std::normal_distribution<double> coordinate(0.0, 1.2);
    std::uniform_real_distribution<double> weight(0.5, 1.5);
    Columns columns;
    for (std::size_t i = 0; i < entries; ++i) {
        columns.x[i] = coordinate(random);
        columns.y[i] = coordinate(random);
        columns.w[i] = weight(random);
    }
    return columns;
}

std::vector<double> growingEdges() {
    std::vector<double> edges;
    for (std::size_t i = 0; i <= bins; ++i) {
        const double part = static_cast<double>(i) / bins;
        edges.push_back(low + (high - low) * part * (0.3 + 0.7 * part));
    }
    return edges;
}

void requireSame(double ours, double theirs, const char* what) {
    if (std::abs(ours - theirs) > 1e-9 * std::abs(ours)) {
        throw std::runtime_error(std::string(what) + ": the sums of the heights differ");
    }
}

/// Fills of one axis by us and by Boost.Histogram.
struct OneAxis {
    const Columns& columns;
    Axis axis;
    double ours = 0.0;
    double theirs = 0.0;

    void fillOurs() {
        Histogram1D histogram(axis);
        histogram.fill(columns.x.data(), columns.w.data(), entries);
        ours = histogram.inRange().w;
    }
    template <typename BoostAxis>
    void fillTheirs(const BoostAxis& boostAxis) {
        auto histogram = bh::make_weighted_histogram(boostAxis);
        histogram.fill(columns.x, bh::weight(columns.w));
        theirs = 0.0;
        for (auto&& cell : bh::indexed(histogram)) {
            theirs += cell->value();
        }
    }
};

double fillGsl(const Columns& columns) {
    gsl_histogram* histogram = gsl_histogram_alloc(bins);
    gsl_histogram_set_ranges_uniform(histogram, low, high);
    for (std::size_t i = 0; i < entries; ++i) {
        gsl_histogram_accumulate(histogram, columns.x[i], columns.w[i]);
    }
    const double sum = gsl_histogram_sum(histogram);
    gsl_histogram_free(histogram);
    return sum;
}

struct Peer {
    double medianMs = 0.0;
    double sum = 0.0;
};

/// What numpy says of both works, in a process of its own.
std::vector<Peer> numpyOn(const Columns& columns) {
    const auto file = std::filesystem::temp_directory_path() / ("velmorak-histograms-" + std::to_string(getpid()));
    std::ofstream out(file, std::ios::binary);
    for (const auto* column : {&columns.x, &columns.y, &columns.w}) {
        out.write(reinterpret_cast<const char*>(column->data()),
                  static_cast<std::streamsize>(column->size() * sizeof(double)));
    }
    out.close();
    FILE* pipe =
        popen(("OMP_NUM_THREADS=1 /usr/bin/python3 '" VELMORAK_BENCH_NUMPY "' '" + file.string() + "'").c_str(), "r");
    std::vector<Peer> peers(2);
    for (Peer& peer : peers) {
        if (std::fscanf(pipe, "%lf %lf", &peer.medianMs, &peer.sum) != 2) {
            throw std::runtime_error("numpy gives no figures");
        }
    }
    pclose(pipe);
    std::filesystem::remove(file);
    return peers;
}

void measureEqualBins(const Columns& columns, const Peer& numpy) {
    OneAxis work{.columns = columns, .axis = Axis(bins, low, high)};
    double gsl = 0.0;
    const std::vector<double> times =
        bench::mediansOf({[&] { work.fillOurs(); }, [&] { work.fillTheirs(bh::axis::regular<>(bins, low, high)); },
                          [&] { gsl = fillGsl(columns); }},
                         Clock::Processor);
    requireSame(work.ours, work.theirs, "Boost.Histogram");
    requireSame(work.ours, gsl, "GSL");
    requireSame(work.ours, numpy.sum, "numpy");
    const std::string name = "1D fill, weighted, 100 equal bins, 8 M";
    bench::printFaster(name, "Boost.Histogram", times[0], times[1], 1.5);
    bench::printFaster(name, "GSL", times[0], times[2], 2.0);
    bench::printFaster(name, "numpy", times[0], numpy.medianMs, 2.5);
}

void measureVariableBins(const Columns& columns) {
    OneAxis work{.columns = columns, .axis = Axis(growingEdges())};
    const std::vector<double> times = bench::mediansOf(
        {[&] { work.fillOurs(); }, [&] { work.fillTheirs(bh::axis::variable<>(growingEdges())); }}, Clock::Processor);
    requireSame(work.ours, work.theirs, "Boost.Histogram");
    bench::printFaster("1D fill, weighted, 100 variable bins, 8 M", "Boost.Histogram", times[0], times[1], 10.0);
}

void measurePlane(const Columns& columns, const Peer& numpy) {
    const Axis axis(bins, low, high);
    const std::vector<std::vector<double>> coordinates{columns.x, columns.y};
    double ours = 0.0;
    double theirs = 0.0;
    const auto fillOurs = [&] {
        Histogram2D histogram(Grid<2>({axis, axis}));
        histogram.fill({columns.x.data(), columns.y.data()}, nullptr, entries);
        ours = histogram.inRange().w;
    };
    const auto fillTheirs = [&] {
        const bh::axis::regular<> boostAxis(bins, low, high);
        auto histogram = bh::make_weighted_histogram(boostAxis, boostAxis);
        // What it does fastest: all values in one call.
        histogram.fill(coordinates);
        theirs = 0.0;
        for (auto&& cell : bh::indexed(histogram)) {
            theirs += cell->value();
        }
    };
    const std::vector<double> times = bench::mediansOf({fillOurs, fillTheirs}, Clock::Processor);
    requireSame(ours, theirs, "Boost.Histogram");
    requireSame(ours, numpy.sum, "numpy");
    bench::printFaster("2D fill, 100 x 100, 8 M", "Boost.Histogram", times[0], times[1], 1.1);
    bench::printFaster("2D fill, 100 x 100, 8 M", "numpy", times[0], numpy.medianMs, 10.0);
}

/// The mean of a value in bins of another, with its spread.
void measureProfile(const Columns& columns) {
    double ours = 0.0;
    double theirs = 0.0;
    const auto fillOurs = [&] {
        Profile1D profile(Grid<1>({Axis(bins, low, high)}));
        profile.fill({columns.x.data()}, columns.y.data(), columns.w.data(), entries);
        ours = 0.0;
        for (std::size_t bin = 1; bin <= bins; ++bin) {
            ours += profile.rms(bin);
        }
    };
    const auto fillTheirs = [&] {
        auto profile = bh::make_weighted_profile(bh::axis::regular<>(bins, low, high));
        profile.fill(columns.x, bh::sample(columns.y), bh::weight(columns.w));
        theirs = 0.0;
        for (auto&& cell : bh::indexed(profile)) {
            // Its variance is that of a sample, ours that of the population.
            const double w = cell->sum_of_weights();
            theirs += std::sqrt(cell->variance() * (1.0 - cell->sum_of_weights_squared() / (w * w)));
        }
    };
    const std::vector<double> times = bench::mediansOf({fillOurs, fillTheirs}, Clock::Processor);
    requireSame(ours, theirs, "Boost.Histogram");
    bench::printFaster("1D profile, weighted, 100 equal bins, 8 M", "Boost.Histogram", times[0], times[1], 1.0);
}

}  // namespace

int main() {
    const Columns columns = randomColumns();
    const std::vector<Peer> numpy = numpyOn(columns);
    measureEqualBins(columns, numpy[0]);
    measureVariableBins(columns);
    measurePlane(columns, numpy[1]);
    measureProfile(columns);
    return 0;
}
