#include "TreeDialog.h"

TreeDialog::TreeDialog(vkWindow* mainWindow, const Glib::ustring& title) : mainWindow(mainWindow) {
    set_title(title);
    set_border_width(5);
    set_default_size(400, 200);
    pack();
}

void TreeDialog::pack() {
    add(box);
    scroller.add(treeView);
    scroller.set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
    box.pack_start(scroller, Gtk::PACK_EXPAND_WIDGET);
    box.pack_start(buttonBox, Gtk::PACK_SHRINK);
    buttonBox.pack_start(button, Gtk::PACK_SHRINK);
    buttonBox.set_border_width(5);
    buttonBox.set_layout(Gtk::BUTTONBOX_END);
}

void TreeDialog::showTree(const Glib::ustring& heading, const Gtk::TreeModelColumn<Glib::ustring>& column) {
    treeView.set_model(tree);
    treeView.set_reorderable(false);
    treeView.append_column(heading, column);
}

Gtk::TreeIter TreeDialog::appendRow(const Gtk::TreeIter& parent) {
    return parent ? tree->append(parent->children()) : tree->append();
}

bool TreeDialog::isEntry(const Gtk::TreeIter& row) const {
    return row && tree->iter_depth(row) != 0;
}
