#pragma once

#include <gtkmm/button.h>
#include <gtkmm/container.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

#include <stdexcept>
#include <string>
#include <vector>

/// All widgets of a type below a container, from the first child on.
template <typename T>
std::vector<T*> widgetsIn(Gtk::Container& container) {
    std::vector<T*> found;
    for (Gtk::Widget* child : container.get_children()) {
        if (auto* wanted = dynamic_cast<T*>(child)) {
            found.push_back(wanted);
        } else if (auto* inner = dynamic_cast<Gtk::Container*>(child)) {
            const auto below = widgetsIn<T>(*inner);
            found.insert(found.end(), below.begin(), below.end());
        }
    }
    return found;
}

/// @throws std::runtime_error if there is no button with that label.
inline Gtk::Button& buttonIn(Gtk::Container& container, const std::string& label) {
    for (Gtk::Button* button : widgetsIn<Gtk::Button>(container)) {
        if (button->get_label() == label) {
            return *button;
        }
    }
    throw std::runtime_error("no button " + label);
}

/// The tree of a dialog, as a user sees it.
class ListView {
public:
    explicit ListView(Gtk::Container& window) : view(widgetsIn<Gtk::TreeView>(window).at(0)) {}

    Gtk::TreeView& widget() { return *view; }

    /// Both columns of the model, "name|second", indented by two spaces for a child.
    std::vector<std::string> rows() const {
        std::vector<std::string> texts;
        for (const auto& row : view->get_model()->children()) {
            texts.push_back(textOf(row));
            for (const auto& child : row.children()) {
                texts.push_back("  " + textOf(child));
            }
        }
        return texts;
    }

    /// @param path as the toolkit writes it: "0:1" is the second child of the first row.
    void select(const std::string& path) {
        view->expand_all();
        view->get_selection()->select(Gtk::TreePath(path));
    }

    /// A double click, or Enter.
    void activate(const std::string& path) { view->row_activated(Gtk::TreePath(path), *view->get_column(0)); }

private:
    static std::string textOf(const Gtk::TreeRow& row) {
        Glib::ustring name;
        Glib::ustring second;
        row.get_value(0, name);
        row.get_value(1, second);
        return name.raw() + '|' + second.raw();
    }

    Gtk::TreeView* view;
};
