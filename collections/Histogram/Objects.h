#pragma once

#include <velmorak/Histogram.h>
#include <velmorak/Kind.h>

#include <memory>
#include <string>
#include <utility>
#include <variant>

/// Helpers of the kinds that turn histograms into histograms.
namespace velmorak {

using Histogram2DPtr = std::shared_ptr<const Histogram2D>;
using Histogram3DPtr = std::shared_ptr<const Histogram3D>;
using AnyHistogram = std::variant<HistogramPtr, Histogram2DPtr, Histogram3DPtr>;

/// @throws Failure if nothing is wired, or anything but a histogram.
AnyHistogram anyHistogram(const Arguments& arguments, const std::string& input);

/// The input for a histogram, and for the title of the result.
InputSpec histogramInput(const std::string& name, const std::string& description);
InputSpec derivedTitleInput();

/// Name and title of a derived object: the plug-in's, and the source's if the title input is empty.
void nameAfter(DataObject& object, const DataObject& source, const Arguments& arguments, const RunContext& context);

/// "50 bins from 0 to 10".
std::string describe(const Axis& axis);

/// @param axisOf axis of each direction.
template <std::size_t axes, typename AxisOf>
Grid<axes> gridOf(const AxisOf& axisOf) {
    return [&]<std::size_t... direction>(std::index_sequence<direction...>) {
        return Grid<axes>({axisOf(direction)...});
    }
    (std::make_index_sequence<axes>());
}

/// Replaces the moments by those of fills at the centre of the bin; 0 outside.
template <std::size_t axes>
void takeMomentsFromCentre(CellSums<axes>& sums, const Grid<axes>& grid, std::size_t cell) {
    sums = CellSums<axes>::at(grid.centerOf(cell), sums.entries, sums.w, sums.ww);
}

/// Sets name and title of a derived histogram and outputs it.
template <typename Histogram>
void deliver(Histogram made, const DataObject& source, const Arguments& arguments, const RunContext& context,
             Results& results) {
    auto object = std::make_shared<Histogram>(std::move(made));
    nameAfter(*object, source, arguments, context);
    results.set("histogram", DataObjectPtr(std::move(object)));
}

}  // namespace velmorak
