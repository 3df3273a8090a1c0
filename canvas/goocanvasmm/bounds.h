#pragma once

#include <goocanvas.h>

namespace Goocanvas {

/// A rectangle, in canvas units.
class Bounds {
public:
    Bounds() = default;
    Bounds(double x1, double y1, double x2, double y2) : bounds{x1, y1, x2, y2} {}
    explicit Bounds(const GooCanvasBounds& bounds) : bounds(bounds) {}

    double get_x1() const { return bounds.x1; }
    double get_y1() const { return bounds.y1; }
    double get_x2() const { return bounds.x2; }
    double get_y2() const { return bounds.y2; }
    void set_x1(double value) { bounds.x1 = value; }
    void set_y1(double value) { bounds.y1 = value; }
    void set_x2(double value) { bounds.x2 = value; }
    void set_y2(double value) { bounds.y2 = value; }

    const GooCanvasBounds* gobj() const { return &bounds; }

private:
    GooCanvasBounds bounds{};
};

}  // namespace Goocanvas
