#pragma once

/// A point on the canvas, in canvas units: x to the right, y downwards.
struct CanvasPoint {
    double x, y;
};

/// Lower right corner of the canvas. The library's y axis points upwards from the lower edge: a box whose upper edge is
/// at y has the library's position canvasSize.y - y - height.
inline constexpr CanvasPoint canvasSize{1500, 1200};
