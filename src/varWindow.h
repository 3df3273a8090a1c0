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

/// The refresh button of one row: sends the row's value to the library, also when it is the value that it has.
class sendButton : public Gtk::ToolButton {
public:
    /// @param index position of the input in the plug-in's list, -1 for the row of the name.
    sendButton(std::shared_ptr<plugin*> node, Gtk::Entry* entry, int index, varWindow* dialog);

    void send();
    void tellOf(const Glib::ustring& row);  ///< What it does, by pointer and for a screen reader.

private:
    std::shared_ptr<plugin*> node;
    Gtk::Entry* entry;
    int index;
    varWindow* dialog;
};

/// Shows and edits one plug-in's name and the values of its inputs, as plain text that the library judges.
///
/// Lifetime: made by new, shown at once, deletes itself on "OK" and "Cancel". Closed by the window manager it is hidden
///           and stays. When the plug-in is gone, the buttons change nothing any more.
class varWindow : public Gtk::Window {
public:
    varWindow(vkWindow* main, plugin* edited);
    ~varWindow() override;

    /// One row for the name and one for each input.
    void createFields();

    /// Position of the row's input in the library's list; -1 when the input is gone.
    int inputOf(int row) const;

    /// Draws the node anew, with the ports and the wires that the library has.
    void redrawNode();

    /// Hands what was edited to the library, then redraws the node if it has changes that were not saved.
    void apply_changes();

    void on_apply();
    void on_ok();
    void exit();

    /// While a question is open, the dialog is not kept above it. Calls may be nested; each has its comeBack.
    void stepBack();
    void comeBack();

private:
    QzBase* object() const;  ///< Null when the plug-in is gone.
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
    Gtk::ScrolledWindow scroller;  ///< Around the fields where they are higher than the screen; else without a place.
    int openQuestions = 0;
    std::vector<Gtk::Entry*> valueEntries;  ///< Of the inputs' rows; position i is input i.
    Gtk::Entry* nameEntry = nullptr;
    std::shared_ptr<plugin*> node;                          ///< Leads to null when the node is gone.
    std::vector<std::string> inputNames;                    ///< Parallel to valueEntries: what the row was made for.
    std::map<const Gtk::Entry*, std::string> shownInstead;  ///< By entries that do not show the text that is stored.
};
