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

/// Whole box without header; does not depend on which ports are shown.
Extent fullExtent(const QzBase& node);

/// What is drawn, without header: as wide as the whole box, as high as the longer list of the shown ports.
Extent drawnExtent(const QzBase& node);

/// Width of one line of text in a sans-serif face, not below what the toolkit needs with its letters set to whole
/// units.
float textWidth(std::string_view utf8, int points);

}  // namespace velmorak
