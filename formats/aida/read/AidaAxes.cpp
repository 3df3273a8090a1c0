#include "aida/Vocabulary.h"
#include "aida/read/AidaObjectBuilder.h"

#include <velmorak/Failure.h>
#include <velmorak/FormatMeasurement.h>
#include <velmorak/Profile.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace velmorak::io {

namespace {

double binsOf(const ParsedAxis& axis) {
    const double bins = numberOr(axis.bins.c_str(), notGiven);
    const double low = numberOr(axis.low.c_str(), notGiven);
    const double high = numberOr(axis.high.c_str(), notGiven);
    if (axis.bins.empty() && axis.low.empty() && axis.high.empty()) {
        throw Failure("an axis has no min, max and numberOfBins");
    }
    if (!(bins >= 1.0) || bins != std::floor(bins) || !(low < high)) {
        throw Failure(fmt::format(R"(an axis has invalid attributes min="{:.40}" max="{:.40}" numberOfBins="{:.40}")",
                                  axis.low, axis.high, axis.bins));
    }
    return bins;
}

Axis axisFrom(const ParsedAxis& axis, std::vector<std::string>& warnings) {
    const auto bins = static_cast<std::size_t>(binsOf(axis));
    const double low = numberOr(axis.low.c_str(), notGiven);
    const double high = numberOr(axis.high.c_str(), notGiven);
    std::vector<double> edges = axis.borders;
    std::sort(edges.begin(), edges.end());
    if (edges.empty()) {
        return {bins, low, high};
    }
    if (edges.size() == bins + 1) {
        warnings.emplace_back("an axis lists its outer edges as inner borders");
        return Axis(std::move(edges));
    }
    if (edges.size() != bins - 1) {
        throw Failure(fmt::format("an axis of {} bins has {} inner borders", bins, edges.size()));
    }
    edges.insert(edges.begin(), low);
    edges.push_back(high);
    return Axis(std::move(edges));
}

/// Positions of the axes in the file by direction; in the order of the file if directions are missing.
std::vector<std::size_t> axisOrder(const ParsedObject& parsed, std::size_t dimensions,
                                   std::vector<std::string>& warnings) {
    constexpr std::string_view names = "xyz";
    std::vector<std::size_t> order;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        for (std::size_t place = 0; place < dimensions; ++place) {
            if (order.size() == direction && parsed.axes[place].direction == names.substr(direction, 1)) {
                order.push_back(place);
            }
        }
    }
    if (order.size() == dimensions) {
        return order;
    }
    if (dimensions > 1) {
        warnings.emplace_back("the axes have no directions; they are used in their order");
    }
    order.clear();
    for (std::size_t place = 0; place < dimensions; ++place) {
        order.push_back(place);
    }
    return order;
}

std::size_t dimensionsOf(const ParsedObject& parsed) {
    const AidaObjectType* const type = aidaObjectType(parsed.element);
    const bool isBinned =
        type != nullptr && (type->family == AidaFamily::Histogram || type->family == AidaFamily::Profile);
    return isBinned ? type->dimensions : 0;
}

/// @return false if a list does not have that many numbers.
bool addSums(const std::string& text, std::size_t numbers, std::map<std::size_t, std::vector<double>>& sums) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(';', begin), text.size());
        std::vector<double> values;
        while (begin < end) {
            const std::size_t stop = std::min(text.find(' ', begin), end);
            double value = 0.0;
            if (stop > begin && !readNumber(std::string_view(text).substr(begin, stop - begin), value)) {
                return false;
            }
            if (stop > begin) {
                values.push_back(value);
            }
            begin = stop + 1;
        }
        if (values.size() != numbers + 1 || !(values[0] >= 0.0) || values[0] > 1e9) {
            return false;
        }
        sums[static_cast<std::size_t>(values[0])] = std::vector<double>(values.begin() + 1, values.end());
        begin = end + 1;
    }
    return true;
}

/// The names of the bins, one item each; empty unless each bin has one.
std::vector<std::string> categories(const ParsedObject& parsed, std::string_view key, std::size_t bins) {
    std::vector<std::string> labels;
    for (const AnnotationItem& item : parsed.annotation) {
        if (item.key == key) {
            labels.push_back(item.value);
        }
    }
    return labels.size() == bins ? labels : std::vector<std::string>();
}

/// Sorts bins by cell. @return how many were dropped because a later one has the same cell.
std::size_t keepLast(PlacedBins& placed) {
    const auto isBefore = [](const auto& one, const auto& other) { return one.first < other.first; };
    if (!std::is_sorted(placed.begin(), placed.end(), isBefore)) {
        std::stable_sort(placed.begin(), placed.end(), isBefore);
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < placed.size(); ++i) {
        if (kept > 0 && placed[kept - 1].first == placed[i].first) {
            --kept;
        }
        placed[kept++] = placed[i];
    }
    const std::size_t repeated = placed.size() - kept;
    placed.resize(kept);
    return repeated;
}

}  // namespace

