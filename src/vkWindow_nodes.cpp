#include "canvasItems.h"
#include "canvasView.h"
#include "colours.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

namespace {

/// Kind number for a node that wraps an existing object; never used.
constexpr unsigned short noKind = 99;

void renamePaths(PortMap<Glib::RefPtr<Goocanvas::Path>>& pathMap, const Glib::ustring& oldName,
                 const Glib::ustring& newName) {
    std::vector<PortRef> former;
    for (const auto& [input, path] : pathMap) {
        if (isSameName(input[0], oldName)) {
            former.push_back(input);
        }
    }
    for (const PortRef& input : former) {
        pathMap[{newName, input[1]}] = pathMap[input];
        pathMap.erase(input);
    }
}

void renameConnections(PortMap<PortRef>& connectionMap, const Glib::ustring& oldName, const Glib::ustring& newName) {
    std::vector<PortRef> former;
    // A single pass, which also visits an inserted key if it sorts later. Deliberate: a connection of the plug-in to
    // itself keeps the old name as its source if the new name sorts before the old one.
    for (auto& [input, output] : connectionMap) {
        if (isSameName(input[0], oldName)) {
            connectionMap[{newName, input[1]}] = output;
            former.push_back(input);
        }
        if (isSameName(output[0], oldName)) {
            output[0] = newName;
        }
    }
    for (const PortRef& input : former) {
        connectionMap.erase(input);
    }
}

}  // namespace

plugin* vkWindow::makeNode(QzBase* object, Glib::ustring name) {
    // Deliberate: an unknown kind is treated as the first one.
    const unsigned short kind = object ? noKind : kindMap[name];
    auto* node = new plugin(manager, canvas, object, std::move(name), kind);
    bindSignals(*node);
    return node;
}

void vkWindow::addPlugin(QzBase* object, Glib::ustring name) {
    plugin* node = makeNode(object, std::move(name));
    if (object) {
        replaceTwin(*node);
    }
    assignName(node->uniqueName, *node);
    if (!object) {
        canvasView::bringIntoView(canvas, scroller, node->box);
    }
    modified = true;
}

void vkWindow::assignName(const Glib::ustring& name, plugin& node) {
    plugin*& held = pluginMap[name];
    plugin* former = held;
    held = &node;
    if (!former || former == &node) {
        return;
    }
    // Whatever refers to the former owner by this name must not refer to the new one.
    const Glib::ustring formerName = former->GetPlugin()->name;
    if (selectedItem && isSameName(titleOf(selectedItem), name)) {
        selectedItem = former->box;
    }
    if (!isSameName(formerName, name)) {
        renameEnds(name, formerName);
    }
    keepReachable(former);
}

void vkWindow::renameEnds(const Glib::ustring& oldName, const Glib::ustring& newName) {
    for (auto& [input, output] : connectionMap) {
        if (isSameName(output[0], oldName)) {
            output[0] = newName;
        }
    }
    renamePaths(pathMap, oldName, newName);
    renameConnections(connectionMap, oldName, newName);
}

void vkWindow::bindSignals(plugin& node) {
    node.box->signal_button_press_event().connect(sigc::mem_fun(*this, &vkWindow::click), true);
    node.box->signal_button_release_event().connect(sigc::mem_fun(*this, &vkWindow::stop_drag), true);
    for (const auto& text : node.outputTexts) {
        text->signal_button_press_event().connect(sigc::mem_fun(*this, &vkWindow::start_draw), true);
    }
    for (const auto& text : node.inputTexts) {
        text->signal_button_press_event().connect(sigc::mem_fun(*this, &vkWindow::click_ip), true);
    }
}

void vkWindow::replaceTwin(plugin& node) {
    plugin* twin = nullptr;
    for (auto& [name, held] : pluginMap) {
        if (held && held->GetPlugin() == node.GetPlugin()) {
            twin = held;
            held = &node;
        }
    }
    if (twin) {
        node.replace(*twin);
        delete twin;
    }
}

