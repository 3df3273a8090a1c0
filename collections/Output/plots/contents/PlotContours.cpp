#include "Output/plots/contents/PlotContours.h"

#include "Output/plots/axes/PlotTics.h"

#include <array>
#include <cmath>
#include <utility>

namespace velmorak {

namespace {

struct Corner {
    double x = 0.0;
    double y = 0.0;
    double value = 0.0;
};

/// Where a height is passed between two corners.
std::pair<double, double> crossing(const Corner& one, const Corner& other, double height) {
    const double part = (height - one.value) / (other.value - one.value);
    return {one.x + part * (other.x - one.x), one.y + part * (other.y - one.y)};
}

/// The line through a triangle, if the height is passed in it.
void traceTriangle(const std::array<Corner, 3>& corners, double height, std::vector<ContourLine>& lines) {
    std::vector<std::pair<double, double>> ends;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Corner& one = corners[i];
        const Corner& other = corners[(i + 1) % corners.size()];
        if ((one.value < height) != (other.value < height)) {
            ends.push_back(crossing(one, other, height));
        }
    }
    if (ends.size() == 2) {
        lines.push_back(
            {.x1 = ends[0].first, .y1 = ends[0].second, .x2 = ends[1].first, .y2 = ends[1].second, .height = height});
    }
}

/// A square is four triangles around its centre, so that saddles need no choice.
void traceSquare(const std::array<Corner, 4>& corners, double height, std::vector<ContourLine>& lines) {
    Corner centre;
    bool isAbove = false;
    bool isBelow = false;
    for (const Corner& corner : corners) {
        centre.x += 0.25 * corner.x;
        centre.y += 0.25 * corner.y;
        centre.value += 0.25 * corner.value;
        isAbove = isAbove || corner.value >= height;
        isBelow = isBelow || corner.value < height;
    }
    if (!std::isfinite(centre.value) || !isAbove || !isBelow) {
        return;
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        traceTriangle({corners[i], corners[(i + 1) % corners.size()], centre}, height, lines);
    }
}

class Squares {
public:
    explicit Squares(const PlotMap& grid) : grid(grid), columns(grid.xEdges.size() - 1), rows(grid.yEdges.size() - 1) {}

    void trace(double height, std::vector<ContourLine>& lines) const;

private:
    Corner corner(std::size_t i, std::size_t j) const;

    const PlotMap& grid;
    std::size_t columns;
    std::size_t rows;
};

void Squares::trace(double height, std::vector<ContourLine>& lines) const {
    for (std::size_t j = 0; j + 1 < rows; ++j) {
        for (std::size_t i = 0; i + 1 < columns; ++i) {
            traceSquare({corner(i, j), corner(i + 1, j), corner(i + 1, j + 1), corner(i, j + 1)}, height, lines);
        }
    }
}

Corner Squares::corner(std::size_t i, std::size_t j) const {
    const double value = grid.values[j * columns + i];
    return {.x = 0.5 * (grid.xEdges[i] + grid.xEdges[i + 1]),
            .y = 0.5 * (grid.yEdges[j] + grid.yEdges[j + 1]),
            .value = std::isnan(value) && grid.isCount ? 0.0 : value};
}

/// The labelled tics of the heights inside the span.
std::vector<double> levels(const PlotSpan& z, bool hasLog) {
    const TicRoom room{.characters = 40.0, .isHorizontal = false};
    const PlotTics tics = hasLog ? logTics(z, room) : linearTics(z, room);
    std::vector<double> all;
    for (const PlotTic& tic : tics.tics) {
        if (!tic.label.empty() && tic.at > z.low && tic.at < z.high) {
            all.push_back(tic.at);
        }
    }
    return all;
}

}  // namespace

void traceContours(PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    const std::vector<double> heights =
        contents.contours.empty() ? std::vector<double>() : levels(frame.z, style.z.hasLog);
    for (PlotContour& contour : contents.contours) {
        const Squares squares(contour.grid);
        for (const double height : heights) {
            squares.trace(height, contour.lines);
        }
        if (contour.lines.empty()) {
            contents.warnings.push_back("\"" + contour.label + "\" has no contours in the range of the picture");
        }
    }
}

}  // namespace velmorak
