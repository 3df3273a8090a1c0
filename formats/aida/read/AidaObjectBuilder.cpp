#include "aida/read/AidaObjectBuilder.h"

#include <velmorak/Failure.h>
#include <velmorak/Profile.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmorak::io {

namespace {

constexpr std::size_t maxDimensions = 1000;

template <typename Object>
std::shared_ptr<DataObject> named(Object object, const RawObject& raw) {
    object.name = raw.name;
    object.title = raw.title;
    object.annotation = raw.annotation;
    object.options = raw.options;
    return std::make_shared<Object>(std::move(object));
}

std::int64_t nanEntriesOf(const RawObject& raw) {
    const std::string* text = annotated(raw.annotation, "NaNEntries");
    const double count = !text ? 0.0 : numberOr(text->c_str(), 0.0);
    return count >= 0.0 && count < 9e18 ? static_cast<std::int64_t>(count) : 0;
}

/// The coordinate's mean where the file does not say it: writers leave out a mean of 0, others leave out all means.
double likelyMean(const Axis& axis, std::size_t cell) {
    if (cell == 0 || cell > axis.bins()) {
        return 0.0;
    }
    const bool mayBeZero = axis.edge(cell - 1) <= 0.0 && 0.0 < axis.edge(cell);
    return mayBeZero ? 0.0 : axis.center(cell - 1);
}

double heightOf(const RawBin& bin) {
    return std::isnan(bin.height) ? static_cast<double>(bin.entries) : bin.height;
}

/// Sums of the coordinates of a bin whose weights add up to w.
template <std::size_t dimensions, typename Sums>
void addCoordinates(const RawBin& bin, const Grid<dimensions>& grid, std::size_t cell, bool isHistogram, Sums& sums) {
    const auto cells = grid.alongAxes(cell);
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        const double mean = std::isnan(bin.means[direction]) ? likelyMean(grid.axis(direction), cells[direction])
                                                             : bin.means[direction];
        // Old writers of histograms put the spread of the coordinate into rms.
        const bool hasOldSpread = isHistogram && dimensions == 1 && std::isnan(bin.spreads[direction]);
        double spread = hasOldSpread ? bin.rms : bin.spreads[direction];
        spread = std::isnan(spread) ? 0.0 : spread;
        sums.wx[direction] = sums.w * mean;
        sums.wxx[direction] = sums.w * (mean * mean + spread * spread);
    }
}

template <std::size_t dimensions>
GridSums<dimensions> sumsOf(const RawBin& bin, const Grid<dimensions>& grid, std::size_t cell) {
    GridSums<dimensions> sums;
    sums.entries = bin.entries;
    sums.w = heightOf(bin);
    sums.ww = std::isnan(bin.error) ? static_cast<double>(bin.entries) : bin.error * bin.error;
    addCoordinates(bin, grid, cell, true, sums);
    return sums;
}

template <std::size_t dimensions>
GridSums<dimensions> exactSums(const std::vector<double>& numbers) {
    GridSums<dimensions> sums;
    sums.entries = static_cast<std::int64_t>(numbers[0]);
    sums.w = numbers[1];
    sums.ww = numbers[2];
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        sums.wx[direction] = numbers[3 + 2 * direction];
        sums.wxx[direction] = numbers[4 + 2 * direction];
    }
    return sums;
}

bool agree(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b)) || std::abs(a - b) <= 1e-8 * std::max(std::abs(a), std::abs(b));
}

/// Exact sums stand beside the bins. A program that changed the bins and kept the annotation is noticed here.
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

void noteErrors(const RawObject& raw, std::vector<std::string>& warnings) {
    const auto isAsymmetric = [&](const RawBin& bin) {
        return raw.package != "LWH" && !std::isnan(bin.error2) && !std::isnan(bin.error) && bin.error2 != bin.error &&
               std::abs(bin.error2 - bin.error * bin.error) > 1e-5 * std::abs(bin.error2);
    };
    if (std::any_of(raw.bins.begin(), raw.bins.end(), isAsymmetric)) {
        warnings.emplace_back("its bins have errors of their own downwards; those upwards hold for both");
    }
}

