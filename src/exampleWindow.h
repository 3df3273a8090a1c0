#pragma once

#include "TreeDialog.h"

struct QzExample;

/// The example documents of the library, in groups.
class ExampleWindow : public TreeDialog {
public:
    struct ModelColumns : public Gtk::TreeModel::ColumnRecord {
        ModelColumns();

        Gtk::TreeModelColumn<Glib::ustring> name;       ///< Of a group at the top level, of a document below it.
        Gtk::TreeModelColumn<Glib::ustring> directory;  ///< Of the document; not shown.
    };

    explicit ExampleWindow(vkWindow* main);

    /// Fills the tree from QzManager::GetExamples(). Called once; the list must be shorter than 65,536.
    void setManager();

    /// Opens the row's document in the main window. Does nothing for the row of a group, or for no row.
    void select(Gtk::TreeIter& row);

    void on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* column);
    void on_button_open();

private:
    void append(const QzExample& example, const Gtk::TreeIter& group);

    ModelColumns columns;
};
