#include "expression/FunctionKernels.h"
#include "expression/ListLoops.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace velmorak::expression {

namespace {

/// Lists up to this length are sorted by insertion, and searched through for equal values.
constexpr std::size_t shortList = 24;

/// Sorts the positions 0 to count - 1 by their values.
template <typename T>
void sortPositions(const T* values, std::int64_t* positions, std::size_t count) {
    std::iota(positions, positions + count, std::int64_t{0});
    const auto isEarlier = [values](std::int64_t a, std::int64_t b) { return isBefore(values[a], values[b]); };
    if (count > shortList) {
        std::stable_sort(positions, positions + count, isEarlier);
        return;
    }
    for (std::size_t next = 1; next < count; ++next) {
        const std::int64_t position = positions[next];
        std::size_t place = next;
        for (; place > 0 && isEarlier(position, positions[place - 1]); --place) {
            positions[place] = positions[place - 1];
        }
        positions[place] = position;
    }
}

template <typename T>
bool orderPositions(const ListArgs& args) {
    auto* out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t begin = args.in[0].begin(row);
        sortPositions(valuesOf<T>(args.in[0]) + begin, out + begin, args.in[0].count(row));
    }
    return true;
}

/// @return the end of the positions written to out.
template <typename T>
std::int64_t* firstOfEqual(const T* values, std::size_t count, std::int64_t* out) {
    std::int64_t* const end = out + count;
    if (count <= shortList) {
        std::int64_t* last = out;
        for (std::size_t i = 0; i < count; ++i) {
            const auto isKnown = [&](std::int64_t known) { return areSame(values[known], values[i]); };
            if (std::none_of(out, last, isKnown)) {
                *last++ = static_cast<std::int64_t>(i);
            }
        }
        return last;
    }
    sortPositions(values, out, count);
    std::int64_t* const last =
        std::unique(out, end, [values](std::int64_t a, std::int64_t b) { return areSame(values[a], values[b]); });
    std::sort(out, last);
    return last;
}

template <typename T>
bool uniquePositions(const ListArgs& args) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    auto* const out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    auto* end = out;
    for (std::size_t row = 0; row < args.rows; ++row) {
        end = firstOfEqual(valuesOf<T>(args.in[0]) + args.in[0].begin(row), args.in[0].count(row), end);
        offsets.push_back(static_cast<std::uint64_t>(end - out));
    }
    return true;
}

/// Makes the offsets of combinations whose number in a row numberIn returns, as a real, which cannot overflow.
template <typename Number>
bool countCombinations(const ListArgs& args, const Number& numberIn) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    double all = 0.0;
    for (std::size_t row = 0; row < args.rows; ++row) {
        all += numberIn(row);
        if (all > static_cast<double>(*args.combinationsLeft)) {
            return false;
        }
        offsets.push_back(static_cast<std::uint64_t>(all));
    }
    *args.combinationsLeft -= offsets.back();
    return true;
}

/// @return the bound of a slice within [0, count].
std::uint64_t boundIn(double bound, std::uint64_t count) {
    const auto length = static_cast<double>(count);
    const double whole = std::floor(bound < 0.0 ? bound + length : bound);
    return static_cast<std::uint64_t>(std::clamp(whole, 0.0, length));
}

/// A direction, and those among which the nearest is searched.
std::int64_t nearestOf(double eta, double phi, const double* etas, const double* phis, std::uint64_t count) {
    constexpr double turn = 2.0 * std::numbers::pi;
    std::int64_t nearest = -1;
    double least = std::numeric_limits<double>::infinity();
    for (std::uint64_t i = 0; i < count; ++i) {
        const double inPhi = nearestRemainder(phi - phis[i], turn);
        const double inEta = eta - etas[i];
        const double square = inEta * inEta + inPhi * inPhi;
        if (square < least) {
            least = square;
            nearest = static_cast<std::int64_t>(i);
        }
    }
    return nearest;
}

}  // namespace

bool whereTrue(const ListArgs& args) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    auto* const out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    std::uint64_t made = 0;
    for (std::size_t row = 0; row < args.rows; ++row) {
        const auto* const truths = valuesOf<std::uint8_t>(args.in[0]) + args.in[0].begin(row);
        const std::uint64_t count = args.in[0].count(row);
        for (std::uint64_t i = 0; i < count; ++i) {
            out[made] = static_cast<std::int64_t>(i);
            made += truths[i] != 0 ? 1 : 0;
        }
        offsets.push_back(made);
    }
    return true;
}

