#include "canvasItems.h"
#include "colours.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>
#include <goocanvas.h>

namespace {

/// Whether the button is still pressed during a motion. The toolkit reports this for the first five buttons only.
bool isHeld(const GdkEventMotion& motion, unsigned button) {
    constexpr unsigned knownButtons = 5;
    return button > knownButtons || (motion.state & (static_cast<guint>(GDK_BUTTON1_MASK) << (button - 1))) != 0;
}

}  // namespace

void vkWindow::setBoxColour(plugin& node, bool isSelected) {
    const bool isStart = manager->IndexOf(node.GetPlugin()->name) == 0;
    const auto plain = isStart ? colours::start : colours::other;
    const auto bright = isStart ? colours::startSelected : colours::otherSelected;
    node.box->set_property("fill_color_rgba", isSelected ? bright : plain);
}

bool vkWindow::click(const ItemRef& item, GdkEventButton* event) {
    if (item != selectedItem) {
        select(item);
    }
    canvas.grab_focus(item);
    if (event->button == 1) {
        start_drag(item);
    } else if (event->button == 3) {
        endGestures();  // The menu grabs the pointer, so that no release reaches the canvas.
        nodeMenu.popup(event->button, event->time);
    }
    return false;
}

plugin* vkWindow::selectedNode() const {
    // By name, not by item: a redraw gives the node another box.
    return selectedItem ? nodeOf(titleOf(selectedItem)) : nullptr;
}

void vkWindow::deselect() {
    if (plugin* former = selectedNode()) {
        setBoxColour(*former, false);
    }
    selectedItem.reset();
}

void vkWindow::select(const ItemRef& item) {
    deselect();
    if (plugin* node = nodeOf(titleOf(item))) {
        setBoxColour(*node, true);
        node->raise_to_top();
    }
    selectedItem = item;
}

bool vkWindow::start_drag(const ItemRef& item) {
    dragging = true;
    gestureButton = 1;
    draggedBox = item;
    lastPointer = pointerOnCanvas();
    return false;
}

bool vkWindow::mouse_drag(const ItemRef& item, GdkEventMotion* event) {
    if (!dragging && !wiring) {
        return false;
    }
    if (!isHeld(*event, gestureButton)) {
        abandonGestures();  // The release went to another window.
        return false;
    }
    const CanvasPoint pointer = pointerOnCanvas();
    if (!dragging) {
        rubberBand.follow(pointer);
        return false;
    }
    plugin* node = nodeOf(titleOf(item));
    if (node && node->box.get() == item.get()) {  // The texts of inputs have a title, too.
        // The rest of the motion, a fraction of a unit or a distance beyond the edge of the canvas, counts in later
        // steps.
        const auto [dx, dy] = node->follow({pointer.x - lastPointer.x, pointer.y - lastPointer.y});
        lastPointer = {lastPointer.x + dx, lastPointer.y + dy};
    } else {
        lastPointer = pointer;
    }
    redrawConnections();
    return false;
}

bool vkWindow::stop_drag(const ItemRef& item, GdkEventButton* /*event*/) {
    dragging = false;
    draggedBox.reset();
    storePlace(item);
    modified = true;
    return false;
}

void vkWindow::storePlace(const ItemRef& boxItem) {
    plugin* node = nodeOf(titleOf(boxItem));
    if (!node || node->isDisplaced()) {
        return;
    }
    const auto [x, y] = placeOf(boxItem);
    float width = 0;
    float height = 0;
    QzBase* object = node->GetPlugin();
    object->GetOuterExtent(width, height);
    object->SetPosition(static_cast<float>(x), static_cast<float>(canvasSize.y - y - height));
}

void vkWindow::endGestures() {
    if (dragging) {
        dragging = false;
        storePlace(draggedBox);
        modified = true;
    }
    draggedBox.reset();
    wiring = false;
    rubberBand.remove();
}

void vkWindow::abandonGestures() {
    endGestures();
    // The canvas itself would release the item's pointer grab only on a button release.
    GooCanvas* widget = canvas.gobj();
    if (widget->pointer_grab_item) {
        goo_canvas_pointer_ungrab(widget, widget->pointer_grab_item, GDK_CURRENT_TIME);
    }
}

void vkWindow::on_del() {
    if (!selectedItem) {
        return;
    }
    pldelete(titleOf(selectedItem));
    selectedItem.reset();
    modified = true;
}

void vkWindow::on_collapse() {
    plugin* node = selectedNode();
    if (!node) {
        return;
    }
    endGestures();
    QzBase* object = node->GetPlugin();
    object->SetExpanded(!object->IsExpanded());
    node->draw();
    Glib::ustring name = object->name;
    reconnect(name);
    // Deliberate: the selected item is the former box; the new one looks unselected until it is clicked.
    setBoxColour(*node, false);
    modified = true;
}

void vkWindow::on_setstart() {
    plugin* node = selectedNode();
    if (!node) {
        return;
    }
    const std::string formerName = manager->plugins.empty() ? std::string() : manager->plugins.front()->name;
    const std::string& name = node->GetPlugin()->name;
    if (name == formerName) {
        return;
    }
    manager->SetStart(manager->IndexOf(name));
    if (plugin* former = nodeOf(formerName)) {
        former->box->set_property("fill_color_rgba", colours::other);
    }
    node->box->set_property("fill_color_rgba", colours::startSelected);
    modified = true;
}
