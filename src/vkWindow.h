#pragma once

#include "CanvasPoint.h"
#include "PortRef.h"
#include "RubberBand.h"
#include "StartButton.h"
#include "exampleWindow.h"
#include "pluginwindow.h"

#include <glibmm/dispatcher.h>
#include <glibmm/thread.h>
#include <goocanvasmm/canvas.h>
#include <gtkmm/actiongroup.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/menu.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/uimanager.h>
#include <gtkmm/window.h>

#include <semaphore>
#include <string>
#include <vector>

class plugin;
struct NodePort;
class QzBase;
class QzManager;
class varWindow;

/// The main window, owner of the whole editing state. Every edit goes one road: the library first, then the node, then
/// its wires, then the modified flag.
/// Lifetime: the manager given to setManager outlives the window; the window stops and joins a run that is going on.
/// Threads:  the main thread only, but for run().
class vkWindow : public Gtk::Window {
public:
    using ItemRef = Glib::RefPtr<Goocanvas::Item>;
    vkWindow();
    ~vkWindow() override;

    /// Fills the kind selector, kindMap and the two list dialogs. Called once.
    void setManager(QzManager& library);

    // Document (vkWindow_document.cpp, vkWindow_save.cpp)
    void open(const Glib::ustring& file);       ///< Has the library read the file, then builds nodes and paths.
    void checkOpen(const Glib::ustring& file);  ///< open(), after asking whether the plug-ins there are shall go.
    void open_call(), save_call(), saveas_call(), on_imgexp();

    // Nodes (vkWindow_nodes.cpp, vkWindow_select.cpp)
    /// Places an object of the library, or, where it is null, a new plug-in of the kind called `name`.
    void addPlugin(QzBase* object, Glib::ustring name);
    /// Moves a plug-in to a new name in all maps; the old name stays a key of pluginMap.
    /// @return 0xFFFFFFFF when the new name is taken, 0 when the old one is unknown, with nothing changed.
    unsigned int renamePlugin(const std::string& oldName, const std::string& newName);
    /// Deletes a plug-in with its connections; the name stays a key of pluginMap and leads to no node any more.
    void pldelete(const Glib::ustring& name);
    void on_del(), on_collapse(), on_setstart();  ///< On the selected node.
    bool click(const ItemRef& item, GdkEventButton* event);
    bool start_drag(const ItemRef& item);
    bool mouse_drag(const ItemRef& item, GdkEventMotion* event);
    bool stop_drag(const ItemRef& item, GdkEventButton* event);

    // Wires (vkWindow_wires.cpp, vkWindow_draw.cpp)
    /// Makes, redraws or replaces the connection into `to`; tells the library unless it knows.
    void connect(const PortRef& from, const PortRef& to);
    /// After a node was drawn anew: its colour while selected, the paths that touch it, its signals.
    void reconnect(Glib::ustring& name);
    bool start_draw(const ItemRef& item, GdkEventButton* event);
    bool stop_draw(const ItemRef& item, GdkEventButton* event);
    bool click_ip(const ItemRef& item, GdkEventButton* event);
    bool pull_off(const Glib::ustring& port);

    // Run (vkWindow_run.cpp)
    void setRun();  ///< A click on the start button.
    void start_button_clicked(), reset_button_clicked();
    void run();           ///< Body of the worker thread.
    void after_thread();  ///< End of a run, on the main thread.

    // Menus (vkWindow.cpp, vkWindow_dialogs.cpp)
    void quit(), on_var();
    void on_plcoll(), examples_call();
    void on_zIn(), on_zOut(), on_z0();
    void about_call(), on_combo_changed();

protected:
    bool on_delete_event(GdkEventAny* event) override;  ///< Does nothing: the program ends through Quit only.
    bool on_window_state_event(GdkEventWindowState* event) override;

