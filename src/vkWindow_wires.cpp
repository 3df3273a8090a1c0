#include "canvasItems.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>

#include <locale>
#include <sstream>

namespace {

/// Where a wire ends, in whole canvas units: fractions are cut off.
struct Anchor {
    explicit Anchor(CanvasPoint place) : x(static_cast<int>(place.x)), y(static_cast<int>(place.y)) {}
    int x, y;
};

/// A curve that leaves the output and enters the input horizontally, three units beside their anchors. Where the input
/// lies left of the output its control points cross, deliberately.
std::string curve(Anchor from, Anchor to) {
    const double half = static_cast<double>(to.x - from.x) * 0.5;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "M " << from.x + 3 << ' ' << from.y << " C " << from.x + half + 3.0 << ' ' << from.y << ' '
         << to.x - half - 3.0 << ' ' << to.y << ' ' << to.x - 3 << ' ' << to.y;
    return text.str();
}

bool isBound(QzBase& receiver, const std::string& input, QzBase& sender, const std::string& output) {
    const auto position = static_cast<std::size_t>(receiver.InputIndex(input));
    const auto& inputs = receiver.Inputs();
    if (position >= inputs.size() || inputs[position].source != &sender) {
        return false;
    }
    const auto& outputs = sender.Outputs();
    const std::size_t sourceOutput = inputs[position].sourceOutput;
    return sourceOutput < outputs.size() && outputs[sourceOutput].name == output;
}

}  // namespace

void vkWindow::connect(const PortRef& from, const PortRef& to) {
    plugin* sender = nodeOf(from[0]);
    plugin* receiver = nodeOf(to[0]);
    if (!sender || !receiver) {
        return;
    }
    const Anchor start(sender->outputAnchor(from[1]));
    const Anchor end(receiver->inputAnchor(to[1]));
    connectionMap[to] = from;
    drawPath(to, curve(start, end));
    if (!isBound(*receiver->GetPlugin(), to[1], *sender->GetPlugin(), from[1])) {
        receiver->GetPlugin()->Connect(to[1], sender->GetPlugin(), from[1]);
    }
    modified = true;
}

void vkWindow::drawPath(const PortRef& input, const std::string& data) {
    Glib::RefPtr<Goocanvas::Path>& path = pathMap[input];
    if (path) {
        removePath(path);
    }
    path = Goocanvas::Path::create(data);
    path->set_property("can_focus", false);
    path->set_property("line_width", 4);
    path->set_property("stroke_color", Glib::ustring("firebrick"));
    // At the bottom from the beginning: lowering it afterwards has the canvas look at all its items each time.
    canvas.get_root_item()->add_child(path, 0);
}

void vkWindow::removePath(const ItemRef& path) {
    // Paths lie at the bottom, the one that was drawn longest ago on top of them: it is the next one wherever all are
    // drawn anew, and is spared the search through all items.
    const auto root = canvas.get_root_item();
    const int uppermost = static_cast<int>(pathMap.size()) - 1;
    if (root->get_child(uppermost) == path) {
        root->remove_child(uppermost);
    } else {
        path->remove();
    }
}

void vkWindow::reconnect(Glib::ustring& name) {
    plugin* node = nodeOf(name);
    if (!node) {
        return;
    }
    endGestures();  // The items that the pointer held are gone.
    if (selectedItem && titleOf(selectedItem) == name) {
        setBoxColour(*node, true);
    }
    for (const auto& [input, output] : connectionMap) {
        if (nodeOf(input[0]) == node || nodeOf(output[0]) == node) {
            connect(output, input);
        }
    }
    modified = true;
    bindSignals(*node);
}
