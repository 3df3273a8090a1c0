#pragma once

#include "Desktop.h"

#include <cstdint>
#include <filesystem>
#include <vector>

struct ScreenPoint {
    int x, y;
};

/// A picture of the whole screen, in which coloured areas can be found.
class Screen {
public:
    /// Takes the picture, using that .ppm file.
    Screen(const Desktop& desktop, const std::filesystem::path& file);

    /// The smallest area that contains every pixel of `within` with one of these box colours (0xRRGGBBAA), blended with
    /// the canvas's background. Its width is 0 if there is none.
    ScreenArea find(const std::vector<std::uint32_t>& fills, const ScreenArea& within) const;
    /// The same for pixels of one plain colour (0xRRGGBB).
    ScreenArea findPlain(std::uint32_t colour, const ScreenArea& within) const;

private:
    struct Colour {
        int red, green, blue;
    };
    static Colour overGround(std::uint32_t fill);
    bool isLike(int x, int y, const Colour& colour) const;
    ScreenArea areaOf(const std::vector<Colour>& colours, const ScreenArea& within) const;

    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;  ///< Red, green, blue, row by row.
};
