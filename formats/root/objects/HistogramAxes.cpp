#include "root/objects/HistogramAxes.h"

#include <fmt/format.h>
#include <velmorak/Failure.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace velmorak::root {
namespace {

/// The labels, if each bin has one; they are numbered from 1.
std::vector<std::string> labelsOf(const Object& axis, std::size_t bins) {
    std::vector<std::string> labels(bins);
    std::size_t found = 0;
    for (const ObjectPtr& label : axis.objects("fLabels")) {
        const std::int64_t bin = label ? label->integer("fUniqueID") : 0;
        if (bin < 1 || static_cast<std::uint64_t>(bin) > bins) {
            continue;
        }
        std::string& place = labels[static_cast<std::size_t>(bin) - 1];
        found += place.empty() ? 1 : 0;
        place = label->text("fString");
    }
    return found == bins ? labels : std::vector<std::string>();
}

Axis axisOf(const Object& axis, std::size_t bins) {
    std::vector<double> edges = axis.reals("fXbins");
    if (edges.empty()) {
        if (std::vector<std::string> labels = labelsOf(axis, bins); !labels.empty()) {
            return Axis::ofCategories(std::move(labels));
        }
        return {bins, axis.real("fXmin"), axis.real("fXmax")};
    }
    if (edges.size() != bins + 1) {
        throw Failure(fmt::format("an axis has {} bins and {} edges", bins, edges.size()));
    }
    return Axis(std::move(edges));
}

}  // namespace

Axis axisFrom(const Object& object, const char* name, std::size_t maxCells) {
    const ObjectPtr axis = object.object(name);
    if (!axis) {
        throw Failure(fmt::format("the member {} is missing", name));
    }
    const std::int64_t bins = axis->integer("fNbins");
    if (bins < 1 || static_cast<std::uint64_t>(bins) > maxCells) {
        throw Failure(fmt::format("an axis has {} bins, and there are contents of {}", bins, maxCells));
    }
    Axis made = axisOf(*axis, static_cast<std::size_t>(bins));
    made.title = axis->text("fTitle");
    return made;
}

template <std::size_t axes>
Grid<axes> gridFrom(const Object& object, std::size_t cells) {
    std::vector<Axis> all;
    for (std::size_t direction = 0; direction < axes; ++direction) {
        all.push_back(axisFrom(object, axisNames[direction], cells));
    }
    Grid<axes> grid = [&all]<std::size_t... positions>(std::index_sequence<positions...>) {
        return Grid<axes>({std::move(all[positions])...});
    }
    (std::make_index_sequence<axes>());
    if (grid.cellCount() != cells) {
        throw Failure(fmt::format("its axes make {} bins, and there are contents of {}", grid.cellCount(), cells));
    }
    return grid;
}

template Grid<1> gridFrom<1>(const Object&, std::size_t);
template Grid<2> gridFrom<2>(const Object&, std::size_t);
template Grid<3> gridFrom<3>(const Object&, std::size_t);

double centerOf(const Axis& axis, std::size_t cell) {
    if (cell == 0) {
        return axis.low();
    }
    return cell > axis.bins() ? axis.high() : axis.center(cell - 1);
}

}  // namespace velmorak::root
