#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/toolbutton.h>
#include <gtkmm/window.h>

#include "QzBase.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class plugin;
class varWindow;
class vkWindow;

/// The refresh button of one row: sends the row's value to the library, even if it has not changed.
class sendButton : public Gtk::ToolButton {
public:
    /// @param index position of the input in the plug-in's list, -1 for the row of the name.
    sendButton(std::shared_ptr<plugin*> node, Gtk::Entry* entry, int index, varWindow* dialog);

    void send();
    void describe(const Glib::ustring& row);  ///< Sets the tooltip and the name for screen readers.

private:
    std::shared_ptr<plugin*> node;
    Gtk::Entry* entry;
    int index;
    varWindow* dialog;
};

/// Shows and edits the name of one plug-in and the values of its inputs, as plain text that the library validates.
///
/// Lifetime: created by new, shown at once, deletes itself on "OK" and "Cancel". If the window manager closes it, it is
///           only hidden. After the plug-in has been deleted, the buttons have no effect.
class varWindow : public Gtk::Window {
public:
    varWindow(vkWindow* main, plugin* edited);
    ~varWindow() override;

    /// One row for the name and one for each input.
    void createFields();

    /// Position of the row's input in the library's list; -1 if the input no longer exists.
    int inputOf(int row) const;

    /// Redraws the node with the library's current ports and wires.
    void redrawNode();

    /// Sends the edited values to the library, then redraws the node if it has unsaved changes.
    void apply_changes();

    void on_apply();
    void on_ok();
    void exit();

    /// While a question is open, the dialog must not be kept above it. Calls nest: each one needs its resumeKeepAbove.
    void suspendKeepAbove();
    void resumeKeepAbove();

private:
    QzBase* object() const;  ///< Null once the plug-in has been deleted.
    void buildButtons();
    void addRow(const Glib::ustring& label, Gtk::Entry& entry, int index);
    void addSendButton(const Glib::ustring& label, Gtk::Entry& entry, int index);
    void show(Gtk::Entry& entry, const QzBase::Input& input);
    void setText(Gtk::Entry& entry, const Glib::ustring& text, const std::string& stored);
    bool isEdited(const Gtk::Entry& entry, const std::string& stored) const;
    void fitToScreen();
    void removeRows();
    void updateRows();
    void applyName();
    void applyValues();

    vkWindow* mainWindow;
    Gtk::HBox fieldsRow{false, 0};
    Gtk::HBox buttonRow{false, 0};
    Gtk::VBox labelColumn{false, 0};
    Gtk::VBox entryColumn{false, 0};
    Gtk::VBox sendColumn{false, 0};
    Gtk::VBox outerBox{false, 0};
    Gtk::ScrolledWindow scroller;  ///< Contains the fields if they are higher than the screen; else not in the window.
    int openQuestions = 0;
    std::vector<Gtk::Entry*> valueEntries;  ///< One per input, in the order of the rows.
    Gtk::Entry* nameEntry = nullptr;
    std::shared_ptr<plugin*> node;                          ///< Points to null once the node has been deleted.
    std::vector<std::string> inputNames;                    ///< Parallel to valueEntries: the input of the row.
    std::map<const Gtk::Entry*, std::string> shownInstead;  ///< Text of each entry that cannot show the stored one.
};
