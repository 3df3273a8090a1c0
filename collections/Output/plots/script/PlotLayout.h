#pragma once

#include "Output/plots/axes/PlotTics.h"

namespace velmorak {

/// Sizes on paper: lengths in cm, fonts in points.
struct PlotLayout {
    double width = 16.0;
    double height = 10.0;
    double scale = 1.0;  ///< Of fonts and lines: 1 for a picture of 16 cm by 10 cm.
    double left = 2.0;   ///< Margins around the frame, or around both frames.
    double right = 0.6;
    double bottom = 1.6;
    double top = 1.0;
    double panelHeight = 0.0;  ///< Of the lower frame, without the gap above it; 0: there is none.
    double panelGap = 0.0;
    PlotPlace place{};

    /// Fractions of the page for a distance from the left or lower end of the picture.
    double screenX(double cm) const { return (place.x + cm) / place.pageWidth; }
    double screenY(double cm) const { return (place.y + cm) / place.pageHeight; }
    double ticFont() const { return 10.0 * scale; }
    double titleFont() const { return 12.0 * scale; }
    double legendFont() const { return 10.0 * scale; }
    double boxFont() const { return 8.5 * scale; }

    double frameWidth() const { return width - left - right; }
    /// Of the upper frame.
    double frameHeight() const { return height - bottom - top - panelHeight - panelGap; }
    /// Lower end of the upper frame, from below.
    double frameBottom() const { return bottom + panelHeight + panelGap; }
};

/// Mean width of a character, and distance of lines, in cm for a font of so many points.
double characterCm(double points);
double lineCm(double points);

/// The axes of a picture.
struct PlotPage {
    PlotLayout layout;
    PlotTics x;
    PlotTics y;
    PlotTics z;
    PlotTics panel;
    PlotSpan panelSpan;
};

/// @return the scale of fonts and lines for a picture of this size.
double scaleOf(double width, double height);

/// @return sizes for usual labels.
PlotLayout firstLayout(const PlotContents& contents, const PlotStyle& style);

/// @return tics, and margins that leave room for their labels.
PlotPage pageOf(const PlotContents& contents, const PlotFrame& frame, const PlotSpan& panelSpan,
                const PlotStyle& style);

/// @return the title of an axis or of the picture: the user's, or else that of the objects.
const std::string& firstNotEmpty(const std::string& text, const std::string& otherwise);

}  // namespace velmorak
