#pragma once

#include "QzBase.h"

#include <gtkmm/entry.h>

#include <string>
#include <vector>

/// The entry of a row in the variables dialog. It accepts any text; the description of the input only helps to write
/// it: a tooltip, a list of choices, an icon that opens a file chooser.
class ValueEntry : public Gtk::Entry {
public:
    ValueEntry();

    /// Offers the help for this input, instead of the previous one's.
    void assist(const QzBase::Input& input);

    /// Makes the entry as wide as its text, up to 60 characters, but never narrower than the toolkit's default.
    void fitToText();

private:
    void offer(const std::vector<std::string>& offered);
    void offerFiles(bool isFile);
    bool openChoices(GdkEventKey* event);
    bool isOffered(const Glib::ustring& key, const Gtk::TreeModel::const_iterator& row) const;
    void narrowChoices();
    void watchList(bool wasShadowed);
    void chooseFile(Gtk::EntryIconPosition position, const GdkEventButton* event);

    std::vector<std::string> choices;
    bool offersAll = false;  ///< The user has opened the list by the key Down and not typed since.
};