template <std::size_t dimensions>
CellVector<GridSums<dimensions>> histogramCells(const RawObject& raw, const Grid<dimensions>& grid,
                                                std::vector<std::string>& warnings) {
    noteErrors(raw, warnings);
    CellVector<GridSums<dimensions>> cells(grid.cellCount());
    bool hasAllMeans = true;
    for (const auto& [cell, bin] : placedBins(raw, grid, warnings)) {
        cells[cell] = sumsOf(*bin, grid, cell);
        for (std::size_t direction = 0; direction < dimensions; ++direction) {
            hasAllMeans = hasAllMeans && (!grid.isInside(cell) || !std::isnan(bin->means[direction]) ||
                                          likelyMean(grid.axis(direction), grid.alongAxes(cell)[direction]) == 0.0);
        }
    }
    const auto exact = annotatedSums(raw, "ExactSums", 3 + 2 * dimensions);
    if (!isStale(cells, exact, true)) {
        for (const auto& [cell, numbers] : exact) {
            cells[cell] = exactSums<dimensions>(numbers);
        }
    } else {
        if (!exact.empty()) {
            warnings.emplace_back("its annotation of exact sums does not belong to its bins any more");
        }
        if (!hasAllMeans) {
            warnings.emplace_back("its bins do not say where in them the fills are; the centres are taken");
        }
    }
    return cells;
}

std::shared_ptr<DataObject> histogram1D(const RawObject& raw, std::vector<std::string>& warnings) {
    const Grid<1> grid = gridFrom<1>(raw, warnings);
    const CellVector<GridSums<1>> listed = histogramCells(raw, grid, warnings);
    CellVector<BinSums> cells(listed.size());
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        const GridSums<1>& sums = listed[cell];
        if (!isZero(sums)) {
            cells[cell] = {sums.entries, sums.w, sums.ww, sums.wx[0], sums.wxx[0]};
        }
    }
    return named(Histogram1D(grid.axis(0), std::move(cells), nanEntriesOf(raw)), raw);
}

template <std::size_t dimensions>
std::shared_ptr<DataObject> histogram(const RawObject& raw, std::vector<std::string>& warnings) {
    const auto grid = gridFrom<dimensions>(raw, warnings);
    auto cells = histogramCells(raw, grid, warnings);
    return named(HistogramGrid<dimensions>(grid, std::move(cells), nanEntriesOf(raw)), raw);
}

template <std::size_t dimensions>
ProfileSums<dimensions> profileSums(const std::vector<double>& numbers) {
    ProfileSums<dimensions> sums;
    sums.entries = static_cast<std::int64_t>(numbers[0]);
    sums.w = numbers[1];
    sums.ww = numbers[2];
    sums.wv = numbers[3];
    sums.wvv = numbers[4];
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        sums.wx[direction] = numbers[5 + 2 * direction];
        sums.wxx[direction] = numbers[6 + 2 * direction];
    }
    return sums;
}

/// The file does not say the weights: each entry counts as one.
template <std::size_t dimensions>
ProfileSums<dimensions> profileSums(const RawBin& bin, const Grid<dimensions>& grid, std::size_t cell) {
    ProfileSums<dimensions> sums;
    sums.entries = bin.entries;
    sums.w = sums.ww = static_cast<double>(bin.entries);
    const double height = std::isnan(bin.height) ? 0.0 : bin.height;
    const double rms = std::isnan(bin.rms) ? 0.0 : bin.rms;
    sums.wv = sums.w * height;
    sums.wvv = sums.w * (height * height + rms * rms);
    addCoordinates(bin, grid, cell, false, sums);
    return sums;
}

template <std::size_t dimensions>
std::shared_ptr<DataObject> profile(const RawObject& raw, std::vector<std::string>& warnings) {
    if (raw.package == "LWH" && dimensions == 1) {
        warnings.emplace_back(
            "it was written by LWH, which puts heights and errors into wrong bins; they are kept as read");
    }
    const auto grid = gridFrom<dimensions>(raw, warnings);
    CellVector<ProfileSums<dimensions>> cells(grid.cellCount());
    CellVector<ProfileReading> readings(cells.size());
    for (const auto& [cell, bin] : placedBins(raw, grid, warnings)) {
        cells[cell] = profileSums(*bin, grid, cell);
        readings[cell] = {bin->height, bin->error, bin->rms, 1};
    }
    constexpr std::size_t numbers = 5 + 2 * dimensions;
    auto exact = annotatedSums(raw, "ExactSums", numbers);
    const bool isExact = !isStale(cells, exact, false);
    if (!isExact) {
        exact = annotatedSums(raw, "Sums", numbers);
    }
    if (isExact || !isStale(cells, exact, false)) {
        for (const auto& [cell, values] : exact) {
            cells[cell] = profileSums<dimensions>(values);
        }
    }
    if (isExact) {
        readings.clear();
    }
    return named(Profile<dimensions>(grid, std::move(cells), std::move(readings), nanEntriesOf(raw)), raw);
}

