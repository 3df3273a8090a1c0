#pragma once

/// A place on the canvas, in canvas units: x to the right, y downwards.
struct CanvasPoint {
    double x, y;
};
