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

/// Creates the binding if necessary, and a wire that is not on the canvas yet.
Glib::RefPtr<Goocanvas::Path> makeBoundWire(NodePort from, NodePort to) {
    bind(from, to);
    return makeWire(endsOf(from, to));
}

/// A connection whose wire exists, but is not in the maps yet.
struct Drawn {
    PortRef output, input;
    Glib::RefPtr<Goocanvas::Path> path = {};
    std::string collationKey = {};  ///< Its byte order is the order of the maps.
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
    // Inserted at the bottom: lowering it afterwards would make the canvas search all its items.
    canvas.get_root_item()->add_child(path, 0);
    modified = true;
}

void vkWindow::drawBindings() {
    // Equivalent to connect() for each binding, without its searches.
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
                drawn.collationKey = drawn.input[0].collate_key() + '\0' + drawn.input[1].collate_key();
                wires.push_back(drawn.path);
            }
        }
    }
    addBelow(canvas.get_root_item(), wires);
    // Sorted, so that every insertion is at the end of the map: searching it would collate names in the user's
    // language.
    std::ranges::stable_sort(connections, {}, &Drawn::collationKey);
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
    // Equivalent to connectAll(), but keeps wires that have not moved and does not search the maps, which collate names
    // in the user's language. Falls back to connectAll() if the maps and the canvas do not match.
    std::unordered_map<std::string_view, plugin*> nodes;
    for (const auto& [name, node] : pluginMap) {
        nodes[name.raw()] = node;
    }
    WireStack wires(canvas.get_root_item(), pathMap.size());
    auto path = pathMap.begin();
    for (const auto& [input, output] : connectionMap) {
        plugin* sender = nodes[output[0].raw()];
        plugin* receiver = nodes[input[0].raw()];
        if (sender == nullptr || receiver == nullptr || path == pathMap.end() || !isSamePort(path->first, input)) {
            return connectAll();
        }
        const NodePort from{*sender, output[1]};
        const NodePort to{*receiver, input[1]};
        const bool hasMoved = sender->hasMoved || receiver->hasMoved;
        if (!(hasMoved ? wires.add(path->second, endsOf(from, to)) : wires.add(path->second))) {
            return connectAll();
        }
        bind(from, to);
        modified = true;
        ++path;
    }
    wires.lay();
    for (const auto& [name, node] : pluginMap) {
        if (node) {
            node->hasMoved = false;
        }
    }
}

void vkWindow::connectAll() {
    for (const auto& [input, output] : connectionMap) {
        connect(output, input);
    }
}

plugin* vkWindow::nodeShowing(const Glib::ustring& name) {
    const auto nodes = liveNodes();
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&name](plugin* node) { return node->GetPlugin()->name == name.raw(); });
    if (found == nodes.end()) {
        return nodeOf(name);
    }
    // The maps may still use another name of this node; they follow the name on its box.
    assignName(name, **found);
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
        if (receiver != nullptr && sender != nullptr &&
            isBound(*receiver->GetPlugin(), input[1], *sender->GetPlugin(), output[1])) {
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
        if (receiver != nullptr && shown.count({receiver->GetPlugin(), input[1]}) == 0) {
            connect(output, input);
        }
    }
}

void vkWindow::reconnect(Glib::ustring& name) {
    plugin* node = nodeShowing(name);
    if (!node) {
        return;
    }
    endGestures();  // The pointer may have held one of the former items.
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
