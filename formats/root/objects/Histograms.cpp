#include "root/objects/Histograms.h"

#include "root/objects/HistogramAxes.h"

#include <fmt/format.h>
#include <velmorak/Failure.h>
#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

namespace velmorak::root {
namespace {

/// Sums over all fills in range, as an object has them: of a quantity, and of the products of two.
template <std::size_t axes>
struct StoredSums {
    static constexpr std::size_t pairs = CellSums<axes>::pairs;

    double w = 0.0;
    std::array<double, axes> first{};
    std::array<double, pairs> second{};
};

constexpr std::array<const char*, 3> firstNames{"fTsumwx", "fTsumwy", "fTsumwz"};
constexpr std::array<const char*, 1> secondNames1{"fTsumwx2"};
constexpr std::array<const char*, 3> secondNames2{"fTsumwx2", "fTsumwxy", "fTsumwy2"};
constexpr std::array<const char*, 6> secondNames3{"fTsumwx2", "fTsumwxy", "fTsumwxz",
                                                  "fTsumwy2", "fTsumwyz", "fTsumwz2"};

template <std::size_t axes>
const char* secondName(std::size_t pair) {
    if constexpr (axes == 1) {
        return secondNames1[pair];
    } else if constexpr (axes == 2) {
        return secondNames2[pair];
    } else {
        return secondNames3[pair];
    }
}

template <std::size_t axes>
StoredSums<axes> storedSums(const Object& object) {
    StoredSums<axes> sums;
    sums.w = object.real("fTsumw");
    for (std::size_t i = 0; i < axes; ++i) {
        sums.first[i] = object.real(firstNames[i]);
    }
    for (std::size_t pair = 0; pair < sums.pairs; ++pair) {
        sums.second[pair] = object.real(secondName<axes>(pair));
    }
    return sums;
}

template <std::size_t axes, std::size_t quantities>
CellSums<quantities> inRange(const Grid<axes>& grid, const CellVector<CellSums<quantities>>& cells) {
    CellSums<quantities> all;
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (grid.isInside(cell)) {
            all.add(std::as_const(cells)[cell]);
        }
    }
    return all;
}

double widest(const Axis& axis) {
    double width = 0.0;
    for (std::size_t bin = 0; bin < axis.bins(); ++bin) {
        width = std::max(width, axis.width(bin));
    }
    return width;
}

/// Fills may all lie at an edge of their bins, but not beyond it.
bool isWithinBins(double shift, const Axis& axis) {
    return axis.labels.empty() && std::abs(shift) <= 0.5000001 * widest(axis);
}

/// Moves the fills of each bin away from its centre, by the same distance and with the same spread in all bins, so that
/// the sums over all bins become those of the file.
template <std::size_t axes, std::size_t quantities>
void matchStoredSums(const Object& object, const Grid<axes>& grid, CellVector<CellSums<quantities>>& cells) {
    const StoredSums<axes> stored = storedSums<axes>(object);
    const CellSums<quantities> centres = inRange(grid, cells);
    const bool isComplete = std::abs(stored.w - centres.w) <= 1e-9 * std::abs(centres.w) && centres.w != 0.0;
    std::array<double, axes> shift{};
    for (std::size_t i = 0; i < axes; ++i) {
        shift[i] = stored.first[i] / stored.w - centres.mean(i);
        if (!isComplete || !isWithinBins(shift[i], grid.axis(i))) {
            return;
        }
    }
    std::array<double, StoredSums<axes>::pairs> spread{};
    for (std::size_t i = 0; i < axes; ++i) {
        for (std::size_t j = i; j < axes; ++j) {
            const std::size_t pair = CellSums<axes>::pairOf(i, j);
            const double product = stored.first[i] / stored.w * (stored.first[j] / stored.w);
            spread[pair] = stored.second[pair] / stored.w - product - centres.covariance(i, j);
        }
    }
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (!grid.isInside(cell) || std::as_const(cells)[cell].w == 0.0) {
            continue;
        }
        CellSums<quantities>& sums = cells[cell];
        for (std::size_t i = 0; i < axes; ++i) {
            sums.pivot[i] += shift[i];
            for (std::size_t j = i; j < axes; ++j) {
                sums.second[sums.pairOf(i, j)] += sums.w * spread[CellSums<axes>::pairOf(i, j)];
            }
        }
    }
}

/// The number of fills with a weight of 1 that have the same relative error.
std::int64_t entriesOf(double w, double ww) {
    constexpr double most = 9007199254740992.0;
    const double number = ww > 0.0 ? w / ww * w : 0.0;
    return number > 0.0 ? static_cast<std::int64_t>(std::llround(std::min(number, most))) : 0;
}

void describe(const Object& from, DataObject& object) {
    object.name = from.text("fName");
    object.title = from.text("fTitle");
    object.annotation.push_back({"class", from.className, false});
    object.annotation.push_back({"entries", textOf(from.real("fEntries")), false});
}

/// Sums of squared weights; those of weights of 1 if the file has none.
std::vector<double> squaresOf(const Object& object, const char* name, const std::vector<double>& sums) {
    std::vector<double> squares = object.reals(name);
    if (squares.size() != sums.size()) {
        squares = sums;
        std::transform(squares.begin(), squares.end(), squares.begin(), [](double sum) { return std::abs(sum); });
    }
    return squares;
}

