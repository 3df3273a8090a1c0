// Prints a checksum of the results of each elementary function. Its output is the same on every processor.

#include "elementary/Loops.h"

#include <velmorak/ElementaryFunctions.h>

#include <array>
#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using velmorak::elementary::Loops;

/// SplitMix64 (G. Steele, D. Lea, C. Flood, OOPSLA 2014): only operations on integers.
class Random {
public:
    std::uint64_t bits() {
        std::uint64_t z = state += 0x9e3779b97f4a7c15;
        z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27U)) * 0x94d049bb133111eb;
        return z ^ (z >> 31U);
    }

    /// Of every size: any bits, or up to 1, 32 or 1024 on both sides of 0.
    double value() {
        constexpr std::array scales{0.0, 0x1p-63, 0x1p-58, 0x1p-53};
        const double scale = scales[bits() % scales.size()];
        const std::uint64_t number = bits();
        return scale == 0.0 ? std::bit_cast<double>(number)
                            : static_cast<double>(static_cast<std::int64_t>(number)) * scale;
    }

private:
    std::uint64_t state = 4711;
};

/// FNV-1a of the bits of the numbers; all NaN are one.
class Checksum {
public:
    void add(double value) {
        const auto bits = std::isnan(value) ? 0x7ff8000000000000 : std::bit_cast<std::uint64_t>(value);
        for (unsigned shift = 0; shift < 64; shift += 8) {
            sum = (sum ^ ((bits >> shift) & 0xffU)) * 0x100000001b3;
        }
    }

    std::uint64_t sum = 0xcbf29ce484222325;
};

constexpr std::size_t blockSize = 1000;
constexpr std::size_t blockCount = 100;

template <typename Compute>
void print(const char* name, const Compute& compute) {
    Random random;
    Checksum checksum;
    std::vector<double> x(blockSize);
    std::vector<double> y(blockSize);
    std::vector<double> out(blockSize);
    for (std::size_t block = 0; block < blockCount; ++block) {
        for (std::size_t i = 0; i < blockSize; ++i) {
            x[i] = random.value();
            y[i] = random.value();
        }
        compute(x.data(), y.data(), out.data());
        for (const double value : out) {
            checksum.add(value);
        }
    }
    std::printf("%s %016" PRIx64 "\n", name, checksum.sum);
}

}  // namespace

int main() {
    const Loops& loops = velmorak::elementary::bestLoops();
    constexpr std::pair<const char*, velmorak::elementary::LoopOfOne Loops::*> ofOne[] = {
        {"acos", &Loops::acos},   {"acosh", &Loops::acosh}, {"asin", &Loops::asin},     {"asinh", &Loops::asinh},
        {"atan", &Loops::atan},   {"atanh", &Loops::atanh}, {"cbrt", &Loops::cbrt},     {"cos", &Loops::cos},
        {"cosh", &Loops::cosh},   {"erf", &Loops::erf},     {"erfc", &Loops::erfc},     {"exp", &Loops::exp},
        {"exp2", &Loops::exp2},   {"expm1", &Loops::expm1}, {"lgamma", &Loops::lgamma}, {"log", &Loops::log},
        {"log10", &Loops::log10}, {"log1p", &Loops::log1p}, {"log2", &Loops::log2},     {"sin", &Loops::sin},
        {"sinh", &Loops::sinh},   {"tan", &Loops::tan},     {"tanh", &Loops::tanh},     {"tgamma", &Loops::tgamma}};
    for (const auto& [name, loop] : ofOne) {
        print(name, [&loops, member = loop](const double* x, const double*, double* out) {
            (loops.*member)(x, blockSize, out);
        });
    }
    constexpr std::pair<const char*, velmorak::elementary::LoopOfTwo Loops::*> ofTwo[] = {
        {"atan2", &Loops::atan2}, {"hypot", &Loops::hypot}, {"pow", &Loops::pow}};
    for (const auto& [name, loop] : ofTwo) {
        print(name, [&loops, member = loop](const double* x, const double* y, double* out) {
            (loops.*member)(x, y, blockSize, out);
        });
    }
    print("digamma", [](const double* x, const double*, double* out) {
        for (std::size_t i = 0; i < blockSize; ++i) {
            out[i] = velmorak::elementary::digamma(x[i]);
        }
    });
    print("gammaQ", [](const double* x, const double* y, double* out) {
        for (std::size_t i = 0; i < blockSize; ++i) {
            out[i] = velmorak::elementary::gammaQ(std::fabs(x[i]), std::fabs(y[i]));
        }
    });
}
