#include "vkWindow.h"

#include "about.h"
#include "canvasView.h"
#include "kindSelector.h"
#include "plugin.h"
#include "question.h"

#include <QzManager.h>
#include <gtkmm/accelkey.h>
#include <gtkmm/menuitem.h>
#include <gtkmm/stock.h>

#include <iostream>

// Invariants of the editing state:
//
// - The library holds every plug-in, value and binding. Everything on the canvas can be redrawn from it at any time.
// - pluginMap maps every name that a node has ever had to that node, or to null once the node is deleted. Several names
//   can lead to one node; a name that is taken over leads to its new owner.
// - connectionMap and pathMap have the same keys, one for each input with a wire. Both ends of a connection have names
//   in pluginMap. Every path is on the canvas, below all boxes.
// - Selection is by name: what counts is the title of selectedItem, which may be a box that is no longer on the canvas,
//   because a redraw gives the selected node another box.
// - Whatever deletes or replaces items ends the gestures, because the pointer may hold one of these items.

namespace {

constexpr int viewWidth = 600;
constexpr int viewHeight = 400;
constexpr double zoomStep = 0.1;
constexpr const char* selectorHeading = "Create...";

constexpr const char* menuDescription = R"(<ui>
  <menubar name="MenuBar">
    <menu action="FileMenu">
      <menuitem action="Open"/>
      <menuitem action="Save"/>
      <menuitem action="SaveAs"/>
      <menuitem action="Quit"/>
    </menu>
    <menu action="OptionMenu">
      <menuitem action="Var"/>
      <menuitem action="Col"/>
      <menuitem action="SStart"/>
      <menuitem action="Del"/>
    </menu>
    <menu action="PluginMenu">
      <menuitem action="plcoll"/>
    </menu>
    <menu action="ViewMenu">
      <menuitem action="zIn"/>
      <menuitem action="zOut"/>
      <menuitem action="z0"/>
    </menu>
    <menu action="HelpMenu">
      <menuitem action="Examples"/>
      <menuitem action="About"/>
    </menu>
  </menubar>
</ui>)";

}  // namespace

vkWindow::vkWindow()
    : pluginWindow(this),
      exampleWindow(this),
      mainBox(false, 0),
      controlRow(false, 0),
      startButton("Start"),
      resetButton("Reset") {
    set_deletable(false);
    buildActions();
    buildMenus();
    buildCanvas();
    connectSignals();
    pack();
}

vkWindow::~vkWindow() {
    hide();  // Emits signals whose handlers need the members.
    if (worker) {
        stopWorker();
    }
    // The objects belong to the manager and stay there.
    for (plugin* node : liveNodes()) {
        node->release();
        node->leaveCanvas();
        delete node;
    }
}

void vkWindow::buildActions() {
    using Handler = void (vkWindow::*)();
    namespace Stock = Gtk::Stock;
    actionGroup = Gtk::ActionGroup::create();
    const auto menu = [this](const char* name, const char* label) {
        actionGroup->add(Gtk::Action::create(name, label));
    };
    const auto action = [this](const Glib::RefPtr<Gtk::Action>& made, const char* accelerator, Handler handler) {
        actionGroup->add(made, Gtk::AccelKey(accelerator), sigc::mem_fun(*this, handler));
    };
    const auto stockAction = [this](const Glib::RefPtr<Gtk::Action>& made, Handler handler) {
        actionGroup->add(made, sigc::mem_fun(*this, handler));
    };
    using Gtk::Action;
    menu("FileMenu", "File");
    stockAction(Action::create("Open", Stock::OPEN, "_Open"), &vkWindow::open_call);
    stockAction(Action::create("Save", Stock::SAVE, "_Save"), &vkWindow::save_call);
    action(Action::create("SaveAs", Stock::SAVE_AS, "Save as"), "<control><shift>S", &vkWindow::saveas_call);
    stockAction(Action::create("Quit", Stock::QUIT, "_Quit"), &vkWindow::quit);
    menu("OptionMenu", "Options");
    action(Action::create("Var", "_Variables"), "<alt>V", &vkWindow::on_var);
    action(Action::create("Col", "(Un)_Collapse"), "<alt>C", &vkWindow::on_collapse);
    action(Action::create("SStart", "Set _Start"), "<alt>S", &vkWindow::on_setstart);
    action(Action::create("Del", "_Delete"), "Delete", &vkWindow::on_del);
    action(Action::create("ImgExp", "Export Image"), "<alt>I", &vkWindow::on_imgexp);  // Deliberate: in no menu.
    menu("PluginMenu", "Plugins");
    stockAction(Action::create("plcoll", "From _Collection"), &vkWindow::on_plcoll);
    menu("ViewMenu", "View");
    action(Action::create("zIn", "Zoom in"), "plus", &vkWindow::on_zIn);
    action(Action::create("zOut", "Zoom out"), "minus", &vkWindow::on_zOut);
    action(Action::create("z0", "Reset zoom"), "0", &vkWindow::on_z0);
    menu("HelpMenu", "Help");
    stockAction(Action::create("About", Stock::ABOUT, "About"), &vkWindow::about_call);
    stockAction(Action::create("Examples", "Examples"), &vkWindow::examples_call);
}

