#include "canvasItems.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>

#include <algorithm>
#include <locale>
#include <sstream>
#include <string_view>
#include <unordered_map>

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

/// Letter for letter.
bool isSame(const PortRef& one, const PortRef& other) {
    return one[0].raw() == other[0].raw() && one[1].raw() == other[1].raw();
}

/// Replaces one of so many paths that are drawn.
void drawPath(const Glib::RefPtr<Goocanvas::Item>& root, const std::string& data, int count,
              Glib::RefPtr<Goocanvas::Path>& path) {
    if (path) {
        // Where all are drawn anew, each in turn is the topmost one. To look for it would cost as much as the rest.
        const int topmost = count - 1;
        if (root->get_child(topmost) == Glib::RefPtr<Goocanvas::Item>(path)) {
            root->remove_child(topmost);
        } else {
            path->remove();
        }
    }
    path = Goocanvas::Path::create(data);
    path->set_property("can_focus", false);
    path->set_property("line_width", 4);
    path->set_property("stroke_color", Glib::ustring("firebrick"));
    // At the bottom from the beginning: lowering it afterwards has the canvas look at all its items each time.
    root->add_child(path, 0);
}

}  // namespace

void vkWindow::connect(const PortRef& from, const PortRef& to) {
    plugin* sender = nodeOf(from[0]);
    plugin* receiver = nodeOf(to[0]);
    if (!sender || !receiver) {
        return;
    }
    connectionMap[to] = from;
    layWire({*sender, from[1]}, {*receiver, to[1]}, pathMap[to]);
}

void vkWindow::layWire(NodePort from, NodePort to, Glib::RefPtr<Goocanvas::Path>& path) {
    const Anchor start(from.node.outputAnchor(from.port));
    const Anchor end(to.node.inputAnchor(to.port));
    drawPath(canvas.get_root_item(), curve(start, end), static_cast<int>(pathMap.size()), path);
    QzBase* sender = from.node.GetPlugin();
    QzBase* receiver = to.node.GetPlugin();
    if (!isBound(*receiver, to.port, *sender, from.port)) {
        receiver->Connect(to.port, sender, from.port);
    }
    modified = true;
}

void vkWindow::redrawConnections() {
    // As connect() does it, but without a search for each name: the maps compare by the rules of the user's language,
    // which takes longer than to draw.
    std::unordered_map<std::string_view, plugin*> nodes;
    for (const auto& [name, node] : pluginMap) {
        nodes[name.raw()] = node;
    }
    auto path = pathMap.begin();
    for (const auto& [input, output] : connectionMap) {
        plugin* sender = nodes[output[0].raw()];
        plugin* receiver = nodes[input[0].raw()];
        const bool isAtHand = sender && receiver && path != pathMap.end() && isSame(path->first, input);
        if (isAtHand) {
            layWire({*sender, output[1]}, {*receiver, input[1]}, path->second);
            ++path;
        } else {
            connect(output, input);
            path = std::next(pathMap.find(input));
        }
    }
}

plugin* vkWindow::drawnUnder(const Glib::ustring& name) {
    const auto nodes = liveNodes();
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&name](plugin* node) { return node->GetPlugin()->name == name.raw(); });
    if (found == nodes.end()) {
        return nodeOf(name);
    }
    // Where the maps kept to another name that the node had, they follow: this one stands on its box.
    giveName(name, **found);
    for (const Glib::ustring formerName : namesOf(**found)) {
        const auto isFormer = [&](const auto& entry) { return entry.first[0].raw() == formerName.raw(); };
        if (formerName != name && std::any_of(connectionMap.begin(), connectionMap.end(), isFormer)) {
            renameEnds(formerName, name);
        }
    }
    return *found;
}

void vkWindow::reconnect(Glib::ustring& name) {
    plugin* node = drawnUnder(name);
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
