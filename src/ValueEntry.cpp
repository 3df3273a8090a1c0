#include "ValueEntry.h"

#include "plainText.h"
#include "question.h"

#include <gdk/gdkkeysyms.h>
#include <glibmm/convert.h>
#include <gtkmm/accelgroup.h>
#include <gtkmm/entrycompletion.h>
#include <gtkmm/filechooserdialog.h>
#include <gtkmm/liststore.h>

#include <algorithm>
#include <iostream>
#include <sstream>

namespace {

struct ChoiceColumns : public Gtk::TreeModel::ColumnRecord {
    ChoiceColumns() { add(text); }

    Gtk::TreeModelColumn<Glib::ustring> text;
};

/// The rest of the first line of the description with that prefix; empty if there is none.
std::string lineAfter(const std::string& description, const std::string& prefix) {
    std::istringstream lines(description);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(prefix)) {
            return line.substr(prefix.size());
        }
    }
    return {};
}

std::vector<std::string> choicesIn(const std::string& description) {
    std::vector<std::string> choices;
    const std::string separator = ", ";
    std::string rest = lineAfter(description, "Type: choice of ");
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(separator), rest.size());
        choices.push_back(rest.substr(0, end));
        rest.erase(0, end + separator.size());
    }
    return choices;
}

/// A press beside the open list closes it, and the toolkit then drops the press. Dispatched again, it also reaches the
/// widget below the pointer, so that one click on a button is enough.
void passPressOn(GtkWidget* list, GdkEvent* event, gpointer /*data*/) {
    GtkWidget* target = gtk_get_event_widget(event);
    const bool isBesideList = target != nullptr && gtk_widget_get_toplevel(target) != list;
    if (event->type == GDK_BUTTON_PRESS && isBesideList && gtk_widget_get_visible(list) == FALSE) {
        gtk_main_do_event(event);
    }
}

}  // namespace

ValueEntry::ValueEntry() {
    signal_key_press_event().connect(sigc::mem_fun(*this, &ValueEntry::openChoices), false);
    signal_changed().connect(sigc::mem_fun(*this, &ValueEntry::narrowChoices));
    signal_grab_notify().connect(sigc::mem_fun(*this, &ValueEntry::watchList));
    signal_icon_press().connect(sigc::mem_fun(*this, &ValueEntry::chooseFile));
}

void ValueEntry::assist(const QzBase::Input& input) {
    const bool isFed = input.source != nullptr;
    set_tooltip_text(plainText(input.description));
    offer(isFed ? std::vector<std::string>() : choicesIn(input.description));
    offerFiles(!isFed && lineAfter(input.description, "Type: file") == " to read");
    fitToText();
}

void ValueEntry::fitToText() {
    constexpr Glib::ustring::size_type maxCharacters = 60;
    constexpr int defaultWidth = 150;  // pixels, given by the toolkit to any entry
    const Glib::ustring text = get_text();
    const auto count = static_cast<int>(std::min(text.size(), maxCharacters));
    int width = 0;
    int height = 0;
    create_pango_layout(text.substr(0, maxCharacters))->get_pixel_size(width, height);
    const Pango::FontMetrics metrics = get_pango_context()->get_metrics(get_pango_context()->get_font_description());
    const int ofOne = std::max(metrics.get_approximate_char_width(), metrics.get_approximate_digit_width());
    const int characters = std::max(count, width * PANGO_SCALE / std::max(ofOne, 1) + 1);
    const bool isNarrow = width <= defaultWidth;
    set_width_chars(isNarrow ? -1 : std::min(characters, static_cast<int>(maxCharacters)));
}

void ValueEntry::offer(const std::vector<std::string>& offered) {
    choices = offered;
    if (choices.empty()) {
        gtk_entry_set_completion(gobj(), nullptr);
        return;
    }
    const ChoiceColumns columns;
    const auto list = Gtk::ListStore::create(columns);
    for (const std::string& choice : choices) {
        list->append()->set_value(columns.text, plainText(choice));
    }
    const auto completion = Gtk::EntryCompletion::create();
    completion->set_model(list);
    completion->set_text_column(columns.text);
    completion->set_minimum_key_length(0);
    completion->set_match_func(sigc::mem_fun(*this, &ValueEntry::isOffered));
    set_completion(completion);
}