void vkWindow::buildMenus() {
    uiManager = Gtk::UIManager::create();
    uiManager->insert_action_group(actionGroup);
    add_accel_group(uiManager->get_accel_group());
    try {
        uiManager->add_ui_from_string(menuDescription);
    } catch (const Glib::Error& failure) {
        std::cerr << "building menus failed: " << failure.what().raw() << std::endl;
    }
    // A menu item connects its action's accelerator; an action without a menu item needs this.
    const auto imageExport = actionGroup->get_action("ImgExp");
    imageExport->set_accel_group(uiManager->get_accel_group());
    imageExport->connect_accelerator();
    appendToNodeMenu("Variables", &vkWindow::on_var);
    appendToNodeMenu("(Un)Collapse", &vkWindow::on_collapse);
    appendToNodeMenu("Set Start", &vkWindow::on_setstart);
    appendToNodeMenu("Delete", &vkWindow::on_del);
    nodeMenu.show_all();
    menuBar = uiManager->get_widget("/MenuBar");
}

void vkWindow::appendToNodeMenu(const Glib::ustring& label, void (vkWindow::*handler)()) {
    auto* item = Gtk::manage(new Gtk::MenuItem(label));
    item->signal_activate().connect(sigc::mem_fun(*this, handler));
    nodeMenu.append(*item);
}

void vkWindow::buildCanvas() {
    canvas.set_bounds(0, 0, canvasSize.x, canvasSize.y);
    canvas.set_size_request(viewWidth, viewHeight);
    canvas.set_property("background_color_rgb", std::uint32_t{0xABBAC9});
    canvas.get_root_item()->signal_motion_notify_event().connect(sigc::mem_fun(*this, &vkWindow::mouse_drag), true);
    canvas.get_root_item()->signal_button_release_event().connect(sigc::mem_fun(*this, &vkWindow::stop_draw), true);
}

void vkWindow::connectSignals() {
    startButton.signal_clicked().connect(sigc::mem_fun(*this, &vkWindow::start_button_clicked));
    resetButton.signal_clicked().connect(sigc::mem_fun(*this, &vkWindow::reset_button_clicked));
    kindSelector.signal_changed().connect(sigc::mem_fun(*this, &vkWindow::on_combo_changed));
    // A menu, a dialog or another program that grabs the pointer also receives the release that would end a gesture.
    canvas.signal_grab_broken_event().connect(
        sigc::bind_return(sigc::hide(sigc::mem_fun(*this, &vkWindow::endGestures)), false));
    canvas.signal_grab_notify().connect(sigc::hide(sigc::mem_fun(*this, &vkWindow::endGestures)));
    // The same applies when the window is hidden.
    canvas.signal_unmap().connect(sigc::mem_fun(*this, &vkWindow::abandonGestures));
    signal_unmap_event().connect(
        sigc::bind_return(sigc::hide(sigc::mem_fun(*this, &vkWindow::abandonGestures)), false));
    // When the window grows, the adjustment is clamped without notifying the canvas, which would then show, and react
    // to, another part than the scrollbars indicate.
    canvas.signal_size_allocate().connect(
        sigc::hide(sigc::mem_fun(*scroller.get_vadjustment().operator->(), &Gtk::Adjustment::value_changed)), true);
    canvasView::showTooltips(canvas, scroller);
    canvasView::scrollByKeys(canvas, scroller);
    chooseFromListOnly(kindSelector);
    kindSelector.append(selectorHeading);
    kindSelector.set_active(0);
}