std::size_t dimensionOf(const RawObject& raw, std::vector<std::string>& warnings) {
    double dimension = numberOr(raw.dimension.c_str(), notGiven);
    if (raw.dimension.empty()) {
        for (const auto& point : raw.points) {
            dimension = std::max(std::isnan(dimension) ? 1.0 : dimension, static_cast<double>(point.size()));
        }
        warnings.emplace_back("it does not say its dimension; that of its points is taken");
        dimension = std::isnan(dimension) ? 1.0 : dimension;
    }
    if (!(dimension >= 1.0) || dimension > static_cast<double>(maxDimensions) || dimension != std::floor(dimension)) {
        throw Failure(fmt::format(R"(a dimension of "{:.40}" is not possible)", raw.dimension));
    }
    return static_cast<std::size_t>(dimension);
}

std::shared_ptr<DataObject> points(const RawObject& raw, std::vector<std::string>& warnings) {
    const std::size_t dimension = dimensionOf(raw, warnings);
    std::vector<Measurement> all;
    std::size_t tooShort = 0;
    std::size_t tooLong = 0;
    for (const auto& point : raw.points) {
        tooShort += point.size() < dimension ? 1 : 0;
        tooLong += point.size() > dimension ? 1 : 0;
        for (std::size_t direction = 0; direction < dimension; ++direction) {
            all.push_back(direction < point.size() ? point[direction] : Measurement{notGiven, notGiven, notGiven});
        }
    }
    if (tooShort != 0) {
        warnings.push_back(fmt::format("{} of its points have too few measurements; the others are NaN", tooShort));
    }
    if (tooLong != 0) {
        warnings.push_back(fmt::format("{} of its points have too many measurements; these are left out", tooLong));
    }
    Points made(dimension, std::move(all));
    made.axisTitles = raw.axisTitles;
    constexpr std::array keys{"XLabel", "YLabel", "ZLabel"};
    for (std::size_t direction = 0; direction < std::min(dimension, keys.size()) && raw.axisTitles.empty();
         ++direction) {
        if (const std::string* title = annotated(raw.annotation, keys[direction])) {
            made.axisTitles.resize(direction + 1);
            made.axisTitles[direction] = *title;
        }
    }
    made.axisTitles.resize(made.axisTitles.empty() ? 0 : dimension);
    return named(std::move(made), raw);
}

std::shared_ptr<DataObject> function(const RawObject& raw) {
    FunctionObject made;
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = raw.codelet.find_first_not_of(blanks);
    if (first != std::string::npos) {
        made.codelet = raw.codelet.substr(first, raw.codelet.find_last_not_of(blanks) - first + 1);
    }
    made.isNormalized = raw.isNormalized;
    made.arguments = raw.arguments;
    made.parameters = raw.parameters;
    return named(std::move(made), raw);
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

std::shared_ptr<DataObject> objectFrom(const RawObject& raw, std::vector<std::string>& warnings) {
    if (!raw.problem.empty()) {
        throw Failure(raw.problem);
    }
    if (raw.element == "histogram1d") {
        return histogram1D(raw, warnings);
    }
    if (raw.element == "histogram2d") {
        return histogram<2>(raw, warnings);
    }
    if (raw.element == "histogram3d") {
        return histogram<3>(raw, warnings);
    }
    if (raw.element == "profile1d") {
        return profile<1>(raw, warnings);
    }
    if (raw.element == "profile2d") {
        return profile<2>(raw, warnings);
    }
    return raw.element == "function" ? function(raw) : points(raw, warnings);
}

}  // namespace velmorak::io
