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

// A program killed while it was overwriting the file in place has left the complete text in a copy.
void reportInterruptedSave(const std::string& file) {
    const auto copy = interruptedSaveOf(file);
    if (copy) {
        std::cerr << "The last save of " << visible(file) << " was interrupted; its text is in " << visible(*copy)
                  << std::endl;
    }
}

/// A node that is drawn, but not in the map yet.
struct Named {
    plugin* node;
    std::string collationKey;  ///< Its byte order is the order of the map.
};

}  // namespace

void vkWindow::open(const Glib::ustring& file) {
    endGestures();
    manager->ReadDocument(file);
    reportInterruptedSave(file);
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
    // Equivalent to addPlugin() for each object, because on an empty canvas no node shows an object yet.
    std::vector<Named> drawn;
    for (QzBase* object : manager->plugins) {
        plugin* node = makeNode(object, "");
        drawn.push_back({node, node->uniqueName.collate_key()});
    }
    // Sorted, so that every insertion is at the end of the map: searching it would collate names in the user's
    // language.
    std::ranges::stable_sort(drawn, {}, &Named::collationKey);
    for (const auto& [node, collationKey] : drawn) {
        const auto entry = pluginMap.try_emplace(pluginMap.end(), node->uniqueName, node);
        if (entry->second != node) {
            assignName(node->uniqueName, *node);
        }
    }
}
