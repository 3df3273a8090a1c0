#include "wirePath.h"

#include <goocanvas.h>

#include <algorithm>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace {

constexpr int inset = 3;

/// Larger coordinates would overflow an int.
constexpr double maxCoordinate = 1e9;

int whole(double coordinate) {
    return static_cast<int>(std::clamp(coordinate, -maxCoordinate, maxCoordinate));
}

std::string curve(const WireEnds& ends) {
    const double half = static_cast<double>(ends.toX - ends.fromX) * 0.5;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "M " << ends.fromX + inset << ' ' << ends.fromY << " C " << ends.fromX + half + inset << ' ' << ends.fromY
         << ' ' << ends.toX - half - inset << ' ' << ends.toY << ' ' << ends.toX - inset << ' ' << ends.toY;
    return text.str();
}

}  // namespace

WireEnds::WireEnds(CanvasPoint output, CanvasPoint input)
    : fromX(whole(output.x)), fromY(whole(output.y)), toX(whole(input.x)), toY(whole(input.y)) {}

Glib::RefPtr<Goocanvas::Path> makeWire(const WireEnds& ends) {
    return makeWirePath(curve(ends));
}

Glib::RefPtr<Goocanvas::Path> makeWirePath(const std::string& data) {
    auto path = Goocanvas::Path::create(data);
    // One call for all properties: documents have thousands of wires.
    g_object_set(path->gobj(), "can-focus", FALSE, "line-width", 4.0, "stroke-color", "firebrick", nullptr);
    return path;
}

bool connects(const Glib::RefPtr<Goocanvas::Path>& wire, const WireEnds& ends) {
    const GArray* commands = wire->gobj()->path_data->path_commands;
    if (commands->len != 2) {
        return false;
    }
    const auto& start = g_array_index(commands, GooCanvasPathCommand, 0).simple;
    const auto& end = g_array_index(commands, GooCanvasPathCommand, 1).curve;
    return start.x == ends.fromX + inset && start.y == ends.fromY && end.x == ends.toX - inset && end.y == ends.toY;
}

void addBelow(const Glib::RefPtr<Goocanvas::Item>& root, const std::vector<Glib::RefPtr<Goocanvas::Path>>& wires) {
    std::for_each(wires.rbegin(), wires.rend(), [&root](const auto& wire) { root->add_child(wire); });
    // They are on top now, in the right order; the group keeps its items from the bottom up.
    const GPtrArray* items = GOO_CANVAS_GROUP(root->gobj())->items;
    gpointer* end = items->pdata + items->len;
    std::rotate(items->pdata, end - wires.size(), end);
}

WireStack::WireStack(Glib::RefPtr<Goocanvas::Item> root, std::size_t count)
    : root(std::move(root)), items(GOO_CANVAS_GROUP(this->root->gobj())->items), next(static_cast<int>(count)) {
    wires.reserve(count);
}

bool WireStack::isAt(int position, const Wire& wire) const {
    const auto at = static_cast<guint>(position);
    return at < items->len && g_ptr_array_index(items, at) == wire->gobj();
}

bool WireStack::add(Wire& wire) {
    --next;
    const bool isInPlace = isAt(next, wire);
    if (!isInPlace && !wire->get_parent()) {
        return false;
    }
    isInOrder = isInOrder && isInPlace;
    wires.push_back(&wire);
    return true;
}

bool WireStack::add(Wire& wire, const WireEnds& ends) {
    if (!add(wire)) {
        return false;
    }
    if (!connects(wire, ends)) {
        moved.push_back({&wire, ends, next});
    }
    return true;
}

void WireStack::lay() {
    if (!isInOrder) {
        for (const Wire* wire : wires) {
            root->move_child(root->find_child(*wire), 0);
        }
    }
    for (const Moved& each : moved) {
        root->remove_child(each.position);
    }
    // From the bottom up, so that everything below each of them is already in place.
    std::for_each(moved.rbegin(), moved.rend(), [this](const Moved& each) {
        *each.wire = makeWire(each.ends);
        root->add_child(*each.wire, each.position);
    });
}
