#include "bindings.h"
#include "canvasItems.h"
#include "plugin.h"
#include "vkWindow.h"
#include "wirePath.h"

#include <QzBase.h>
#include <QzManager.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace {

void bind(NodePort from, NodePort to) {
    QzBase* sender = from.node.GetPlugin();
    QzBase* receiver = to.node.GetPlugin();
    if (!isBound(*receiver, to.port.raw(), *sender, from.port.raw())) {
        receiver->Connect(to.port, sender, from.port);
    }
}

WireEnds endsOf(NodePort from, NodePort to) {
    return {from.node.outputAnchor(from.port), to.node.inputAnchor(to.port)};
}

/// Not on the canvas yet.
Glib::RefPtr<Goocanvas::Path> makeBoundWire(NodePort from, NodePort to) {
    bind(from, to);
    return makeWire(endsOf(from, to));
}

/// A connection whose wire exists but is not in the maps yet.
struct Drawn {
    PortRef output, input;
    Glib::RefPtr<Goocanvas::Path> path = {};
    std::string rank = {};  ///< Sorts bytewise as the maps sort their keys.
};

using Nodes = std::unordered_map<const QzBase*, plugin*>;

Nodes nodesByObject(const std::vector<plugin*>& shown) {
    Nodes nodes;
    for (plugin* node : shown) {
        nodes[node->GetPlugin()] = node;
    }
    return nodes;
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
    if (path) {
        path->remove();
    }
    path = makeBoundWire(from, to);
    // At the bottom from the beginning: lowering it afterwards has the canvas look at all its items each time.
    canvas.get_root_item()->add_child(path, 0);
    modified = true;
}

void vkWindow::drawBindings() {
    // Like connect() for each of them, without its searches.
    Nodes nodes = nodesByObject(liveNodes());
    std::vector<Drawn> connections;
    std::vector<Glib::RefPtr<Goocanvas::Path>> wires;
    for (QzBase* object : manager->plugins) {
        plugin* receiver = nodes[object];
        for (const QzBase::Input* input : object->FullInputs()) {
            PortRef source = sourceOf(*input);
            plugin* sender = nodes[input->source];
            if (!source.empty() && sender && receiver) {
                Drawn& drawn = connections.emplace_back(Drawn{std::move(source), {object->name, input->name}});
                drawn.path = makeBoundWire({*sender, drawn.output[1]}, {*receiver, drawn.input[1]});
                drawn.rank = drawn.input[0].collate_key() + '\0' + drawn.input[1].collate_key();
                wires.push_back(drawn.path);
            }
        }
    }
    addBelow(canvas.get_root_item(), wires);
    // In map order every insertion goes to the end; a search would compare names by the rules of the user's language.
    std::ranges::stable_sort(connections, {}, &Drawn::rank);
    for (const Drawn& each : connections) {
        connectionMap.insert_or_assign(connectionMap.end(), each.input, each.output);
        auto& path = pathMap.try_emplace(pathMap.end(), each.input)->second;
        if (path) {
            path->remove();
        }
        path = each.path;
    }
}

void vkWindow::redrawConnections() {
    // As connect() for each of them in turn, but without a search for each name, as the maps compare by the rules of
    // the user's language, and without touching what is drawn already.
    std::unordered_map<std::string_view, plugin*> nodes;
    for (const auto& [name, node] : pluginMap) {
        nodes[name.raw()] = node;
    }
    WireStack wires(canvas.get_root_item(), pathMap.size());
    auto path = pathMap.begin();
    for (const auto& [input, output] : connectionMap) {
        plugin* sender = nodes[output[0].raw()];
        plugin* receiver = nodes[input[0].raw()];
        if (!sender || !receiver || path == pathMap.end() || !isSamePort(path->first, input) ||
            !path->second->get_parent()) {
            return connectAll();
        }
        const NodePort from{*sender, output[1]};
        const NodePort to{*receiver, input[1]};
        wires.add(path->second, endsOf(from, to));
        bind(from, to);
        modified = true;
        ++path;
    }
    wires.lay();
}

void vkWindow::connectAll() {
    for (const auto& [input, output] : connectionMap) {
        connect(output, input);
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
        const auto isFormer = [&](const auto& entry) { return isSameName(entry.first[0], formerName); };
        if (!isSameName(formerName, name) && std::any_of(connectionMap.begin(), connectionMap.end(), isFormer)) {
            renameEnds(formerName, name);
        }
    }
    return *found;
}

void vkWindow::matchBindings(plugin& node) {
    using InputOfObject = std::pair<const QzBase*, std::string>;
    std::set<InputOfObject> shown;
    std::vector<PortRef> stale;
    for (const auto& [input, output] : connectionMap) {
        plugin* receiver = nodeOf(input[0]);
        plugin* sender = nodeOf(output[0]);
        if (receiver != &node && sender != &node) {
            continue;
        }
        if (receiver && sender && isBound(*receiver->GetPlugin(), input[1], *sender->GetPlugin(), output[1])) {
            shown.emplace(receiver->GetPlugin(), input[1]);
        } else {
            stale.push_back(input);
        }
    }
    for (const PortRef& input : stale) {
        forgetConnection(input);
    }
    for (const auto& [input, output] : bindingsOf(*node.GetPlugin())) {
        plugin* receiver = nodeOf(input[0]);
        if (receiver && shown.count({receiver->GetPlugin(), input[1]}) == 0) {
            connect(output, input);
        }
    }
}

void vkWindow::reconnect(Glib::ustring& name) {
    plugin* node = drawnUnder(name);
    if (!node) {
        return;
    }
    endGestures();  // The items that the pointer held are gone.
    if (node == selectedNode()) {
        setBoxColour(*node, true);
    }
    matchBindings(*node);
    for (const auto& [input, output] : connectionMap) {
        if (nodeOf(input[0]) == node || nodeOf(output[0]) == node) {
            connect(output, input);
        }
    }
    modified = true;
    bindSignals(*node);
}