// The choices that continue the text. Where none does, all of them; but after a whole choice was typed, no list is in
// the way of the dialog's buttons, unless the user asks for it.
bool ValueEntry::isOffered(const Glib::ustring& /*key*/, const Gtk::TreeModel::const_iterator& row) const {
    const Glib::ustring text = get_text();
    const Glib::ustring typed = text.casefold();
    const auto continues = [&typed](const Glib::ustring& choice) {
        const Glib::ustring folded = choice.casefold();
        return folded != typed && folded.raw().starts_with(typed.raw());
    };
    Glib::ustring choice;
    row->get_value(0, choice);
    if (continues(choice)) {
        return true;
    }
    const bool isComplete = std::find(choices.begin(), choices.end(), text.raw()) != choices.end();
    return (offersAll || !isComplete) && std::none_of(choices.begin(), choices.end(), continues);
}

void ValueEntry::narrowChoices() {
    offersAll = false;
}

// The toolkit gives no access to the window of its list, but the open list holds the grab.
void ValueEntry::watchList(bool wasShadowed) {
    GtkWidget* list = gtk_grab_get_current();
    const bool isList = list != nullptr && GTK_IS_WINDOW(list) &&
                        gtk_window_get_type_hint(GTK_WINDOW(list)) == GDK_WINDOW_TYPE_HINT_COMBO;
    if (wasShadowed || !isList || choices.empty() || !has_focus()) {
        return;
    }
    g_signal_handlers_disconnect_by_func(list, reinterpret_cast<gpointer>(&passPressOn), nullptr);
    g_signal_connect(list, "event-after", G_CALLBACK(&passPressOn), nullptr);
}

bool ValueEntry::openChoices(GdkEventKey* event) {
    const bool isDown = event->keyval == GDK_KEY_Down || event->keyval == GDK_KEY_KP_Down;
    const bool isAlone = (event->state & Gtk::AccelGroup::get_default_mod_mask()) == 0;
    const bool isOpen = gtk_grab_get_current() != nullptr;  // Then the key moves down in the list.
    if (choices.empty() || !isDown || !isAlone || isOpen) {
        return false;
    }
    // The toolkit opens its list only after the text has changed.
    g_signal_emit_by_name(gobj(), "changed");
    offersAll = true;
    return true;
}

void ValueEntry::offerFiles(bool isFile) {
    if (!isFile) {
        unset_icon(Gtk::ENTRY_ICON_SECONDARY);
        return;
    }
    set_icon_from_icon_name("document-open", Gtk::ENTRY_ICON_SECONDARY);
    set_icon_tooltip_text("Choose a file", Gtk::ENTRY_ICON_SECONDARY);
}

void ValueEntry::chooseFile(Gtk::EntryIconPosition /*position*/, const GdkEventButton* /*event*/) {
    const KeepAboveSuspension suspension;
    Gtk::FileChooserDialog chooser("Choose a file", Gtk::FILE_CHOOSER_ACTION_OPEN);
    if (auto* dialog = dynamic_cast<Gtk::Window*>(get_toplevel())) {
        chooser.set_transient_for(*dialog);
    }
    chooser.add_button("Cancel", Gtk::RESPONSE_CANCEL);
    chooser.add_button("Open", Gtk::RESPONSE_OK);
    chooser.set_default_response(Gtk::RESPONSE_OK);
    if (chooser.run() != Gtk::RESPONSE_OK) {
        return;
    }
    try {
        set_text(Glib::filename_to_utf8(chooser.get_filename()));
    } catch (const Glib::Error& failure) {
        std::cerr << "The file cannot be named here: " << failure.what().raw() << std::endl;
    }
}
