#include "graph/NodeExtent.h"

#include "graph/ManagerImpl.h"

#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace velmorak {
namespace {

constexpr float rowHeight = 20.0F;
constexpr float portMargin = 5.0F;     ///< The editor draws port names this far inside the border.
constexpr float betweenPorts = 15.0F;  ///< Between an input's name and the name of the output beside it.
constexpr float titleMargin = 10.0F;   ///< Radius of the box's corners.
constexpr float minWidth = 60.0F;      ///< Large enough to be dragged with the mouse.

constexpr char firstGlyph = ' ';
constexpr char lastGlyph = '~';

/// Advance widths of DejaVu Sans from blank to tilde, in thousandths of the font size.
constexpr std::array<int, lastGlyph - firstGlyph + 1> advances = {
    318, 401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361,  318, 337, 636, 636, 636,
    636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531, 1000, 684, 686, 698, 770, 632,
    575, 775, 752, 295, 295, 656, 557, 863, 748, 787, 603, 787, 695, 635,  611, 732, 684, 989, 685,
    611, 685, 390, 337, 390, 838, 500, 500, 613, 635, 550, 635, 615, 352,  635, 634, 278, 278, 579,
    278, 974, 634, 612, 635, 635, 411, 521, 392, 634, 592, 818, 592, 592,  525, 636, 337, 636, 838};

/// As wide as the font is high: wide enough for most letters of other scripts.
constexpr int otherAdvance = 1000;

int advanceOf(char byte) {
    return byte >= firstGlyph && byte <= lastGlyph ? advances.at(static_cast<std::size_t>(byte - firstGlyph))
                                                   : otherAdvance;
}

/// The ports that one side of a box shows: their number and the width of the longest name.
struct Side {
    std::size_t ports = 0;
    float width = 0.0F;
};

template <typename Port, typename Shown>
Side sideOf(const std::vector<Port>& ports, int points, Shown isShown) {
    Side side;
    for (const Port& port : ports) {
        if (isShown(port)) {
            ++side.ports;
            side.width = std::max(side.width, textWidth(port.name, points));
        }
    }
    return side;
}

float portsWidth(const Side& inputs, const Side& outputs) {
    const float between = inputs.ports != 0 && outputs.ports != 0 ? betweenPorts : 0.0F;
    return inputs.width + outputs.width + between + 2.0F * portMargin;
}

Extent extentWith(const QzBase& node, bool areAllShown) {
    const QzBase::Part& part = QzBase::Part::of(node);
    const QzManager::Part& owner = QzManager::Part::of(*part.manager);
    const int points = owner.portPoints;
    const Side inputs = sideOf(part.inputs, points, [areAllShown](const QzBase::Input& input) {
        return areAllShown || input.source != nullptr;
    });
    const Side outputs = sideOf(part.outputs, points, [areAllShown](const QzBase::Output& output) {
        return areAllShown || !output.consumers.empty();
    });
    const float title = textWidth(node.name, owner.titlePoints) + 2.0F * titleMargin;
    const float kind = textWidth(part.record->name, points) + 2.0F * titleMargin;
    return {std::ceil(std::max({minWidth, title, kind, portsWidth(inputs, outputs)})),
            rowHeight * static_cast<float>(std::max(inputs.ports, outputs.ports))};
}

}  // namespace

Extent fullExtent(const QzBase& node) {
    return extentWith(node, true);
}

Extent drawnExtent(const QzBase& node) {
    return extentWith(node, QzBase::Part::of(node).isExpanded);
}

float textWidth(std::string_view utf8, int points) {
    constexpr float unitsPerPoint = 96.0F / 72.0F;
    const float size = static_cast<float>(points) * unitsPerPoint / 1000.0F;
    float width = 0.0F;
    for (const char byte : utf8) {
        if (!isContinuationByte(byte)) {
            const float exact = static_cast<float>(advanceOf(byte)) * size;
            width += std::max(exact, std::round(exact));
        }
    }
    return width;
}

}  // namespace velmorak
