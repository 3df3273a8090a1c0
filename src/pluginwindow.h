#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/buttonbox.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/treestore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

struct QzKind;
class vkWindow;

/// The plug-in collection: every kind that the library offers, under the collection that provides it.
///
/// Lifetime: a member of the main window, which outlives it. Hidden until it is shown; closing hides it.
class PluginWindow : public Gtk::Window {
public:
    struct ModelColumns : public Gtk::TreeModel::ColumnRecord {
        ModelColumns();

        Gtk::TreeModelColumn<Glib::ustring> name;         ///< Of a collection on top, of a kind below it.
        Gtk::TreeModelColumn<Glib::ustring> description;  ///< Tooltip of the row, as plain text.
    };

    explicit PluginWindow(vkWindow* main);

    /// Fills the tree from QzManager::GetPlugins(). Called once; the list must be shorter than 65,536.
    void setManager();

    /// Places a new plug-in of the row's kind on the canvas. A collection's row and no row do nothing.
    void select(Gtk::TreeIter& row);

    void on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* column);
    void on_button_add();

private:
    struct Collection;

    void pack();
    void begin(const QzKind& kind, Collection& collection);
    void append(const QzKind& kind, const Collection& collection);
    bool tellRow(int x, int y, bool isByKey, const Glib::RefPtr<Gtk::Tooltip>& tooltip);

    vkWindow* mainWindow;
    ModelColumns columns;
    Gtk::VBox box{false, 0};
    Gtk::ScrolledWindow scroller;
    Gtk::TreeView treeView;
    Glib::RefPtr<Gtk::TreeStore> tree;
    Gtk::HButtonBox buttonBox;
    Gtk::Button addButton{"Add"};
};
