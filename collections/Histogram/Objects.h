#pragma once

#include <velmorak/HistogramGrid.h>
#include <velmorak/Kind.h>

#include <memory>
#include <string>
#include <utility>
#include <variant>

/// Helpers of the kinds that turn histograms into histograms.
namespace velmorak {

using Histogram2DPtr = std::shared_ptr<const Histogram2D>;
using AnyHistogram = std::variant<HistogramPtr, Histogram2DPtr>;

/// @throws Failure if nothing is wired, or anything but a histogram of one or two dimensions.
AnyHistogram histogramOf1Or2(const Arguments& arguments, const std::string& input);
/// @throws Failure if nothing is wired, or anything but a two-dimensional histogram.
Histogram2DPtr histogram2D(const Arguments& arguments, const std::string& input);

/// The input for a histogram, and for the title of the result.
InputSpec histogramInput(const std::string& name, const std::string& description);
InputSpec derivedTitleInput();

/// Name and title of a derived object: the plug-in's, and the source's if the title input is empty.
void nameAfter(DataObject& object, const DataObject& source, const Arguments& arguments, const RunContext& context);

/// "50 bins from 0 to 10".
std::string describe(const Axis& axis);

inline const Axis& axisOf(const Histogram1D& histogram, std::size_t) {
    return histogram.axis();
}
inline const Axis& axisOf(const Histogram2D& histogram, std::size_t direction) {
    return histogram.grid().axis(direction);
}
inline std::size_t dimensionsOf(const Histogram1D&) {
    return 1;
}
inline std::size_t dimensionsOf(const Histogram2D&) {
    return 2;
}
/// Cell number along each axis, counted as in Axis::cell.
inline Grid<2>::Cells alongAxes(const Histogram1D&, std::size_t cell) {
    return {cell, 1};
}
inline Grid<2>::Cells alongAxes(const Histogram2D& histogram, std::size_t cell) {
    return histogram.grid().alongAxes(cell);
}
template <typename Histogram>
bool isInside(const Histogram& histogram, std::size_t cell) {
    const Grid<2>::Cells cells = alongAxes(histogram, cell);
    for (std::size_t direction = 0; direction < dimensionsOf(histogram); ++direction) {
        if (cells[direction] == 0 || cells[direction] > axisOf(histogram, direction).bins()) {
            return false;
        }
    }
    return true;
}
/// Width of a bin in range, or the product of its widths.
template <typename Histogram>
double sizeOf(const Histogram& histogram, std::size_t cell) {
    const Grid<2>::Cells cells = alongAxes(histogram, cell);
    double size = 1.0;
    for (std::size_t direction = 0; direction < dimensionsOf(histogram); ++direction) {
        size *= axisOf(histogram, direction).width(cells[direction] - 1);
    }
    return size;
}

/// @return a histogram with the same axes and these cells.
inline Histogram1D withCells(const Histogram1D& like, CellVector<BinSums> cells, std::int64_t nans) {
    Histogram1D made(like.axis(), std::move(cells), nans);
    return made;
}
inline Histogram2D withCells(const Histogram2D& like, CellVector<GridSums<2>> cells, std::int64_t nans) {
    return {like.grid(), std::move(cells), nans};
}

/// Multiplies the weight of each fill by a factor.
inline void multiply(BinSums& sums, double factor) {
    sums.w *= factor;
    sums.ww *= factor * factor;
    sums.wx *= factor;
    sums.wxx *= factor;
}
inline void multiply(GridSums<2>& sums, double factor) {
    sums.w *= factor;
    sums.ww *= factor * factor;
    for (std::size_t direction = 0; direction < 2; ++direction) {
        sums.wx[direction] *= factor;
        sums.wxx[direction] *= factor;
    }
}

/// Replaces the moments by those of fills at the centre of the bin; 0 outside.
inline void takeMomentsFromCentre(BinSums& sums, const Histogram1D& histogram, std::size_t cell) {
    const double x = isInside(histogram, cell) ? histogram.axis().center(cell - 1) : 0.0;
    sums.wx = sums.w * x;
    sums.wxx = sums.w * x * x;
}
inline void takeMomentsFromCentre(GridSums<2>& sums, const Histogram2D& histogram, std::size_t cell) {
    const Grid<2>::Cells cells = histogram.grid().alongAxes(cell);
    for (std::size_t direction = 0; direction < 2; ++direction) {
        const double x =
            isInside(histogram, cell) ? histogram.grid().axis(direction).center(cells[direction] - 1) : 0.0;
        sums.wx[direction] = sums.w * x;
        sums.wxx[direction] = sums.w * x * x;
    }
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