void vkWindow::keepReachable(plugin* former) {
    const auto leadsToIt = [former](const auto& entry) { return entry.second == former; };
    if (std::any_of(pluginMap.begin(), pluginMap.end(), leadsToIt)) {
        return;
    }
    plugin*& slot = pluginMap[former->GetPlugin()->GetName()];
    if (!slot) {
        slot = former;
        return;
    }
    former->release();
    delete former;
}

unsigned int vkWindow::renamePlugin(const std::string& oldName, const std::string& newName) {
    if (pluginMap.count(newName) != 0) {
        return std::numeric_limits<unsigned int>::max();
    }
    const auto entry = pluginMap.find(oldName);
    if (entry == pluginMap.end()) {
        return 0;
    }
    pluginMap[newName] = entry->second;
    renamePaths(pathMap, oldName, newName);
    renameConnections(connectionMap, oldName, newName);
    return 1;
}

plugin* vkWindow::nodeOf(const Glib::ustring& name) const {
    const auto entry = pluginMap.find(name);
    if (entry != pluginMap.end() && entry->second != nullptr) {
        return entry->second;
    }
    // The library may have accepted a name that renamePlugin refused because it is the key of a deleted node.
    for (const auto& [key, node] : pluginMap) {
        if (node && node->GetPlugin()->GetName() == name.raw()) {
            return node;
        }
    }
    return nullptr;
}

std::vector<plugin*> vkWindow::liveNodes() const {
    std::vector<plugin*> nodes;
    std::set<const plugin*> seen;
    for (const auto& [name, node] : pluginMap) {
        if (node != nullptr && seen.insert(node).second) {
            nodes.push_back(node);
        }
    }
    return nodes;
}

void vkWindow::pldelete(const Glib::ustring& name) {
    plugin* node = nodeOf(name);
    if (!node) {
        return;
    }
    endGestures();
    forgetConnections(*node, name);
    for (auto& [key, held] : pluginMap) {
        if (held == node) {
            held = nullptr;
        }
    }
    delete node;
}

void vkWindow::forgetConnections(plugin& node, const Glib::ustring& name) {
    for (const QzBase::Input* input : node.GetPlugin()->FullInputs()) {
        forgetConnection({name, input->name});
    }
    for (const QzBase::Output* output : node.GetPlugin()->FullOutputs()) {
        for (std::size_t i = 0; i < output->consumers.size(); ++i) {
            QzBase* consumer = output->consumers[i];
            const auto position = static_cast<std::size_t>(output->consumerInputs.at(i));
            forgetConnection({consumer->name, consumer->Inputs().at(position).name});
        }
    }
    // Connections under other names of this node, and those that the library does not have.
    const std::vector<std::string> names = namesOf(node);
    const auto isOwn = [&names](const PortRef& port) {
        return std::find(names.begin(), names.end(), port[0].raw()) != names.end();
    };
    std::vector<PortRef> rest;
    for (const auto& [input, output] : connectionMap) {
        if (isOwn(input) || isOwn(output)) {
            rest.push_back(input);
        }
    }
    for (const PortRef& input : rest) {
        forgetConnection(input);
    }
}

std::vector<std::string> vkWindow::namesOf(const plugin& node) const {
    std::vector<std::string> names;
    for (const auto& [name, held] : pluginMap) {
        if (held == &node) {
            names.push_back(name);
        }
    }
    return names;
}

void vkWindow::forgetConnection(const PortRef& input) {
    const auto path = pathMap.find(input);
    if (path != pathMap.end()) {
        path->second->remove();
        pathMap.erase(path);
    }
    connectionMap.erase(input);
}

void vkWindow::deleteAll() {
    endGestures();
    const std::vector<plugin*> nodes = liveNodes();
    for (auto& [name, node] : pluginMap) {
        node = nullptr;
    }
    connectionMap.clear();
    pathMap.clear();
    // From the top down: removing an item by its position needs no search.
    const auto root = canvas.get_root_item();
    for (int i = root->get_n_children() - 1; i >= 0; --i) {
        root->remove_child(i);
    }
    for (plugin* node : nodes) {
        node->leaveCanvas();
        delete node;
    }
}