/// Fills that were still in a buffer when the histogram was written: their number, and weight and coordinates of each.
template <std::size_t axes>
void fillBuffered(const Object& object, Histogram<axes>& histogram) {
    const std::vector<double> buffer = object.reals("fBuffer");
    const double count = buffer.empty() ? 0.0 : buffer.front();
    for (std::size_t i = 0; static_cast<double>(i) < count && (i + 1) * (axes + 1) < buffer.size(); ++i) {
        std::array<double, axes> point{};
        std::copy_n(buffer.begin() + static_cast<std::ptrdiff_t>(i * (axes + 1) + 2), axes, point.begin());
        histogram.fill(point, buffer[i * (axes + 1) + 1]);
    }
}

template <std::size_t axes>
DataObjectPtr histogramOf(const Object& object) {
    const std::vector<double> contents = object.reals(arrayMember);
    const Grid<axes> grid = gridFrom<axes>(object, contents.size());
    const std::vector<double> squares = squaresOf(object, "fSumw2", contents);
    CellVector<CellSums<axes>> cells(contents.size());
    for (std::size_t cell = 0; cell < contents.size(); ++cell) {
        if (contents[cell] != 0.0 || squares[cell] != 0.0) {
            cells[cell] = CellSums<axes>::at(centerOf(grid, cell), entriesOf(contents[cell], squares[cell]),
                                             contents[cell], squares[cell]);
        }
    }
    matchStoredSums<axes, axes>(object, grid, cells);
    auto histogram = std::make_shared<Histogram<axes>>(grid, std::move(cells), 0);
    fillBuffered(object, *histogram);
    describe(object, *histogram);
    return histogram;
}

/// Of a profile, the contents are sums of the profiled value, and fSumw2 those of its square.
template <std::size_t axes>
DataObjectPtr profileOf(const Object& object) {
    const std::vector<double> sums = object.reals(arrayMember);
    const Grid<axes> grid = gridFrom<axes>(object, sums.size());
    const std::vector<double> squares = object.reals("fSumw2");
    const std::vector<double> weights = object.reals("fBinEntries");
    if (squares.size() != sums.size() || weights.size() != sums.size()) {
        throw Failure("its arrays have different lengths");
    }
    const std::vector<double> squaredWeights = squaresOf(object, "fBinSumw2", weights);
    CellVector<CellSums<axes + 1>> cells(sums.size());
    for (std::size_t cell = 0; cell < sums.size(); ++cell) {
        const double w = weights[cell];
        if (w == 0.0) {
            continue;
        }
        std::array<double, axes + 1> point{};
        const std::array<double, axes> center = centerOf(grid, cell);
        std::copy(center.begin(), center.end(), point.begin());
        point[axes] = sums[cell] / w;
        CellSums<axes + 1> filled =
            CellSums<axes + 1>::at(point, entriesOf(w, squaredWeights[cell]), w, squaredWeights[cell]);
        filled.second[filled.pairOf(axes, axes)] = squares[cell] - sums[cell] * point[axes];
        cells[cell] = filled;
    }
    matchStoredSums<axes, axes + 1>(object, grid, cells);
    auto profile = std::make_shared<Profile<axes>>(grid, std::move(cells), CellVector<ProfileReading>(), 0);
    describe(object, *profile);
    return profile;
}

/// @throws Failure for an object that the classes of the SDK do not accept.
template <typename Make>
DataObjectPtr made(const Object& object, const Make& make) {
    const auto fail = [&](const char* reason) {
        throw Failure(fmt::format("the {} \"{}\" cannot be read: {}", object.className, object.text("fName"), reason));
    };
    if (!object.isWhole) {
        fail("the file does not describe all its members");
    }
    try {
        return make(object);
    } catch (const std::invalid_argument& error) {
        fail(error.what());
    } catch (const Failure& failure) {
        fail(failure.what());
    }
    return nullptr;
}

/// @return whether the name is that of a class of histograms of so many axes, by the type of its contents.
bool isHistogramOf(const std::string& className, std::size_t axes) {
    constexpr std::string_view contents = "CSIFDL";
    return className.size() == 4 && className.starts_with("TH") && className[2] == static_cast<char>('0' + axes) &&
           contents.find(className[3]) != std::string_view::npos;
}

}  // namespace

std::size_t histogramAxes(const std::string& className) {
    for (std::size_t axes = 1; axes <= 3; ++axes) {
        if (isHistogramOf(className, axes)) {
            return axes;
        }
    }
    return 0;
}

std::size_t profileAxes(const std::string& className) {
    return className == "TProfile" ? 1 : className == "TProfile2D" ? 2 : 0;
}

DataObjectPtr histogramFrom(const Object& object) {
    switch (histogramAxes(object.className)) {
        case 1:
            return made(object, histogramOf<1>);
        case 2:
            return made(object, histogramOf<2>);
        case 3:
            return made(object, histogramOf<3>);
        default:
            throw Failure(fmt::format("a {} is not a histogram", object.className));
    }
}

DataObjectPtr profileFrom(const Object& object) {
    switch (profileAxes(object.className)) {
        case 1:
            return made(object, profileOf<1>);
        case 2:
            return made(object, profileOf<2>);
        default:
            throw Failure(fmt::format("a {} is not a profile", object.className));
    }
}

}  // namespace velmorak::root
