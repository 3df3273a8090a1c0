#pragma once

#include <QzBase.h>

#include <string_view>

namespace velmorak {

/// Width and height in canvas units.
struct Extent {
    float width = 0.0F;
    float height = 0.0F;
};

/// Height of the two title lines above the ports.
inline constexpr float headerHeight = 30.0F;

/// Size of the expanded box without header; does not depend on which ports are shown.
Extent fullExtent(const QzBase& node);

/// Size of the box as it is drawn, without header: as wide as the expanded box, as high as the longer list of shown
/// ports.
Extent drawnExtent(const QzBase& node);

/// Upper estimate of the width of one line of sans-serif text, with each letter rounded to whole units as the toolkit
/// does.
float textWidth(std::string_view utf8, int points);

}  // namespace velmorak
