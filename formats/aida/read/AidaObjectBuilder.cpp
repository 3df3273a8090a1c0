#include "aida/read/AidaObjectBuilder.h"

#include "aida/Vocabulary.h"
#include "aida/write/PlainSums.h"

#include <velmorak/Failure.h>
#include <velmorak/Profile.h>
#include <velmorak/Text.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace velmorak::io {

namespace {

constexpr std::size_t maxDimensions = 1000;

template <typename Object>
std::shared_ptr<DataObject> entitled(Object object, const ParsedObject& parsed) {
    object.name = parsed.name;
    object.title = parsed.title;
    object.annotation = parsed.annotation;
    object.options = parsed.options;
    return std::make_shared<Object>(std::move(object));
}

std::int64_t nanEntriesOf(const ParsedObject& parsed) {
    const std::string* text = annotated(parsed.annotation, "NaNEntries");
    const double count = !text ? 0.0 : numberOr(text->c_str(), 0.0);
    return count >= 0.0 && count < 9e18 ? static_cast<std::int64_t>(count) : 0;
}

/// Mean of the coordinate if the file does not give it: some writers omit a mean of 0, others omit all means.
double likelyMean(const Axis& axis, std::size_t cell) {
    if (cell == 0 || cell > axis.bins()) {
        return 0.0;
    }
    const bool mayBeZero = axis.edge(cell - 1) <= 0.0 && 0.0 < axis.edge(cell);
    return mayBeZero ? 0.0 : axis.center(cell - 1);
}

double heightOf(const ParsedBin& bin) {
    return std::isnan(bin.height) ? static_cast<double>(bin.entries) : bin.height;
}

/// Sets the sum of w x² so that the sums return the spread to the last bit.
/// @return false if no sum does; the spread is then off by a rounding.
template <std::size_t quantities>
bool setSpread(CellSums<quantities>& sums, std::size_t quantity, double spread) {
    double& sum = sums.second[sums.pairOf(quantity, quantity)];
    const double offset = sums.first[quantity] / sums.w;
    const double product = sums.w * (spread * spread + (std::isfinite(offset) ? offset * offset : 0.0));
    double below = product;
    double above = product;
    constexpr int units = 3;
    for (int step = 0; step <= units; ++step) {
        for (const double candidate : {below, above}) {
            sum = candidate;
            if (sums.rms(quantity) == spread) {
                return true;
            }
        }
        below = std::nextafter(below, -HUGE_VAL);
        above = std::nextafter(above, HUGE_VAL);
    }
    sum = product;
    return false;
}

/// Gives one quantity the mean and spread of a file. An infinite mean is not a pivot. A few spreads are not the root of
/// any sum divided by its weight: for these, a pivot beside the mean is found.
template <std::size_t quantities>
void setMoments(CellSums<quantities>& sums, std::size_t quantity, double mean, double spread) {
    sums.pivot[quantity] = std::isfinite(mean) ? mean : 0.0;
    sums.first[quantity] = std::isfinite(mean) ? 0.0 : sums.w * mean;
    sums.second[sums.pairOf(quantity, quantity)] = 0.0;
    if (!(std::abs(spread) > 0.0) || sums.w == 0.0 || setSpread(sums, quantity, spread)) {
        return;
    }
    constexpr int pivots = 64;
    const CellSums<quantities> aboutMean = sums;
    for (int i = 1; i <= pivots && std::isfinite(mean); ++i) {
        sums.pivot[quantity] = mean - spread * i / pivots;
        sums.first[quantity] = sums.w * (mean - sums.pivot[quantity]);
        if (sums.mean(quantity) == mean && setSpread(sums, quantity, spread)) {
            return;
        }
    }
    sums = aboutMean;
}

/// Sets the moments of the coordinates of a bin whose sum of weights is known. Without a correlation in the file, there
/// is none within a bin.
template <std::size_t dimensions, std::size_t quantities>
void setCoordinates(const ParsedBin& bin, const Grid<dimensions>& grid, std::size_t cell, CellSums<quantities>& sums) {
    const auto cells = grid.alongAxes(cell);
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        const double mean = std::isnan(bin.means[direction]) ? likelyMean(grid.axis(direction), cells[direction])
                                                             : bin.means[direction];
        // Old writers store the spread of the coordinate of a histogram in rms.
        const bool hasOldSpread = quantities == 1 && std::isnan(bin.spreads[direction]);
        setMoments(sums, direction, mean, hasOldSpread ? bin.rms : bin.spreads[direction]);
    }
}