    void buildActions(), buildMenus(), buildCanvas(), connectSignals(), pack();
    void appendToNodeMenu(const Glib::ustring& label, void (vkWindow::*handler)());
    plugin* makeNode(QzBase* object, Glib::ustring name);  ///< Draws it; it has no name in pluginMap yet.
    void bindSignals(plugin& node);                        ///< The four kinds of signals of a node's items.
    void drawObjects(), drawBindings();  ///< Everything the library holds after it has read a document.

    /// The node of that name, null where there is none (any more). Never inserts.
    plugin* nodeOf(const Glib::ustring& name) const;
    std::vector<plugin*> liveNodes() const;                      ///< Every node once, in the order of pluginMap.
    std::vector<std::string> namesOf(const plugin& node) const;  ///< The keys of pluginMap that lead to it.
    void replaceTwin(plugin& node);                              ///< Takes the place of the node that shows the object.
    void giveName(const Glib::ustring& name, plugin& node);  ///< Where the name led to another, that keeps its wires.
    plugin* drawnUnder(const Glib::ustring& name);           ///< The node whose box bears the name; the maps follow it.
    void keepReachable(plugin* former);
    void renameEnds(const Glib::ustring& oldName, const Glib::ustring& newName);  ///< Both ends of every connection.
    void forgetConnections(plugin& node, const Glib::ustring& name);
    void layWire(NodePort from, NodePort to, Glib::RefPtr<Goocanvas::Path>& path);
    void forgetConnection(const PortRef& input);  ///< Its path off the canvas, out of both maps.
    void redrawConnections();                     ///< As connectAll(), but what lies as it would then is not touched.
    void connectAll(), deleteAll();               ///< connect, pldelete for every key of the maps, in their order.
    void matchBindings(plugin& node);             ///< Its wires become those that the library holds, no more, no less.
    bool askForRemoval(std::string& kept);  ///< Deletes all nodes where the user says yes; `kept`: where their text is.
    void write(const std::string& file);    ///< The document; clears the flags where that succeeds.
    void joinWorker(), stopWorker();        ///< Wait for a run to end; stopWorker asks it to.
    bool hasChanges();                      ///< Takes over the nodes' changed flags first.
    void setBoxColour(plugin& node, bool isSelected);
    void select(const ItemRef&item), deselect(), storePlace(const ItemRef&item);  ///< storePlace tells the library.
    plugin* selectedNode() const;
    void endGestures(), loseGrip();  ///< A box in motion stays, a new wire goes; loseGrip: no release will come.
    CanvasPoint pointerOnCanvas();   ///< Whatever the scrolling and the zoom.

    QzManager* manager = nullptr;
    NameMap<unsigned short> kindMap;
    NameMap<plugin*> pluginMap;      ///< Never pruned; a name whose node is gone leads to null.
    PortMap<PortRef> connectionMap;  ///< Input: the output that feeds it.
    PortMap<Glib::RefPtr<Goocanvas::Path>> pathMap;
    PluginWindow pluginWindow;
    ExampleWindow exampleWindow;
    Gtk::Menu nodeMenu;
    Gtk::VBox mainBox;
    Gtk::HBox controlRow;
    StartButton startButton;
    Gtk::Button resetButton;
    Gtk::ComboBoxText kindSelector;
    Gtk::ScrolledWindow scroller;
    Goocanvas::Canvas canvas;
    Glib::Mutex runMutex;
    Glib::Dispatcher runFinished;
    Glib::Thread* worker = nullptr;
    std::binary_semaphore runEnded{0};  ///< Released by the worker after Run, before it tells.
    Glib::RefPtr<Gtk::ActionGroup> actionGroup;
    Glib::RefPtr<Gtk::UIManager> uiManager;
    Gtk::Widget* menuBar = nullptr;
    ItemRef selectedItem, draggedBox;  ///< Boxes, or empty.
    bool modified = false, dragging = false, wiring = false;
    unsigned gestureButton = 1;     ///< That began the gesture.
    CanvasPoint lastPointer{0, 0};  ///< Where the pointer was at what the dragged box has followed.
    PortRef wiringSource;
    RubberBand rubberBand;
    varWindow* lastDialog = nullptr;  ///< Written when a variables dialog is made, read nowhere.
};
