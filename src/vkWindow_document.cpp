#include "bindings.h"
#include "plugin.h"
#include "safeFile.h"
#include "stateFolder.h"
#include "visible.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

// A program that was killed while it wrote the file in place has left all of the text in a copy.
void tellOfInterruptedSave(const std::string& file) {
    const auto copy = interruptedSaveOf(file);
    if (copy) {
        std::cerr << "The last save of " << visible(file) << " was interrupted; its text is in " << visible(*copy)
                  << std::endl;
    }
}

/// A connection that has been drawn, on its way into the maps.
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

/// Places in that order are found at once, where a search compares names by the rules of the user's language.
void sortAsMaps(std::vector<Drawn>& connections) {
    for (Drawn& each : connections) {
        each.rank = each.input[0].collate_key() + '\0' + each.input[1].collate_key();
    }
    std::stable_sort(connections.begin(), connections.end(),
                     [](const Drawn& one, const Drawn& other) { return one.rank < other.rank; });
}

}  // namespace

void vkWindow::open(const Glib::ustring& file) {
    endGestures();
    manager->ReadDocument(file);
    tellOfInterruptedSave(file);
    for (QzBase* object : manager->plugins) {
        addPlugin(object, "");
    }
    // As connect() for each of them, without its searches.
    Nodes nodes = nodesByObject(liveNodes());
    std::vector<Drawn> connections;
    for (QzBase* object : manager->plugins) {
        plugin* receiver = nodes[object];
        for (const QzBase::Input* input : object->FullInputs()) {
            PortRef source = sourceOf(*input);
            plugin* sender = nodes[input->source];
            if (!source.empty() && sender && receiver) {
                Drawn& drawn = connections.emplace_back(Drawn{std::move(source), {object->name, input->name}});
                layWire({*sender, drawn.output[1]}, {*receiver, drawn.input[1]}, drawn.path);
            }
        }
    }
    sortAsMaps(connections);
    for (const Drawn& each : connections) {
        connectionMap.insert_or_assign(connectionMap.end(), each.input, each.output);
        auto& path = pathMap.try_emplace(pathMap.end(), each.input)->second;
        if (path) {
            path->remove();
        }
        path = each.path;
    }
    modified = false;
}