template <std::size_t dimensions>
CellSums<dimensions> sumsOf(const ParsedBin& bin, const Grid<dimensions>& grid, std::size_t cell) {
    CellSums<dimensions> sums;
    sums.entries = bin.entries;
    sums.w = heightOf(bin);
    sums.ww = std::isnan(bin.error) ? static_cast<double>(bin.entries) : bin.error * bin.error;
    setCoordinates(bin, grid, cell, sums);
    return sums;
}

template <std::size_t quantities>
constexpr std::size_t momentNumbers = 3 + 2 * quantities + CellSums<quantities>::pairs;
template <std::size_t quantities>
constexpr std::size_t plainNumbers = 3 + 2 * quantities;

/// Reads the sums in the order in which they are written: entries, w, ww, then pivots, firsts and seconds.
template <std::size_t quantities>
CellSums<quantities> momentsFrom(const std::vector<double>& numbers) {
    CellSums<quantities> sums;
    sums.entries = static_cast<std::int64_t>(numbers[0]);
    sums.w = numbers[1];
    sums.ww = numbers[2];
    auto next = numbers.begin() + 3;
    const auto take = [&](auto& list) {
        std::copy_n(next, list.size(), list.begin());
        next += static_cast<std::ptrdiff_t>(list.size());
    };
    take(sums.pivot);
    take(sums.first);
    take(sums.second);
    return sums;
}

/// Reads the sums that earlier versions wrote, which are sums about 0: entries, w, ww, of a profile those of the value,
/// then wx and wx² of each axis. There is no correlation within a cell.
template <std::size_t axes, std::size_t quantities>
CellSums<quantities> plainSumsFrom(const std::vector<double>& numbers) {
    CellSums<quantities> sums;
    sums.entries = static_cast<std::int64_t>(numbers[0]);
    sums.w = numbers[1];
    sums.ww = numbers[2];
    std::size_t next = 3;
    for (std::size_t i = 0; i < quantities; ++i) {
        const std::size_t quantity = (i + axes) % quantities;
        sums.first[quantity] = numbers[next++];
        sums.second[sums.pairOf(quantity, quantity)] = numbers[next++];
    }
    setUncorrelated(sums);
    return sums;
}

bool agree(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b)) || std::abs(a - b) <= 1e-8 * std::max(std::abs(a), std::abs(b));
}

/// Whether the exact sums in the annotation contradict the bins: another program may have changed the bins and kept the
/// annotation.
template <typename Sums>
bool isStale(const CellVector<Sums>& fromBins, const std::map<std::size_t, std::vector<double>>& exact,
             bool isHistogram) {
    if (exact.empty()) {
        return true;
    }
    for (const auto& [cell, numbers] : exact) {
        if (cell >= fromBins.size() || !(std::abs(numbers[0]) < 9e18)) {
            return true;
        }
    }
    for (std::size_t cell = 0; cell < fromBins.size(); ++cell) {
        const auto place = exact.find(cell);
        const bool isThere = place != exact.end();
        const double entries = isThere ? place->second[0] : 0.0;
        const double w = isThere ? place->second[1] : 0.0;
        if (!agree(static_cast<double>(fromBins[cell].entries), entries) ||
            (isHistogram && !agree(fromBins[cell].w, w))) {
            return true;
        }
    }
    return false;
}