bool slicePositions(const ListArgs& args) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    auto* const out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    auto* end = out;
    for (std::size_t row = 0; row < args.rows; ++row) {
        const double low = valuesOf<double>(args.in[1])[row];
        const double high = valuesOf<double>(args.in[2])[row];
        const std::uint64_t count = args.in[0].count(row);
        if (!std::isnan(low) && !std::isnan(high)) {
            for (std::uint64_t i = boundIn(low, count); i < boundIn(high, count); ++i) {
                *end++ = static_cast<std::int64_t>(i);
            }
        }
        offsets.push_back(static_cast<std::uint64_t>(end - out));
    }
    return true;
}

bool reversePositions(const ListArgs& args) {
    auto* out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    for (std::size_t row = 0; row < args.rows; ++row) {
        for (auto position = static_cast<std::int64_t>(args.in[0].count(row)); position-- > 0;) {
            *out++ = position;
        }
    }
    return true;
}

bool pairPositions(const ListArgs& args) {
    const auto number = [&](std::size_t row) {
        const auto count = static_cast<double>(args.in[0].count(row));
        return 0.5 * count * (count - 1.0);
    };
    if (!countCombinations(args, number)) {
        return false;
    }
    auto* out = room<std::int64_t>(args, 2 * args.offsets->back());
    for (std::size_t row = 0; row < args.rows; ++row) {
        const auto count = static_cast<std::int64_t>(args.in[0].count(row));
        for (std::int64_t i = 0; i < count; ++i) {
            for (std::int64_t j = i + 1; j < count; ++j) {
                *out++ = i;
                *out++ = j;
            }
        }
    }
    return true;
}

/// @return the end of the positions written.
std::int64_t* writeTriples(std::int64_t count, std::int64_t* out) {
    for (std::int64_t i = 0; i < count; ++i) {
        for (std::int64_t j = i + 1; j < count; ++j) {
            for (std::int64_t k = j + 1; k < count; ++k) {
                *out++ = i;
                *out++ = j;
                *out++ = k;
            }
        }
    }
    return out;
}

bool triplePositions(const ListArgs& args) {
    const auto number = [&](std::size_t row) {
        const auto count = static_cast<double>(args.in[0].count(row));
        return count < 3.0 ? 0.0 : count * (count - 1.0) * (count - 2.0) / 6.0;
    };
    if (!countCombinations(args, number)) {
        return false;
    }
    auto* out = room<std::int64_t>(args, 3 * args.offsets->back());
    for (std::size_t row = 0; row < args.rows; ++row) {
        out = writeTriples(static_cast<std::int64_t>(args.in[0].count(row)), out);
    }
    return true;
}

bool crossPositions(const ListArgs& args) {
    const auto number = [&](std::size_t row) {
        return static_cast<double>(args.in[0].count(row)) * static_cast<double>(args.in[1].count(row));
    };
    if (!countCombinations(args, number)) {
        return false;
    }
    auto* out = room<std::int64_t>(args, 2 * args.offsets->back());
    for (std::size_t row = 0; row < args.rows; ++row) {
        const auto count = static_cast<std::int64_t>(args.in[0].count(row));
        const auto others = static_cast<std::int64_t>(args.in[1].count(row));
        for (std::int64_t i = 0; i < count; ++i) {
            for (std::int64_t j = 0; j < others; ++j) {
                *out++ = i;
                *out++ = j;
            }
        }
    }
    return true;
}

bool nearestPositions(const ListArgs& args) {
    auto* out = room<std::int64_t>(args, valuesIn(args.in[0], args.rows));
    const auto* const eta = valuesOf<double>(args.in[0]);
    const auto* const phi = valuesOf<double>(args.in[1]);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const auto* const etas = valuesOf<double>(args.in[2]) + args.in[2].begin(row);
        const auto* const phis = valuesOf<double>(args.in[3]) + args.in[3].begin(row);
        const std::uint64_t begin = args.in[0].begin(row);
        for (std::uint64_t at = begin; at < begin + args.in[0].count(row); ++at) {
            out[at] = nearestOf(eta[at], phi[at], etas, phis, args.in[2].count(row));
        }
    }
    return true;
}

ListKernel orderKernel(ColumnType type) {
    return kernelFor(type, [](auto value) { return ListKernel{orderPositions<decltype(value)>}; });
}

ListKernel uniqueKernel(ColumnType type) {
    return kernelFor(type, [](auto value) { return ListKernel{uniquePositions<decltype(value)>}; });
}

}  // namespace velmorak::expression
