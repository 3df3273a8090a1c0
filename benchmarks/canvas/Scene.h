#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

/// The pipeline that is measured: boxes on a square grid over the whole canvas, each wired to the two that follow it.
/// Lengths: canvas units, y downwards.
struct Scene {
    struct Box {
        std::string name;
        double x, y;
    };
    struct Wire {
        std::size_t from, output, to, input;
    };

    static constexpr double width = 1500;
    static constexpr double height = 1200;
    static constexpr int viewWidth = 1000;
    static constexpr int viewHeight = 800;
    static constexpr std::size_t ports = 2;  ///< Inputs, and outputs, of each box.
    static constexpr int steps = 41;

    explicit Scene(std::size_t count) {
        const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count))));
        const double pitchX = (width - 150) / static_cast<double>(columns);
        const double pitchY = (height - 100) / static_cast<double>(columns);
        for (std::size_t i = 0; i < count; ++i) {
            boxes.push_back({"B" + std::to_string(i), std::floor(static_cast<double>(i % columns) * pitchX),
                             std::floor(static_cast<double>(i / columns) * pitchY)});
            for (std::size_t port = 0; port < ports; ++port) {
                wires.push_back({i, port, (i + port + 1) % count, port});
            }
        }
    }

    /// A box in the middle, so that it is in view and its wires are among the others.
    std::size_t dragged() const { return boxes.size() / 2 + boxes.size() / 20; }
    static double stepX(int step) { return step % 20 < 10 ? 3 : -3; }
    static double stepY(int step) { return step % 20 < 10 ? 2 : -2; }

    std::vector<Box> boxes;
    std::vector<Wire> wires;
};
