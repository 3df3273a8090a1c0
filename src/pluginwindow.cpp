#include "pluginwindow.h"

#include "QzManager.h"
#include "plainText.h"
#include "summary.h"
#include "vkWindow.h"

#include <gtkmm/tooltip.h>

#include <cstdint>
#include <fstream>

// The collection whose rows are being appended.
struct PluginWindow::Collection {
    std::string name;
    Gtk::TreeIter row;
    Summary summary;
};

PluginWindow::ModelColumns::ModelColumns() {
    add(name);
    add(description);
}

PluginWindow::PluginWindow(vkWindow* main) : TreeDialog(main, "Plugin collection") {
    button.signal_clicked().connect(sigc::mem_fun(*this, &PluginWindow::on_button_add));
    tree = Gtk::TreeStore::create(columns);
    showTree("Plugin", columns.name);
    treeView.signal_row_activated().connect(sigc::mem_fun(*this, &PluginWindow::on_treeview_row_activated));
    // Runs before the toolkit's own handler, which would read the description as markup.
    treeView.signal_query_tooltip().connect(sigc::mem_fun(*this, &PluginWindow::showTooltip), false);
    treeView.set_tooltip_column(columns.description.index());
    show_all_children();
}

void PluginWindow::setManager() {
    const auto& kinds = QzManager::GetPlugins();
    Collection collection;
    // Deliberate: a 16-bit counter, like the kind numbers of the library.
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
    const auto row = appendRow(collection.row);
    row->set_value(columns.name, Glib::ustring(kind.name));
    const auto description = collection.summary.kinds.find(kind.name);
    if (description != collection.summary.kinds.end()) {
        row->set_value(columns.description, Glib::ustring(description->second));
    }
}

bool PluginWindow::showTooltip(int x, int y, bool isByKey, const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
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
    if (isEntry(row)) {
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