/// Replaces the sums by those of an annotation, unless there is none or it is stale.
/// @param keys of sums about pivots, and of those of earlier versions.
/// @return whether they were replaced.
template <std::size_t axes, std::size_t quantities>
bool takeSums(const ParsedObject& parsed, CellVector<CellSums<quantities>>& cells, bool isHistogram,
              const std::array<const char*, 2>& keys) {
    const auto moments = annotatedSums(parsed, keys[0], momentNumbers<quantities>);
    const bool hasMoments = !isStale(cells, moments, isHistogram);
    const auto plain = hasMoments ? moments : annotatedSums(parsed, keys[1], plainNumbers<quantities>);
    if (!hasMoments && isStale(cells, plain, isHistogram)) {
        return false;
    }
    for (const auto& [cell, numbers] : plain) {
        cells[cell] = hasMoments ? momentsFrom<quantities>(numbers) : plainSumsFrom<axes, quantities>(numbers);
    }
    return true;
}

void noteErrors(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    const auto isAsymmetric = [&](const ParsedBin& bin) {
        return parsed.package != "LWH" && !std::isnan(bin.error2) && !std::isnan(bin.error) &&
               bin.error2 != bin.error && std::abs(bin.error2 - bin.error * bin.error) > 1e-5 * std::abs(bin.error2);
    };
    if (std::any_of(parsed.bins.begin(), parsed.bins.end(), isAsymmetric)) {
        warnings.emplace_back("its bins have different errors downwards; the errors upwards are used for both");
    }
}

template <std::size_t dimensions>
CellVector<CellSums<dimensions>> histogramCells(const ParsedObject& parsed, const Grid<dimensions>& grid,
                                                std::vector<std::string>& warnings) {
    noteErrors(parsed, warnings);
    CellVector<CellSums<dimensions>> cells(grid.cellCount());
    bool hasAllMeans = true;
    for (const auto& [cell, bin] : placedBins(parsed, grid, warnings)) {
        cells[cell] = sumsOf(*bin, grid, cell);
        for (std::size_t direction = 0; direction < dimensions; ++direction) {
            hasAllMeans = hasAllMeans && (!grid.isInside(cell) || !std::isnan(bin->means[direction]) ||
                                          likelyMean(grid.axis(direction), grid.alongAxes(cell)[direction]) == 0.0);
        }
    }
    if (takeSums<dimensions>(parsed, cells, true, {"ExactMoments", "ExactSums"})) {
        return cells;
    }
    if (annotated(parsed.annotation, "ExactMoments") || annotated(parsed.annotation, "ExactSums")) {
        warnings.emplace_back("its annotation of exact sums does not match its bins and is ignored");
    }
    if (!hasAllMeans) {
        warnings.emplace_back("its bins have no means of the fills; the bin centres are used");
    }
    return cells;
}

template <std::size_t dimensions>
std::shared_ptr<DataObject> histogram(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    const auto grid = gridFrom<dimensions>(parsed, warnings);
    auto cells = histogramCells(parsed, grid, warnings);
    return entitled(Histogram<dimensions>(grid, std::move(cells), nanEntriesOf(parsed)), parsed);
}

/// The file has no weights: each entry counts as one.
template <std::size_t dimensions>
CellSums<dimensions + 1> profileSums(const ParsedBin& bin, const Grid<dimensions>& grid, std::size_t cell) {
    CellSums<dimensions + 1> sums;
    sums.entries = bin.entries;
    sums.w = sums.ww = static_cast<double>(bin.entries);
    setCoordinates(bin, grid, cell, sums);
    setMoments(sums, dimensions, std::isnan(bin.height) ? 0.0 : bin.height, bin.rms);
    return sums;
}

template <std::size_t dimensions>
std::shared_ptr<DataObject> profile(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    if (parsed.package == "LWH" && dimensions == 1) {
        warnings.emplace_back(
            "it was written by LWH, which puts heights and errors into wrong bins; they are kept as read");
    }
    const auto grid = gridFrom<dimensions>(parsed, warnings);
    CellVector<CellSums<dimensions + 1>> cells(grid.cellCount());
    CellVector<ProfileReading> readings(cells.size());
    for (const auto& [cell, bin] : placedBins(parsed, grid, warnings)) {
        cells[cell] = profileSums(*bin, grid, cell);
        readings[cell] = {bin->height, bin->error, bin->rms, 1};
    }
    if (takeSums<dimensions>(parsed, cells, false, {"ExactMoments", "ExactSums"})) {
        readings = {};
    } else {
        takeSums<dimensions>(parsed, cells, false, {"Moments", "Sums"});
    }
    return entitled(Profile<dimensions>(grid, std::move(cells), std::move(readings), nanEntriesOf(parsed)), parsed);
}

