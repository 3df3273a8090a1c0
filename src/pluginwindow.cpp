#include "pluginwindow.h"

#include "QzManager.h"
#include "plainText.h"
#include "summary.h"
#include "vkWindow.h"

#include <gtkmm/tooltip.h>

#include <cstdint>
#include <fstream>

// The collection whose rows are being made.
struct PluginWindow::Collection {
    std::string name;
    Gtk::TreeIter row;
    Summary summary;
};

PluginWindow::ModelColumns::ModelColumns() {
    add(name);
    add(description);
}

PluginWindow::PluginWindow(vkWindow* main) : mainWindow(main) {
    set_title("Plugin collection");
    set_border_width(5);
    set_default_size(400, 200);
    pack();
    addButton.signal_clicked().connect(sigc::mem_fun(*this, &PluginWindow::on_button_add));
    tree = Gtk::TreeStore::create(columns);
    treeView.set_model(tree);
    treeView.set_reorderable(false);
    treeView.append_column("Plugin", columns.name);
    treeView.signal_row_activated().connect(sigc::mem_fun(*this, &PluginWindow::on_treeview_row_activated));
    // Before the toolkit's own handler, which takes the text for markup.
    treeView.signal_query_tooltip().connect(sigc::mem_fun(*this, &PluginWindow::tellRow), false);
    treeView.set_tooltip_column(columns.description.index());
    show_all_children();
}

void PluginWindow::pack() {
    add(box);
    scroller.add(treeView);
    scroller.set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
    box.pack_start(scroller, Gtk::PACK_EXPAND_WIDGET);
    box.pack_start(buttonBox, Gtk::PACK_SHRINK);
    buttonBox.pack_start(addButton, Gtk::PACK_SHRINK);
    buttonBox.set_border_width(5);
    buttonBox.set_layout(Gtk::BUTTONBOX_END);
}

void PluginWindow::setManager() {
    const auto& kinds = QzManager::GetPlugins();
    Collection collection;
    // A kind number has 16 bits, in the library as here.
    // NOLINTNEXTLINE(bugprone-too-small-loop-variable,modernize-loop-convert)
    for (std::uint16_t number = 0; number < kinds.size(); ++number) {
        const QzKind& kind = kinds[number];
        if (kind.group != collection.name) {
            begin(kind, collection);
        }
        append(kind, collection);
    }
}

void PluginWindow::begin(const QzKind& kind, Collection& collection) {
    collection.name = kind.group;
    collection.row = tree->append();
    collection.row->set_value(columns.name, Glib::ustring(kind.group));
    collection.summary = {};
    std::ifstream file(kind.directory + "plugin_summary.txt");
    if (!file) {
        return;
    }
    collection.summary = readSummary(file);
    if (collection.summary.collection) {
        collection.row->set_value(columns.description, Glib::ustring(*collection.summary.collection));
    }
}

void PluginWindow::append(const QzKind& kind, const Collection& collection) {
    const auto row = collection.row ? tree->append(collection.row->children()) : tree->append();
    row->set_value(columns.name, Glib::ustring(kind.name));
    const auto description = collection.summary.kinds.find(kind.name);
    if (description != collection.summary.kinds.end()) {
        row->set_value(columns.description, Glib::ustring(description->second));
    }
}

bool PluginWindow::tellRow(int x, int y, bool isByKey, const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
    g_signal_stop_emission_by_name(treeView.gobj(), "query-tooltip");
    Gtk::TreePath path;
    if (!treeView.get_tooltip_context_path(x, y, isByKey, path)) {
        return false;
    }
    const Glib::ustring text = tree->get_iter(path)->get_value(columns.description);
    tooltip->set_text(plainText(text));
    treeView.set_tooltip_row(tooltip, path);
    return !text.empty();
}

void PluginWindow::select(Gtk::TreeIter& row) {
    if (row && tree->iter_depth(row) != 0) {
        mainWindow->addPlugin(nullptr, row->get_value(columns.name));
    }
}

void PluginWindow::on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* /*column*/) {
    auto row = tree->get_iter(path);
    select(row);
}

void PluginWindow::on_button_add() {
    auto row = treeView.get_selection()->get_selected();
    select(row);
}
