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

/// A node that is drawn but not in the map yet.
struct Named {
    plugin* node;
    std::string rank;  ///< Sorts bytewise as the map sorts its keys.
};

}  // namespace

void vkWindow::open(const Glib::ustring& file) {
    endGestures();
    manager->ReadDocument(file);
    tellOfInterruptedSave(file);
    drawObjects();
    drawBindings();
    modified = false;
}

void vkWindow::drawObjects() {
    if (!liveNodes().empty()) {
        for (QzBase* object : manager->plugins) {
            addPlugin(object, "");
        }
        return;
    }
    // Like addPlugin() for each of them, but on an empty canvas no node can show an object already.
    std::vector<Named> made;
    for (QzBase* object : manager->plugins) {
        plugin* node = makeNode(object, "");
        made.push_back({node, node->uniqueName.collate_key()});
    }
    // In map order every insertion goes to the end; a search would compare names by the rules of the user's language.
    std::ranges::stable_sort(made, {}, &Named::rank);
    for (const auto& [node, rank] : made) {
        const auto entry = pluginMap.try_emplace(pluginMap.end(), node->uniqueName, node);
        if (entry->second != node) {
            giveName(node->uniqueName, *node);
        }
    }
}
