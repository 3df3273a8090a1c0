#pragma once

#include "TreeDialog.h"

struct QzKind;

/// The plug-in collection: every kind that the library offers, under the collection that provides it.
class PluginWindow : public TreeDialog {
public:
    struct ModelColumns : public Gtk::TreeModel::ColumnRecord {
        ModelColumns();

        Gtk::TreeModelColumn<Glib::ustring> name;         ///< Of a collection at the top level, of a kind below it.
        Gtk::TreeModelColumn<Glib::ustring> description;  ///< Tooltip of the row, as plain text.
    };

    explicit PluginWindow(vkWindow* main);

    /// Fills the tree from QzManager::GetPlugins(). Called once; the list must be shorter than 65,536.
    void setManager();

    /// Places a new plug-in of the row's kind on the canvas. Does nothing for the row of a collection, or for no row.
    void select(Gtk::TreeIter& row);

    void on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* column);
    void on_button_add();

private:
    struct Collection;

    void begin(const QzKind& kind, Collection& collection);
    void append(const QzKind& kind, const Collection& collection);
    bool showTooltip(int x, int y, bool isByKey, const Glib::RefPtr<Gtk::Tooltip>& tooltip);

    ModelColumns columns;
};