std::size_t declaredCells(const ParsedObject& parsed) {
    const std::size_t dimensions = dimensionsOf(parsed);
    double cells = 1.0;
    for (const ParsedAxis& axis : parsed.axes) {
        cells *= numberOr(axis.bins.c_str(), 0.0) + 2.0;
    }
    const bool isPossible =
        dimensions != 0 && parsed.axes.size() == dimensions && cells >= 1.0 && cells <= parsed.maxCells;
    return isPossible ? static_cast<std::size_t>(cells) : 0;
}

std::size_t declaredBytes(const ParsedObject& parsed) {
    constexpr std::array histogramCell{sizeof(CellSums<1>), sizeof(CellSums<2>), sizeof(CellSums<3>)};
    constexpr std::array profileCell{sizeof(CellSums<2>) + sizeof(ProfileReading),
                                     sizeof(CellSums<3>) + sizeof(ProfileReading)};
    const std::size_t cells = declaredCells(parsed);
    if (cells == 0) {
        return 0;
    }
    const std::size_t direction = dimensionsOf(parsed) - 1;
    const std::size_t perCell =
        isOfFamily(parsed.element, AidaFamily::Histogram) ? histogramCell.at(direction) : profileCell.at(direction);
    // An axis stores its edges twice, and a lookup table.
    constexpr std::size_t perBin = 20;
    std::size_t bins = 0;
    for (const ParsedAxis& axis : parsed.axes) {
        bins += static_cast<std::size_t>(std::clamp(numberOr(axis.bins.c_str(), 0.0), 0.0, parsed.maxCells));
    }
    return cells * perCell + bins * perBin;
}

std::vector<Axis> axesFrom(const ParsedObject& parsed, std::size_t dimensions, std::vector<std::string>& warnings) {
    if (parsed.axes.size() != dimensions) {
        throw Failure(fmt::format("it has {} axes instead of {}", parsed.axes.size(), dimensions));
    }
    double cells = 1.0;
    for (const ParsedAxis& axis : parsed.axes) {
        cells *= binsOf(axis) + 2.0;
    }
    if (cells > parsed.maxCells) {
        throw Failure(fmt::format("its axes declare {} cells; the limit is {}", formatNumber(cells),
                                  formatNumber(parsed.maxCells)));
    }
    std::vector<Axis> axes;
    for (const std::size_t place : axisOrder(parsed, dimensions, warnings)) {
        axes.push_back(axisFrom(parsed.axes[place], warnings));
    }
    constexpr std::array keys{"XLabel", "YLabel", "ZLabel"};
    constexpr std::array categoryKeys{"XCategory", "YCategory", "ZCategory"};
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        if (const std::string* title = annotated(parsed.annotation, keys[direction])) {
            axes[direction].title = *title;
        }
        axes[direction].labels = categories(parsed, categoryKeys[direction], axes[direction].bins());
    }
    return axes;
}

template <std::size_t dimensions>
PlacedBins placedBins(const ParsedObject& parsed, const Grid<dimensions>& grid, std::vector<std::string>& warnings) {
    PlacedBins placed;
    std::size_t outside = 0;
    for (const ParsedBin& bin : parsed.bins) {
        typename Grid<dimensions>::Cells cells{};
        bool isOnGrid = true;
        for (std::size_t direction = 0; direction < dimensions; ++direction) {
            const std::size_t bins = grid.axis(direction).bins();
            const std::int64_t number = bin.numbers[direction];
            isOnGrid = isOnGrid && number >= ParsedBin::underflow && number < static_cast<std::int64_t>(bins);
            cells[direction] = number == ParsedBin::underflow  ? 0
                               : number == ParsedBin::overflow ? bins + 1
                                                               : static_cast<std::size_t>(number) + 1;
        }
        if (isOnGrid) {
            placed.emplace_back(grid.cell(cells), &bin);
        } else {
            ++outside;
        }
    }
    const std::size_t repeated = keepLast(placed);
    if (outside != 0) {
        warnings.push_back(fmt::format("{} of its bins are beyond its axes and are ignored", outside));
    }
    if (repeated != 0) {
        warnings.push_back(fmt::format("{} of its bins are listed more than once; the last one is used", repeated));
    }
    return placed;
}

template PlacedBins placedBins(const ParsedObject&, const Grid<1>&, std::vector<std::string>&);
template PlacedBins placedBins(const ParsedObject&, const Grid<2>&, std::vector<std::string>&);
template PlacedBins placedBins(const ParsedObject&, const Grid<3>&, std::vector<std::string>&);

std::map<std::size_t, std::vector<double>> annotatedSums(const ParsedObject& parsed, std::string_view key,
                                                         std::size_t numbers) {
    std::map<std::size_t, std::vector<double>> sums;
    for (const AnnotationItem& item : parsed.annotation) {
        if (item.key == key && !addSums(item.value, numbers, sums)) {
            return {};
        }
    }
    return sums;
}

}  // namespace velmorak::io
