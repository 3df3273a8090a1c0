#include "canvasItems.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>

#include <algorithm>

namespace {

Glib::ustring textOf(const vkWindow::ItemRef& item) {
    Glib::ustring text;
    item->get_property("text", text);
    return text;
}

}  // namespace

Glib::ustring vkWindow::plugInAmong(const std::vector<ItemRef>& items) const {
    // The first item is the port itself.
    for (std::size_t i = 1; i < items.size(); ++i) {
        Glib::ustring title = titleOf(items[i]);
        if (!title.empty() && nodeOf(title)) {
            return title;
        }
    }
    return {};
}

bool vkWindow::start_draw(const ItemRef& item, GdkEventButton* event) {
    endGestures();  // A double click presses twice.
    wiring = true;
    gestureButton = event->button;
    const CanvasPoint pointer = pointerOnCanvas();
    const CanvasPoint start = placeOf(item);
    wiringSource.clear();
    const Glib::ustring name = plugInAmong(canvas.get_items_in_area(item->get_bounds(), true, true, false));
    if (name.empty()) {
        wiring = false;
        return false;
    }
    rubberBand.begin(canvas, start, pointer);
    wiringSource = {name, textOf(item)};
    return false;
}

bool vkWindow::stop_draw(const ItemRef& /*item*/, GdkEventButton* /*event*/) {
    if (!wiring) {
        return false;
    }
    const CanvasPoint pointer = pointerOnCanvas();
    const std::vector<ItemRef> items = canvas.get_items_at(pointer.x, pointer.y, true);
    rubberBand.remove();
    const auto input =
        std::find_if(items.begin(), items.end(), [](const ItemRef& item) { return titleOf(item) == "input"; });
    const Glib::ustring name = plugInAmong(items);
    if (input != items.end() && !name.empty()) {
        connect(wiringSource, {name, textOf(*input)});
    }
    wiring = false;
    return false;
}

bool vkWindow::click_ip(const ItemRef& item, GdkEventButton* event) {
    const bool isRepeated = event->type == GDK_2BUTTON_PRESS || event->type == GDK_3BUTTON_PRESS;
    // A double click comes once more for its second press, which has pulled the wire off already.
    if (event->button == 1 && !isRepeated) {
        pull_off(textOf(item));
    }
    return false;
}

bool vkWindow::pull_off(const Glib::ustring& port) {
    const CanvasPoint pointer = pointerOnCanvas();
    const std::vector<ItemRef> items = canvas.get_items_at(pointer.x, pointer.y, true);
    if (items.empty()) {
        modified = true;  // Deliberate, though nothing changes.
        return false;
    }
    endGestures();
    const PortRef input{plugInAmong(items), port};
    const auto path = pathMap.find(input);
    if (path == pathMap.end()) {
        return false;
    }
    wiring = true;
    gestureButton = 1;
    path->second->remove();
    pathMap.erase(path);
    wiringSource = connectionMap[input];
    plugin* sender = nodeOf(wiringSource[0]);
    sender->GetPlugin()->Disconnect(wiringSource[1], nodeOf(input[0])->GetPlugin(), port);
    connectionMap.erase(input);
    rubberBand.begin(canvas, sender->outputAnchor(wiringSource[1]), pointer);
    modified = true;
    return false;
}
