#include "Screen.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

constexpr std::uint32_t canvasGround = 0xABBAC9;

int channel(std::uint32_t colour, int shift) {
    return static_cast<int>((colour >> shift) & 0xFF);
}

}  // namespace

Screen::Screen(const Desktop& desktop, const std::filesystem::path& file) {
    desktop.screenshot(file);
    std::ifstream in(file, std::ios::binary);
    std::string magic;
    int depth = 0;
    in >> magic >> width >> height >> depth;
    in.get();
    pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    in.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()));
    if (magic != "P6" || !in) {
        throw std::runtime_error("no picture of the screen in " + file.string());
    }
}

Screen::Colour Screen::overGround(std::uint32_t fill) {
    const double opacity = channel(fill, 0) / 255.0;
    const auto mix = [opacity](int over, int under) {
        return static_cast<int>(opacity * over + (1 - opacity) * under + 0.5);
    };
    return {mix(channel(fill, 24), channel(canvasGround, 16)), mix(channel(fill, 16), channel(canvasGround, 8)),
            mix(channel(fill, 8), channel(canvasGround, 0))};
}

bool Screen::isLike(int x, int y, const Colour& colour) const {
    constexpr int tolerance = 12;  // Boxes are slightly transparent, and new ones overlap.
    const std::size_t first =
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
    return std::abs(pixels[first] - colour.red) <= tolerance &&
           std::abs(pixels[first + 1] - colour.green) <= tolerance &&
           std::abs(pixels[first + 2] - colour.blue) <= tolerance;
}

ScreenArea Screen::areaOf(const std::vector<Colour>& colours, const ScreenArea& within) const {
    int left = width;
    int top = height;
    int right = -1;
    int bottom = -1;
    for (int y = std::max(0, within.y); y < std::min(height, within.y + within.height); ++y) {
        for (int x = std::max(0, within.x); x < std::min(width, within.x + within.width); ++x) {
            if (std::any_of(colours.begin(), colours.end(),
                            [&](const Colour& colour) { return isLike(x, y, colour); })) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    return right < 0 ? ScreenArea{} : ScreenArea{left, top, right - left + 1, bottom - top + 1};
}

ScreenArea Screen::find(const std::vector<std::uint32_t>& fills, const ScreenArea& within) const {
    std::vector<Colour> colours;
    for (const std::uint32_t fill : fills) {
        colours.push_back(overGround(fill));
    }
    return areaOf(colours, within);
}

ScreenArea Screen::findPlain(std::uint32_t colour, const ScreenArea& within) const {
    return areaOf({{channel(colour, 16), channel(colour, 8), channel(colour, 0)}}, within);
}
