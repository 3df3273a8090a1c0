#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/buttonbox.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/treestore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

struct QzExample;
class vkWindow;

/// The examples that the library knows of, in groups.
///
/// Lifetime: a member of the main window, which outlives it. Hidden until it is shown; closing hides it.
class ExampleWindow : public Gtk::Window {
public:
    struct ModelColumns : public Gtk::TreeModel::ColumnRecord {
        ModelColumns();

        Gtk::TreeModelColumn<Glib::ustring> name;       ///< Of a group on top, of a document below it.
        Gtk::TreeModelColumn<Glib::ustring> directory;  ///< Folder of the document; not shown.
    };

    explicit ExampleWindow(vkWindow* main);

    /// Fills the tree from QzManager::GetExamples(). Called once; the list must be shorter than 65,536.
    void setManager();

    /// Opens the row's document in the main window. A group's row and no row do nothing.
    void select(Gtk::TreeIter& row);

    void on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* column);
    void on_button_open();

private:
    void pack();
    void append(const QzExample& example, const Gtk::TreeIter& group);

    vkWindow* mainWindow;
    ModelColumns columns;
    Gtk::VBox box{false, 0};
    Gtk::ScrolledWindow scroller;
    Gtk::TreeView treeView;
    Glib::RefPtr<Gtk::TreeStore> tree;
    Gtk::HButtonBox buttonBox;
    Gtk::Button button{"Add"};  // Deliberate: the same word as in the plug-in collection, though it opens a document.
};