void vkWindow::pack() {
    // The window opens with this part of the canvas in view. The scrollbars are always visible, beside the canvas: one
    // that appeared later would cover the bottom of the canvas.
    scroller.set_min_content_width(viewWidth);
    scroller.set_min_content_height(viewHeight);
    scroller.set_overlay_scrolling(false);
    scroller.set_policy(Gtk::POLICY_ALWAYS, Gtk::POLICY_ALWAYS);
    scroller.add(canvas);
    scroller.get_vadjustment()->set_value(canvasSize.y);
    if (menuBar) {
        mainBox.pack_start(*menuBar, Gtk::PACK_SHRINK, 0);
    }
    mainBox.pack_start(scroller, Gtk::PACK_EXPAND_WIDGET, 0);
    controlRow.pack_start(startButton, Gtk::PACK_EXPAND_WIDGET, 0);
    controlRow.pack_start(resetButton, Gtk::PACK_EXPAND_WIDGET, 0);
    controlRow.pack_start(kindSelector, Gtk::PACK_EXPAND_WIDGET, 0);
    mainBox.pack_start(controlRow, Gtk::PACK_SHRINK, 0);
    add(mainBox);
    show_all();
}

void vkWindow::setManager(QzManager& library) {
    manager = &library;
    const auto& kinds = QzManager::GetPlugins();
    for (std::size_t number = 0; number < kinds.size(); ++number) {
        kindSelector.append(kinds[number].name);
        kindMap[kinds[number].name] = static_cast<unsigned short>(number);
    }
    pluginWindow.setManager();
    exampleWindow.setManager();
}

void vkWindow::on_combo_changed() {
    const Glib::ustring kind = kindSelector.get_active_text();
    if (kind.empty() || kind.raw() == selectorHeading) {
        return;
    }
    addPlugin(nullptr, kind);
    kindSelector.set_active(0);  // emits "changed" again
    static_cast<Gtk::Widget&>(canvas).grab_focus();
}

// Deliberate: no limits in either direction.
void vkWindow::on_zIn() {
    canvas.set_scale(canvas.get_scale() + zoomStep);
}

void vkWindow::on_zOut() {
    canvas.set_scale(canvas.get_scale() - zoomStep);
}

void vkWindow::on_z0() {
    canvas.set_scale(1.0);
}

bool vkWindow::hasChanges() {
    for (const plugin* node : liveNodes()) {
        if (modified) {
            break;
        }
        modified = node->changed;
    }
    return modified;
}

void vkWindow::quit() {
    if (hasChanges() && confirms("Save changes?", Gtk::RESPONSE_YES)) {
        save_call();
    }
    hide();
}

bool vkWindow::on_delete_event(GdkEventAny*) {
    return true;
}

bool vkWindow::on_window_state_event(GdkEventWindowState* event) {
    // Some window managers minimise a window without unmapping it.
    if ((event->changed_mask & event->new_window_state & (GDK_WINDOW_STATE_ICONIFIED | GDK_WINDOW_STATE_WITHDRAWN)) !=
        0) {
        abandonGestures();
    }
    return Gtk::Window::on_window_state_event(event);
}

void vkWindow::about_call() {
    showAbout();
}

void vkWindow::examples_call() {
    exampleWindow.show();
}

void vkWindow::on_plcoll() {
    pluginWindow.show();
}

CanvasPoint vkWindow::pointerOnCanvas() {
    int windowX = 0;
    int windowY = 0;
    get_pointer(windowX, windowY);
    // In right-to-left languages, the scrollbar is to the left of the canvas.
    int left = 0;
    int top = 0;
    canvas.translate_coordinates(*this, 0, 0, left, top);
    double x = windowX - left + scroller.get_hadjustment()->get_value();
    double y = windowY + scroller.get_vadjustment()->get_value() - (menuBar ? menuBar->get_height() : 0);
    canvas.convert_from_pixels(x, y);
    return {x, y};
}
