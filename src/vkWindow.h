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

/// The main window, which owns the entire editing state; vkWindow.cpp explains its invariants. Every edit changes the
/// library first, then the node, then its wires, then the modified flag.
/// Lifetime: the manager passed to setManager outlives the window; the destructor stops and joins an active run.
/// Threads:  the main thread only, except run().
class vkWindow : public Gtk::Window {
public:
    using ItemRef = Glib::RefPtr<Goocanvas::Item>;
    vkWindow();
    ~vkWindow() override;

    /// Fills the kind selector, kindMap and the two tree dialogs. Called once.
    void setManager(QzManager& library);

    // Document (vkWindow_document.cpp, vkWindow_save.cpp)
    void open(const Glib::ustring& file);       ///< The library reads the file, then the window draws it.
    void checkOpen(const Glib::ustring& file);  ///< open(), after asking whether to remove the plug-ins.
    void open_call(), save_call(), saveas_call(), on_imgexp();

    // Nodes (vkWindow_nodes.cpp, vkWindow_select.cpp)
    /// Adds a node for an object of the library or, if that is null, for a new plug-in of the kind called `name`.
    void addPlugin(QzBase* object, Glib::ustring name);
    /// Renames a plug-in in all maps; the old name stays a key of pluginMap.
    /// @return 0xFFFFFFFF if the new name is taken, 0 if the old one is unknown, both with nothing changed; else 1.
    unsigned int renamePlugin(const std::string& oldName, const std::string& newName);
    /// Deletes a plug-in with its connections; the name stays a key of pluginMap and leads to null.
    void pldelete(const Glib::ustring& name);
    void on_del(), on_collapse(), on_setstart();  ///< On the selected node.
    bool click(const ItemRef& item, GdkEventButton* event);
    bool start_drag(const ItemRef& item);
    bool mouse_drag(const ItemRef& item, GdkEventMotion* event);
    bool stop_drag(const ItemRef& item, GdkEventButton* event);

    // Wires (vkWindow_wires.cpp, vkWindow_draw.cpp)
    /// Creates, redraws or replaces the connection into `to`, in the library too unless it already exists there.
    void connect(const PortRef& from, const PortRef& to);
    /// Completes the redraw of a node: its colour if selected, its wires, its signals.
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
    plugin* makeNode(QzBase* object, Glib::ustring name);  ///< Draws it, but does not add it to pluginMap.
    void bindSignals(plugin& node);                        ///< Of its box and of its ports' texts.
    void drawObjects(), drawBindings();                    ///< All objects and bindings of a document.

    /// The node of that name, null if there is none. Never inserts.
    plugin* nodeOf(const Glib::ustring& name) const;
    std::vector<plugin*> liveNodes() const;                      ///< Every node once, in the order of pluginMap.
    std::vector<std::string> namesOf(const plugin& node) const;  ///< The keys of pluginMap that lead to it.
    void replaceTwin(plugin& node);                              ///< Replaces the node that shows the same object.
    void assignName(const Glib::ustring& name, plugin& node);    ///< Its former owner keeps its wires.
    plugin* nodeShowing(const Glib::ustring& name);              ///< The node whose box shows it; updates the maps.
    void keepReachable(plugin* former);
    void renameEnds(const Glib::ustring& oldName, const Glib::ustring& newName);  ///< Both ends of every connection.
    void forgetConnections(plugin& node, const Glib::ustring& name);
    void layWire(NodePort from, NodePort to, Glib::RefPtr<Goocanvas::Path>& path);
    void forgetConnection(const PortRef& input);  ///< Removes its path and both map entries.
    void redrawConnections();                     ///< connectAll(), but keeps unmoved wires.
    void connectAll(), deleteAll();               ///< connect() each key; delete all nodes.
    void matchBindings(plugin& node);             ///< Makes its wires the library's bindings.
    bool askForRemoval(std::string& kept);        ///< Deletes all if the user agrees; `kept`: file with their text.
    void write(const std::string& file);          ///< Saves the document; on success, clears the flags.
    void joinWorker(), stopWorker();              ///< Wait for the end of a run; stopWorker requests it.
    bool hasChanges();                            ///< Merges the nodes' changed flags into `modified`.
    void setBoxColour(plugin& node, bool isSelected);
    void select(const ItemRef&item), deselect(), storePlace(const ItemRef&item);  ///< storePlace: in the library.
    plugin* selectedNode() const;
    void endGestures(), abandonGestures();  ///< Store a dragged box, discard a new wire; also without a release.
    CanvasPoint pointerOnCanvas();          ///< Takes scrolling and zoom into account.

    QzManager* manager = nullptr;
    NameMap<unsigned short> kindMap;
    NameMap<plugin*> pluginMap;      ///< Never pruned; the name of a deleted node leads to null.
    PortMap<PortRef> connectionMap;  ///< Input -> the output that feeds it.
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
    std::binary_semaphore runEnded{0};  ///< Released by the worker between Run and runFinished.
    Glib::RefPtr<Gtk::ActionGroup> actionGroup;
    Glib::RefPtr<Gtk::UIManager> uiManager;
    Gtk::Widget* menuBar = nullptr;
    ItemRef selectedItem, draggedBox;  ///< Boxes, or empty.
    bool modified = false, dragging = false, wiring = false;
    unsigned gestureButton = 1;     ///< The button that started the gesture.
    CanvasPoint lastPointer{0, 0};  ///< Pointer position up to which the box has followed.
    PortRef wiringSource;
    RubberBand rubberBand;
    varWindow* lastDialog = nullptr;  ///< Set by on_var(), never read.
};
