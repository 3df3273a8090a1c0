#include "Entries.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>

namespace velmorak {

namespace {

FitData entriesOf(const Histogram1D& histogram) {
    FitData data;
    const std::vector<double>& edges = histogram.axis().edges();
    for (std::size_t bin = 0; bin < histogram.bins(); ++bin) {
        data.entries.push_back({edges[bin], edges[bin + 1], histogram.height(bin), histogram.error(bin)});
    }
    return data;
}

/// A bin without fills has no height. One without an error is left out when the fit collects its data.
FitData entriesOf(const Profile1D& profile) {
    FitData data;
    const std::vector<double>& edges = profile.grid().axis(0).edges();
    for (std::size_t bin = 0; bin + 1 < edges.size(); ++bin) {
        const std::size_t cell = bin + 1;
        const bool isFilled = profile.cells()[cell].entries > 0;
        data.entries.push_back(
            {edges[bin], edges[bin + 1], isFilled ? profile.height(cell) : 0.0, isFilled ? profile.error(cell) : 0.0});
    }
    return data;
}

FitData entriesOf(const Points& points) {
    if (points.dimension() != 2) {
        throw Failure("data", "expected points with x and y, but these have " + std::to_string(points.dimension()) +
                                  " coordinates");
    }
    FitData data;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double x = points.measurement(i, 0).value;
        const Measurement& y = points.measurement(i, 1);
        data.entries.push_back({x, x, y.value, 0.5 * (y.errorPlus + y.errorMinus)});
    }
    return data;
}

[[noreturn]] FitData entriesOf(const DataObject& other) {
    throw Failure("data", "a " + std::string(nameOf(other.type())) +
                              " cannot be fitted; expected a one-dimensional histogram or profile, or points");
}

/// Of an object without counts.
template <typename Object>
FitData uncountedEntriesOf(const Object& object, bool isCounted) {
    if (isCounted) {
        throw Failure("data", "the likelihood method needs counts, which only a histogram has; use the method chi2");
    }
    return entriesOf(object);
}

}  // namespace

FitData entriesOf(const Value& value, bool isCounted) {
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    if (!object || !*object) {
        throw Failure("data", "nothing is wired; expected a histogram, profile or points");
    }
    return visit(**object, overloaded{
                               [](const Histogram1D& histogram) { return entriesOf(histogram); },
                               [&](const Profile1D& profile) { return uncountedEntriesOf(profile, isCounted); },
                               [&](const Points& points) { return uncountedEntriesOf(points, isCounted); },
                               [&](const DataObject& other) { return uncountedEntriesOf(other, isCounted); },
                           });
}

}  // namespace velmorak