std::size_t dimensionOf(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    double dimension = numberOr(parsed.dimension.c_str(), notGiven);
    if (parsed.dimension.empty()) {
        for (const auto& point : parsed.points) {
            dimension = std::max(std::isnan(dimension) ? 1.0 : dimension, static_cast<double>(point.size()));
        }
        warnings.emplace_back("it has no dimension; that of its points is used");
        dimension = std::isnan(dimension) ? 1.0 : dimension;
    }
    if (!(dimension >= 1.0) || dimension > static_cast<double>(maxDimensions) || dimension != std::floor(dimension)) {
        throw Failure(fmt::format(R"("{:.40}" is not a valid dimension)", parsed.dimension));
    }
    return static_cast<std::size_t>(dimension);
}

std::shared_ptr<DataObject> points(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    const std::size_t dimension = dimensionOf(parsed, warnings);
    std::vector<Measurement> all;
    std::size_t tooShort = 0;
    std::size_t tooLong = 0;
    for (const auto& point : parsed.points) {
        tooShort += point.size() < dimension ? 1 : 0;
        tooLong += point.size() > dimension ? 1 : 0;
        for (std::size_t direction = 0; direction < dimension; ++direction) {
            all.push_back(direction < point.size() ? point[direction] : Measurement{notGiven, notGiven, notGiven});
        }
    }
    if (tooShort != 0) {
        warnings.push_back(
            fmt::format("{} of its points have too few measurements; the missing ones are NaN", tooShort));
    }
    if (tooLong != 0) {
        warnings.push_back(fmt::format("{} of its points have too many measurements; the surplus is ignored", tooLong));
    }
    Points made(dimension, std::move(all));
    made.axisTitles = parsed.axisTitles;
    constexpr std::array keys{"XLabel", "YLabel", "ZLabel"};
    for (std::size_t direction = 0; direction < std::min(dimension, keys.size()) && parsed.axisTitles.empty();
         ++direction) {
        if (const std::string* title = annotated(parsed.annotation, keys[direction])) {
            made.axisTitles.resize(direction + 1);
            made.axisTitles[direction] = *title;
        }
    }
    made.axisTitles.resize(made.axisTitles.empty() ? 0 : dimension);
    return entitled(std::move(made), parsed);
}

std::shared_ptr<DataObject> function(const ParsedObject& parsed) {
    FunctionObject made;
    made.codelet = trimmed(parsed.codelet);
    made.isNormalized = parsed.isNormalized;
    made.arguments = parsed.arguments;
    made.parameters = parsed.parameters;
    return entitled(std::move(made), parsed);
}

}  // namespace

const std::string* annotated(const std::vector<AnnotationItem>& annotation, std::string_view key) {
    const auto last = std::find_if(annotation.rbegin(), annotation.rend(),
                                   [&](const AnnotationItem& item) { return item.key == key; });
    return last == annotation.rend() ? nullptr : &last->value;
}

double numberOr(const char* text, double other) {
    double number = other;
    if (text) {
        readNumber(text, number);
    }
    return number;
}

std::shared_ptr<DataObject> objectFrom(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    if (!parsed.problem.empty()) {
        throw Failure(parsed.problem);
    }
    const AidaObjectType* const type = aidaObjectType(parsed.element);
    switch (type ? type->family : AidaFamily::Tuple) {
        case AidaFamily::Histogram:
            return type->dimensions == 1   ? histogram<1>(parsed, warnings)
                   : type->dimensions == 2 ? histogram<2>(parsed, warnings)
                                           : histogram<3>(parsed, warnings);
        case AidaFamily::Profile:
            return type->dimensions == 1 ? profile<1>(parsed, warnings) : profile<2>(parsed, warnings);
        case AidaFamily::Points:
            return points(parsed, warnings);
        case AidaFamily::Function:
            return function(parsed);
        case AidaFamily::Cloud:
        case AidaFamily::Tuple:
            break;
    }
    throw std::logic_error("a table has no object");
}

}  // namespace velmorak::io
