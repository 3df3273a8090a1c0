#include "Entries.h"

#include <velmorak/Failure.h>
#include <velmorak/Histogram1D.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

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

/// A bin without fills has no height; without an error it is left out as such.
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
        throw Failure("data", "points that are fitted have an x and a y, but these have " +
                                  std::to_string(points.dimension()) + " values each");
    }
    FitData data;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double x = points.measurement(i, 0).value;
        const Measurement& y = points.measurement(i, 1);
        data.entries.push_back({x, x, y.value, 0.5 * (y.errorPlus + y.errorMinus)});
    }
    return data;
}

}  // namespace

FitData entriesOf(const Value& value, bool isCounted) {
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    if (!object || !*object) {
        throw Failure("data", "a histogram, profile or points must be wired");
    }
    if (const auto* const histogram = dynamic_cast<const Histogram1D*>(object->get())) {
        return entriesOf(*histogram);
    }
    if (isCounted) {
        throw Failure("data", "the likelihood needs counts, which only a histogram holds; choose the method chi2");
    }
    if (const auto* const profile = dynamic_cast<const Profile1D*>(object->get())) {
        return entriesOf(*profile);
    }
    if (const auto* const points = dynamic_cast<const Points*>(object->get())) {
        return entriesOf(*points);
    }
    throw Failure("data", "a " + std::string(nameOf((*object)->type())) +
                              " of this kind cannot be fitted; a histogram or profile of one dimension or points can");
}

}  // namespace velmorak
