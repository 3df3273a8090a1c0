#include "plugin.h"
#include "safeFile.h"
#include "sentence.h"
#include "stateFolder.h"
#include "visible.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr std::chrono::seconds patience(1);

// Gives up if the file system does not answer. The thread is left behind then: nothing can end one that the kernel
// holds.
std::optional<std::string> interruptedSaveInTime(const std::string& file) {
    std::packaged_task<std::optional<std::string>()> search([file] { return interruptedSaveOf(file); });
    auto copy = search.get_future();
    std::thread(std::move(search)).detach();
    return copy.wait_for(patience) == std::future_status::ready ? copy.get() : std::nullopt;
}

// A program killed while it was overwriting the file in place has left the complete text in a copy.
void reportInterruptedSave(const std::string& file) {
    const auto copy = interruptedSaveInTime(file);
    if (copy) {
        say("The last save of " + visible(file) + " was interrupted; its text is in " + visible(*copy));
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
