#include "Hit.h"

#include "canvasItems.h"
#include "plugin.h"

#include <algorithm>

namespace {

using ItemRef = Glib::RefPtr<Goocanvas::Item>;

bool isAmong(const std::vector<plugin::TextItem>& texts, const ItemRef& item) {
    return std::any_of(texts.begin(), texts.end(),
                       [&item](const plugin::TextItem& text) { return text.get() == item.get(); });
}

Hit::Kind kindIn(const plugin& node, const ItemRef& item) {
    if (node.box.get() == item.get()) {
        return Hit::Kind::Box;
    }
    if (isAmong(node.inputTexts, item)) {
        return Hit::Kind::Input;
    }
    return isAmong(node.outputTexts, item) ? Hit::Kind::Output : Hit::Kind::Nothing;
}

}  // namespace

Hit hitOf(const ItemRef& item, const std::vector<plugin*>& nodes) {
    for (plugin* node : nodes) {
        const Hit::Kind kind = item ? kindIn(*node, item) : Hit::Kind::Nothing;
        if (kind != Hit::Kind::Nothing) {
            return {kind, node, kind == Hit::Kind::Box ? Glib::ustring() : textOf(item)};
        }
    }
    return {};
}

Hit topmostHit(const std::vector<ItemRef>& itemsFromTheTop, const std::vector<plugin*>& nodes) {
    for (const ItemRef& item : itemsFromTheTop) {
        Hit hit = hitOf(item, nodes);
        if (hit.node) {
            return hit;
        }
    }
    return {};
}
