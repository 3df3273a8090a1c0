#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/buttonbox.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/treestore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

class vkWindow;

/// A window with a tree of two levels and the button "Add". The derived class owns the column record, creates `tree`
/// from it, and connects the signals of `button` and `treeView`.
///
/// Lifetime: a member of the main window, which outlives it. Hidden until shown; closing hides it.
class TreeDialog : public Gtk::Window {
protected:
    TreeDialog(vkWindow* mainWindow, const Glib::ustring& title);

    /// Shows `tree`, with one view column.
    void showTree(const Glib::ustring& heading, const Gtk::TreeModelColumn<Glib::ustring>& column);

    /// A new row below `parent`; a top-level row if that is none.
    Gtk::TreeIter appendRow(const Gtk::TreeIter& parent);

    /// The row names something that can be chosen, not a group. False for no row.
    bool isEntry(const Gtk::TreeIter& row) const;

    vkWindow* mainWindow;
    Gtk::VBox box{false, 0};
    Gtk::ScrolledWindow scroller;
    Gtk::TreeView treeView;
    Glib::RefPtr<Gtk::TreeStore> tree;
    Gtk::HButtonBox buttonBox;
    Gtk::Button button{"Add"};  // Deliberate: the examples have the same label, though theirs opens a document.

private:
    void pack();
};
