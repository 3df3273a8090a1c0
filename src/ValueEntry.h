#pragma once

#include "QzBase.h"

#include <gtkmm/entry.h>

#include <string>
#include <vector>

/// The entry of a row in the variables dialog. It holds any text; what the library tells of the input only helps to
/// write it: a tooltip, the choices by the key Down, a button that looks for a file.
class ValueEntry : public Gtk::Entry {
public:
    ValueEntry();

    /// Helps with this input from now on, in place of the one before.
    void assist(const QzBase::Input& input);

    /// As wide as its text, up to 60 characters, and never narrower than any entry.
    void fitToText();

private:
    void offer(const std::vector<std::string>& offered);
    void offerFiles(bool isFile);
    bool openChoices(GdkEventKey* event);
    bool isOffered(const Glib::ustring& key, const Gtk::TreeModel::const_iterator& row) const;
    void chooseFile(Gtk::EntryIconPosition position, const GdkEventButton* event);

    std::vector<std::string> choices;
};
