#include "exampleWindow.h"

#include "QzManager.h"
#include "vkWindow.h"

#include <cstdint>

ExampleWindow::ModelColumns::ModelColumns() {
    add(name);
    add(directory);
}

ExampleWindow::ExampleWindow(vkWindow* main) : TreeDialog(main, "Examples") {
    button.signal_clicked().connect(sigc::mem_fun(*this, &ExampleWindow::on_button_open));
    tree = Gtk::TreeStore::create(columns);
    showTree("Example", columns.name);
    treeView.signal_row_activated().connect(sigc::mem_fun(*this, &ExampleWindow::on_treeview_row_activated));
    show_all_children();
}

void ExampleWindow::setManager() {
    const auto& examples = QzManager::GetExamples();
    std::string groupName;
    Gtk::TreeIter group;
    // Deliberate: a 16-bit counter, as for the kinds.
    // NOLINTNEXTLINE(bugprone-too-small-loop-variable,modernize-loop-convert)
    for (std::uint16_t number = 0; number < examples.size(); ++number) {
        const QzExample& example = examples[number];
        if (example.group != groupName) {
            groupName = example.group;
            group = tree->append();
            group->set_value(columns.name, Glib::ustring(groupName));
        }
        append(example, group);
    }
}

void ExampleWindow::append(const QzExample& example, const Gtk::TreeIter& group) {
    const auto row = appendRow(group);
    row->set_value(columns.name, Glib::ustring(example.name));
    row->set_value(columns.directory, Glib::ustring(example.directory));
}

void ExampleWindow::select(Gtk::TreeIter& row) {
    if (isEntry(row)) {
        mainWindow->checkOpen(row->get_value(columns.directory) + '/' + row->get_value(columns.name));
    }
}

void ExampleWindow::on_treeview_row_activated(const Gtk::TreePath& path, Gtk::TreeViewColumn* /*column*/) {
    auto row = tree->get_iter(path);
    select(row);
}

void ExampleWindow::on_button_open() {
    auto row = treeView.get_selection()->get_selected();
    select(row);
}
