#pragma once

#include "DialogTest.h"
#include "varWindow.h"

#include <gtkmm/entry.h>
#include <gtkmm/label.h>

/// A variables dialog as a user sees it: rows of label, entry and refresh button.
class VariablesTest : public DialogTest {
protected:
    ~VariablesTest() override {
        for (varWindow* dialog : openDialogs()) {
            delete dialog;
        }
    }

    /// Selects the node and opens its dialog from the menu.
    varWindow& openFor(const std::string& name) {
        window->selectedItem = node(name).box;
        act("Var");
        return *window->lastDialog;
    }

    /// Adds a plug-in, clears the recorded calls and opens its dialog.
    varWindow& openNew(const std::string& kind) {
        const std::string name = add(kind).uniqueName;
        node(name).changed = false;
        recording::forgetCalls();
        return openFor(name);
    }

    static std::vector<varWindow*> openDialogs() {
        std::vector<varWindow*> dialogs;
        for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
            if (auto* dialog = dynamic_cast<varWindow*>(shown)) {
                dialogs.push_back(dialog);
            }
        }
        return dialogs;
    }

    /// @param number 0: labels, 1: entries, 2: refresh buttons.
    static std::vector<Gtk::Widget*> column(varWindow& dialog, std::size_t number) {
        auto& outerBox = dynamic_cast<Gtk::Box&>(*dialog.get_child());
        auto& fieldsRow = dynamic_cast<Gtk::Box&>(*outerBox.get_children().at(0));
        return dynamic_cast<Gtk::Box&>(*fieldsRow.get_children().at(number)).get_children();
    }

    static Gtk::Entry& entry(varWindow& dialog, std::size_t row) {
        return dynamic_cast<Gtk::Entry&>(*column(dialog, 1).at(row));
    }

    static Gtk::Button& refresh(varWindow& dialog, std::size_t row) {
        auto& button = dynamic_cast<sendButton&>(*column(dialog, 2).at(row));
        return dynamic_cast<Gtk::Button&>(*button.get_child());
    }

    /// "label: text" of each row.
    static std::vector<std::string> rows(varWindow& dialog) {
        std::vector<std::string> texts;
        for (std::size_t i = 0; i < column(dialog, 0).size(); ++i) {
            const auto& label = dynamic_cast<Gtk::Label&>(*column(dialog, 0).at(i));
            texts.push_back(label.get_text().raw() + ": " + entry(dialog, i).get_text().raw());
        }
        return texts;
    }

    static void press(varWindow& dialog, const std::string& label) { buttonIn(dialog, label).clicked(); }

    static void addInput(QzBase& object, const std::string& name, const std::string& value) {
        object.Inputs().push_back({name, "", value, nullptr, 0});
    }
};

/// Becomes true when the object is destroyed.
class Death {
public:
    explicit Death(sigc::trackable& mortal) : mortal(&mortal) {
        mortal.add_destroy_notify_callback(this, [](void* self) -> void* {
            static_cast<Death*>(self)->mortal = nullptr;
            return nullptr;
        });
    }
    ~Death() {
        if (mortal) {
            mortal->remove_destroy_notify_callback(this);
        }
    }
    Death(const Death&) = delete;
    Death& operator=(const Death&) = delete;

    explicit operator bool() const { return mortal == nullptr; }

private:
    sigc::trackable* mortal;
};
