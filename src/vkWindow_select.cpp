#include "canvasItems.h"
#include "colours.h"
#include "plugin.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

namespace {

constexpr double canvasHeight = 1200;

}  // namespace

bool vkWindow::click(const ItemRef& item, GdkEventButton* event) {
    if (item != selectedItem) {
        select(item);
    }
    canvas.grab_focus(item);
    if (event->button == 1) {
        start_drag(item);
    } else if (event->button == 3) {
        nodeMenu.popup(event->button, event->time);
    }
    return false;
}

void vkWindow::select(const ItemRef& item) {
    if (selectedItem) {
        colourBox(selectedItem, false);
    }
    colourBox(item, true);
    if (plugin* node = nodeOf(titleOf(item))) {
        node->raise_to_top();
    }
    selectedItem = item;
}

void vkWindow::colourBox(const ItemRef& item, bool isSelected) {
    const bool isStart = manager->IndexOf(titleOf(item)) == 0;
    const auto plain = isStart ? colours::start : colours::other;
    const auto bright = isStart ? colours::startSelected : colours::otherSelected;
    item->set_property("fill_color_rgba", isSelected ? bright : plain);
}

bool vkWindow::start_drag(const ItemRef&) {
    dragging = true;
    lastPointer = pointerOnCanvas();
    return false;
}

bool vkWindow::mouse_drag(const ItemRef& item, GdkEventMotion*) {
    if (!dragging) {
        if (wiring) {
            moveRubberBand();
        }
        return false;
    }
    const CanvasPoint pointer = pointerOnCanvas();
    if (plugin* node = nodeOf(titleOf(item))) {
        node->translate(static_cast<float>(pointer.x - lastPointer.x), static_cast<float>(pointer.y - lastPointer.y));
    }
    for (const auto& [input, output] : connectionMap) {
        connect(output, input);
    }
    lastPointer = pointer;
    return false;
}

bool vkWindow::stop_drag(const ItemRef& item, GdkEventButton*) {
    dragging = false;
    if (plugin* node = nodeOf(titleOf(item))) {
        double x = 0;
        double y = 0;
        float width = 0;
        float height = 0;
        item->get_property("x", x);
        item->get_property("y", y);
        node->GetPlugin()->GetOuterExtent(width, height);
        node->GetPlugin()->SetPosition(static_cast<float>(x), static_cast<float>(canvasHeight - y - height));
    }
    modified = true;
    return false;
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
    if (!selectedItem) {
        return;
    }
    Glib::ustring name = titleOf(selectedItem);
    if (plugin* node = nodeOf(name)) {
        node->GetPlugin()->SetExpanded(!node->GetPlugin()->IsExpanded());
        node->draw();
        reconnect(name);
        // Deliberate: what is selected is the old box, so the new one looks unselected until it is clicked.
        colourBox(node->box, false);
        modified = true;
    }
}

void vkWindow::on_setstart() {
    if (!selectedItem) {
        return;
    }
    const Glib::ustring start = manager->plugins.empty() ? std::string() : manager->plugins.front()->name;
    const Glib::ustring name = titleOf(selectedItem);
    plugin* node = nodeOf(name);
    if (name == start || !node) {
        return;
    }
    plugin* former = nodeOf(start);
    manager->SetStart(manager->IndexOf(name));
    if (former) {
        former->box->set_property("fill_color_rgba", colours::other);
    }
    node->box->set_property("fill_color_rgba", colours::startSelected);
    modified = true;
}
