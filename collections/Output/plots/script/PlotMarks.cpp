#include "Output/plots/script/PlotScript.h"

#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/Value.h>

namespace velmorak {

namespace {

/// @param alignment left or right.
std::string labelAt(const std::string& text, double x, double y, const std::string& alignment, double font) {
    return "set label " + quotedLabel(text) + " at graph " + roundedText(x) + ", graph " + roundedText(y) + " " +
           alignment + " front font '," + roundedText(font, 3) + "'\n";
}

/// The upper side of a box.
double topOf(const PlotBox& box) {
    if (box.point) {
        return (*box.point)[1];
    }
    return box.isTop() ? 1.0 - box.depth : box.depth + box.height;
}

double leftOf(const PlotBox& box, double margin) {
    if (box.point) {
        return (*box.point)[0];
    }
    return box.isLeft() ? margin : 1.0 - margin - box.width;
}

/// Margins look alike at the sides and above.
double sideMargin(const PlotLayout& layout) {
    return boxMargin * layout.frameHeight() / layout.frameWidth();
}

std::string statisticsBox(const PlotBoxes& boxes, const PlotLayout& layout) {
    const PlotBox& box = boxes.statistics;
    const double left = leftOf(box, sideMargin(layout));
    const double right = left + box.width;
    const double top = topOf(box);
    const double inset = 0.8 * characterCm(boxes.boxFont) / layout.frameWidth();
    const double line = lineCm(boxes.boxFont) / layout.frameHeight();
    std::string text = "set object 1 rectangle from graph " + roundedText(left) + ", graph " +
                       roundedText(top - box.height) + " to graph " + roundedText(right) + ", graph " +
                       roundedText(top) +
                       " front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5\n";
    for (std::size_t i = 0; i < boxes.rows.size(); ++i) {
        const double y = top - line * (static_cast<double>(i) + 0.7);
        text += labelAt(boxes.rows[i][0], left + inset, y, "left", boxes.boxFont);
        text += labelAt(boxes.rows[i][1], right - inset, y, "right", boxes.boxFont);
    }
    return text;
}

std::string legendPlace(const PlotBoxes& boxes, const PlotLayout& layout) {
    if (!boxes.hasLegend()) {
        return "set key off\n";
    }
    const PlotBox& box = boxes.legend;
    const double margin = sideMargin(layout);
    const std::string x = roundedText(box.isLeft() ? margin : 1.0 - margin);
    const std::string y = roundedText(box.isTop() ? 1.0 - box.depth : box.depth);
    return "set key at graph " + x + ", graph " + y + (box.isLeft() ? " left" : " right") +
           (box.isTop() ? " top" : " bottom") + " Left reverse samplen 2 spacing 1.12 font '," +
           roundedText(boxes.legendFont, 3) + "'\n";
}

std::string freeTexts(const PlotBoxes& boxes, const PlotLayout& layout, const PlotStyle& style) {
    std::string text;
    const double margin = sideMargin(layout) + 0.5 * characterCm(layout.legendFont()) / layout.frameWidth();
    for (const auto& [note, box] : boxes.notes) {
        const double y = topOf(box) - 0.5 * box.height;
        text += labelAt(note->text, box.isLeft() ? margin : 1.0 - margin, y, box.isLeft() ? "left" : "right",
                        layout.legendFont());
    }
    for (const PlotNote& note : style.notes) {
        if (note.place) {
            text += labelAt(note.text, (*note.place)[0], (*note.place)[1], "left", layout.legendFont());
        }
    }
    return text;
}

/// A point of a guide: along its own axis, and across the whole frame.
std::string guideEnd(const PlotGuide& guide, double along, const char* across) {
    return guide.isVertical ? "first " + textOf(along) + ", graph " + across
                            : "graph " + std::string(across) + ", first " + textOf(along);
}

std::string guideCommand(const PlotGuide& guide) {
    if (guide.to) {
        return "set object rectangle from " + guideEnd(guide, guide.from, "0") + " to " +
               guideEnd(guide, *guide.to, "1") + " behind fillcolor rgb '" + guide.colour +
               "' fillstyle transparent solid 0.2 noborder\n";
    }
    constexpr double width = 3.0;
    return "set arrow from " + guideEnd(guide, guide.from, "0") + " to " + guideEnd(guide, guide.from, "1") +
           " nohead front linewidth " + roundedText(width * guide.width) + " dashtype " +
           std::to_string(static_cast<int>(guide.dash)) + " linecolor rgb '" + guide.colour + "'\n";
}

}  // namespace

std::string boxCommands(const PlotBoxes& boxes, const PlotLayout& layout, const PlotStyle& style) {
    return legendPlace(boxes, layout) + (boxes.hasStatistics() ? statisticsBox(boxes, layout) : std::string()) +
           freeTexts(boxes, layout, style);
}

std::string guideCommands(const PlotStyle& style, bool hasHorizontal) {
    std::string text;
    for (const PlotGuide& guide : style.guides) {
        text += guide.isVertical || hasHorizontal ? guideCommand(guide) : std::string();
    }
    return text;
}

}  // namespace velmorak
