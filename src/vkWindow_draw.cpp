#include "Hit.h"
#include "canvasItems.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>

bool vkWindow::start_draw(const ItemRef& item, GdkEventButton* event) {
    endGestures();  // A double click presses twice.
    wiringSource.clear();
    const Hit source = hitOf(item, liveNodes());
    if (source.kind != Hit::Kind::Output) {
        return false;
    }
    wiring = true;
    gestureButton = event->button;
    rubberBand.begin(canvas, placeOf(item), pointerOnCanvas());
    wiringSource = {titleOf(source.node->box), source.port};
    return false;
}

bool vkWindow::stop_draw(const ItemRef& /*item*/, GdkEventButton* /*event*/) {
    if (!wiring) {
        return false;
    }
    const CanvasPoint pointer = pointerOnCanvas();
    const Hit target = topmostHit(canvas.get_items_at(pointer.x, pointer.y, true), liveNodes());
    rubberBand.remove();
    if (target.kind == Hit::Kind::Input) {
        connect(wiringSource, {titleOf(target.node->box), target.port});
    }
    wiring = false;
    return false;
}

bool vkWindow::click_ip(const ItemRef& item, GdkEventButton* event) {
    const bool isRepeated = event->type == GDK_2BUTTON_PRESS || event->type == GDK_3BUTTON_PRESS;
    // A double click is reported in addition to its second press, which has already pulled the wire off.
    if (event->button == 1 && !isRepeated) {
        pull_off(textOf(item));
    }
    return false;
}

bool vkWindow::pull_off(const Glib::ustring& port) {
    const CanvasPoint pointer = pointerOnCanvas();
    const std::vector<ItemRef> items = canvas.get_items_at(pointer.x, pointer.y, true);
    if (items.empty()) {
        modified = true;  // Deliberate, although nothing has changed.
        return false;
    }
    endGestures();
    const Hit hit = topmostHit(items, liveNodes());
    if (hit.kind != Hit::Kind::Input || !isSameName(hit.port, port)) {
        return false;
    }
    const PortRef input{titleOf(hit.node->box), port};
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
    sender->GetPlugin()->Disconnect(wiringSource[1], hit.node->GetPlugin(), port);
    connectionMap.erase(input);
    rubberBand.begin(canvas, sender->outputAnchor(wiringSource[1]), pointer);
    modified = true;
    return false;
}
