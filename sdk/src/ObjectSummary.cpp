#include <velmorak/DataObjects.h>
#include <velmorak/FileFormat.h>
#include <velmorak/Text.h>

#include <array>
#include <charconv>

namespace velmorak {
namespace {

/// Six significant digits: a line is for a look, not for calculations.
std::string shortNumber(double value) {
    constexpr int digits = 6;
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits);
    return {text.data(), end.ptr};
}

std::string rangeOf(const Axis& axis) {
    return "from " + shortNumber(axis.low()) + " to " + shortNumber(axis.high());
}

template <std::size_t axes>
std::string binsOf(const Grid<axes>& grid) {
    constexpr std::array<const char*, 3> names = {"x ", "y ", "z "};
    std::string counts;
    std::string ranges;
    for (std::size_t i = 0; i < axes; ++i) {
        counts += (i == 0 ? "" : " x ") + std::to_string(grid.axis(i).bins());
        ranges += (i == 0 ? " " : ", ") + std::string(axes > 1 ? names[i] : "") + rangeOf(grid.axis(i));
    }
    return counts + (axes == 1 && grid.axis(0).bins() == 1 ? " bin" : " bins") + ranges;
}

template <std::size_t axes, std::size_t quantities>
std::string entriesOf(const FilledGrid<axes, quantities>& filled) {
    std::int64_t all = 0;
    for (const CellSums<quantities>& cell : filled.cells()) {
        all += cell.entries;
    }
    const std::int64_t inRange = filled.inRange().entries;
    const std::string outside = inRange == all ? "" : " (" + std::to_string(all - inRange) + " out of range)";
    return ", " + std::to_string(all) + (all == 1 ? " entry" : " entries") + outside;
}

template <std::size_t axes>
std::string meansOf(const Histogram<axes>& histogram) {
    constexpr std::array<const char*, 3> names = {"x ", "y ", "z "};
    std::string text;
    for (std::size_t i = 0; i < axes; ++i) {
        text += ", " + std::string(axes > 1 ? names[i] : "") + "mean " + shortNumber(histogram.mean(i)) + " rms " +
                shortNumber(histogram.rms(i));
    }
    return text;
}

template <std::size_t axes>
std::string lineOf(const Histogram<axes>& histogram) {
    return binsOf(histogram.grid()) + entriesOf(histogram) + meansOf(histogram);
}

template <std::size_t axes>
std::string lineOf(const Profile<axes>& profile) {
    return binsOf(profile.grid()) + entriesOf(profile);
}

std::string lineOf(const Points& points) {
    return std::to_string(points.size()) + (points.size() == 1 ? " point in " : " points in ") +
           std::to_string(points.dimension()) + (points.dimension() == 1 ? " dimension" : " dimensions");
}

std::string lineOf(const FunctionObject& function) {
    std::string text = function.codelet;
    for (const FunctionObject::Parameter& parameter : function.parameters) {
        text += ", " + parameter.name + " = " + shortNumber(parameter.value);
    }
    return text;
}

std::string lineOf(const DataObject& /*other*/) {
    return {};
}

}  // namespace

std::string summaryOf(const DataObject& object) {
    const std::string line = visit(object, [](const auto& it) { return lineOf(it); });
    return object.title.empty() ? line : velmorak::quoted(object.title) + (line.empty() ? "" : ", " + line);
}

}  // namespace velmorak
