#include "ValueEntry.h"
#include "plugin.h"
#include "varWindow.h"
#include "vkWindow.h"

#include <QzManager.h>
#include <atkmm/object.h>
#include <gdkmm/display.h>
#include <gdkmm/monitor.h>
#include <gtkmm/button.h>
#include <gtkmm/stock.h>

namespace {

// The current position of an input that was at `position` when its row was created; -1 if it no longer exists.
int positionOf(QzBase& object, const std::string& name, std::size_t position) {
    const auto& inputs = object.Inputs();
    const bool isInPlace = position < inputs.size() && inputs[position].name == name;
    return isInPlace ? static_cast<int>(position) : object.InputIndex(name);
}

void setValue(const plugin& node, QzBase& object, int input, const std::string& value) {
    QzManager* manager = object.GetManager();
    manager->SetInputValue(manager->IndexOf(node.uniqueName), input, value);
}

std::vector<std::string> portsOf(QzBase& object) {
    std::vector<std::string> names;
    for (const QzBase::Input& input : object.Inputs()) {
        names.push_back(input.name);
    }
    names.emplace_back();  // Separates inputs from outputs: every port has a name.
    for (const QzBase::Output& output : object.Outputs()) {
        names.push_back(output.name);
    }
    return names;
}

Glib::ustring nameOfSource(const QzBase::Input& input) {
    const auto& outputs = input.source->Outputs();
    const std::string output = input.sourceOutput < outputs.size() ? outputs[input.sourceOutput].name : std::string();
    return input.source->name + " " + output;
}

// Removing a widget does not delete it.
void deleteChildren(Gtk::Box& column) {
    for (Gtk::Widget* child : column.get_children()) {
        column.remove(*child);
        delete child;
    }
}

}  // namespace

sendButton::sendButton(std::shared_ptr<plugin*> node, Gtk::Entry* entry, int index, varWindow* dialog)
    : Gtk::ToolButton(Gtk::Stock::REFRESH), node(std::move(node)), entry(entry), index(index), dialog(dialog) {
    signal_clicked().connect(sigc::mem_fun(*this, &sendButton::send));
}

void sendButton::describe(const Glib::ustring& row) {
    const Glib::ustring purpose = index < 0 ? "Apply the new name" : "Send " + row + " to the library once more";
    set_tooltip_text(purpose);
    get_child()->get_accessible()->set_name(purpose);
}

void sendButton::send() {
    if (!*node) {
        return;
    }
    QzBase& object = *(*node)->GetPlugin();
    const std::string text = entry->get_text();
    if (index < 0) {
        if (text != object.GetName()) {
            dialog->on_apply();  // deletes this button
        }
        return;
    }
    const int input = dialog->inputOf(index);
    if (input < 0 || object.Inputs().at(static_cast<std::size_t>(input)).value != text) {
        dialog->on_apply();  // deletes this button
        return;
    }
    // Deliberate: sent although nothing has changed, so that the library evaluates the value again.
    const std::vector<std::string> formerPorts = portsOf(object);
    setValue(**node, object, input, text);
    if (portsOf(object) != formerPorts) {
        dialog->redrawNode();
    }
}

varWindow::varWindow(vkWindow* mainWindow, plugin* edited) : mainWindow(mainWindow), node(edited->handle()) {
    set_title(edited->uniqueName + " Variables");
    set_resizable(false);
    createFields();
    buildButtons();
    fieldsRow.add(labelColumn);
    fieldsRow.add(entryColumn);
    fieldsRow.add(sendColumn);
    outerBox.add(fieldsRow);
    outerBox.add(buttonRow);
    outerBox.show_all();
    fitToScreen();
    set_keep_above(true);
    add(outerBox);
    show_all();
    Gtk::Window::show();
}

varWindow::~varWindow() = default;

void varWindow::buildButtons() {
    const auto addButton = [this](const Glib::ustring& label, void (varWindow::*handler)()) {
        auto* button = Gtk::make_managed<Gtk::Button>(label);
        buttonRow.add(*button);
        button->signal_clicked().connect(sigc::mem_fun(*this, handler));
    };
    addButton("OK", &varWindow::on_ok);
    addButton("Apply", &varWindow::on_apply);
    addButton("Cancel", &varWindow::exit);
}

QzBase* varWindow::object() const {
    return *node ? (*node)->GetPlugin() : nullptr;
}

void varWindow::createFields() {
    valueEntries.clear();
    inputNames.clear();
    shownInstead.clear();
    QzBase* edited = object();
    if (!edited) {
        return;
    }
    nameEntry = Gtk::make_managed<ValueEntry>();
    setText(*nameEntry, edited->GetName(), edited->GetName());
    addRow("Name", *nameEntry, -1);
    for (std::size_t i = 0; i < edited->Inputs().size(); ++i) {
        const QzBase::Input& input = edited->Inputs()[i];
        auto* entry = Gtk::make_managed<ValueEntry>();
        valueEntries.push_back(entry);
        inputNames.push_back(input.name);
        show(*entry, input);
        addRow(input.name, *entry, static_cast<int>(i));
    }
}

void varWindow::addRow(const Glib::ustring& label, Gtk::Entry& entry, int index) {
    labelColumn.add(*Gtk::make_managed<Gtk::Label>(label));
    entryColumn.add(entry);
    addSendButton(label, entry, index);
}

void varWindow::addSendButton(const Glib::ustring& label, Gtk::Entry& entry, int index) {
    auto* button = Gtk::make_managed<sendButton>(node, &entry, index, this);
    button->describe(label);
    sendColumn.add(*button);
}

// The value of the input, or, if the input is connected, the name of its source, grey and read-only.
void varWindow::show(Gtk::Entry& entry, const QzBase::Input& input) {
    const bool isFed = input.source != nullptr;
    setText(entry, isFed ? nameOfSource(input) : Glib::ustring(input.value), input.value);
    entry.set_editable(!isFed);
    if (isFed) {
        entry.override_color(Gdk::RGBA("grey"), entry.get_state_flags());
    } else {
        entry.unset_color(entry.get_state_flags());
    }
    dynamic_cast<ValueEntry&>(entry).assist(input);
}

// An entry shows at most 65,534 characters, and none after a U+0000.
void varWindow::setText(Gtk::Entry& entry, const Glib::ustring& text, const std::string& stored) {
    entry.set_text(text);
    const std::string shown = entry.get_text();
    if (shown == stored) {
        shownInstead.erase(&entry);
    } else {
        shownInstead[&entry] = shown;
    }
}

// An entry that still shows the substitute for a stored text has not been edited.
bool varWindow::isEdited(const Gtk::Entry& entry, const std::string& stored) const {
    const std::string text = entry.get_text();
    const auto given = shownInstead.find(&entry);
    return text != stored && (given == shownInstead.end() || text != given->second);
}

int varWindow::inputOf(int row) const {
    QzBase* edited = object();
    const auto position = static_cast<std::size_t>(row);
    return edited && position < inputNames.size() ? positionOf(*edited, inputNames[position], position) : -1;
}

void varWindow::apply_changes() {
    if (!object()) {
        return;
    }
    applyName();
    applyValues();
    // Deliberate: redraws as long as anything is unsaved, whether or not this call has changed something.
    if ((*node)->changed) {
        redrawNode();
    }
}

void varWindow::applyName() {
    QzBase& edited = *object();
    const std::string oldName = edited.GetName();
    if (!nameEntry || !isEdited(*nameEntry, oldName)) {
        return;
    }
    edited.SetName(nameEntry->get_text());
    (*node)->changed = true;
    // The library may refuse the name; the maps follow the name that it keeps.
    if (edited.GetName() != oldName) {
        mainWindow->renamePlugin(oldName, edited.GetName());
        (*node)->uniqueName = edited.GetName();
    }
}

void varWindow::applyValues() {
    QzBase& edited = *object();
    for (std::size_t i = 0; i < valueEntries.size(); ++i) {
        // Setting the previous value may have moved or removed the inputs that follow it.
        const int position = inputOf(static_cast<int>(i));
        if (position < 0) {
            continue;
        }
        const QzBase::Input& input = edited.Inputs().at(static_cast<std::size_t>(position));
        if (!input.source && isEdited(*valueEntries[i], input.value)) {
            setValue(**node, edited, position, valueEntries[i]->get_text());
            (*node)->changed = true;
        }
    }
}

void varWindow::redrawNode() {
    plugin& drawn = **node;
    QzBase& edited = *object();
    drawn.draw();
    drawn.uniqueName = edited.GetName();
    mainWindow->reconnect(drawn.uniqueName);
}

void varWindow::on_apply() {
    const std::size_t labels = labelColumn.get_children().size();
    apply_changes();
    if (!object()) {
        return;
    }
    // Deliberate: the label "Name" counts too, so that all rows are created anew unless the number of inputs has grown
    // by exactly one.
    if (labels != object()->Inputs().size()) {
        removeRows();
        createFields();
    } else {
        updateRows();
    }
    outerBox.show_all();
    fitToScreen();
    show_all();
    Gtk::Window::show();
}

// The window is as high as its rows request, up to the height of the screen without the buttons and the frame.
void varWindow::fitToScreen() {
    const auto screenHeight = [this] {
        Gdk::Rectangle area;
        const auto display = mainWindow->get_display();
        const auto shown = mainWindow->get_window();
        (shown ? display->get_monitor_at_window(shown) : display->get_monitor(0))->get_workarea(area);
        return area.get_height();
    };
    const auto heightOf = [](const Gtk::Widget& widget) {
        int minimum = 0;
        int natural = 0;
        widget.get_preferred_height(minimum, natural);
        return natural;
    };
    constexpr int frame = 60;
    const int maxHeight = screenHeight() - heightOf(buttonRow) - frame;
    const bool isTooHigh = heightOf(fieldsRow) > maxHeight;
    const bool isScrolled = scroller.get_parent() != nullptr;
    if (isTooHigh && !isScrolled) {
        outerBox.remove(fieldsRow);
        scroller.add(fieldsRow);
        outerBox.add(scroller);
        outerBox.reorder_child(scroller, 0);
    } else if (!isTooHigh && isScrolled) {
        outerBox.remove(scroller);
        scroller.remove();
        outerBox.add(fieldsRow);
        outerBox.reorder_child(fieldsRow, 0);
    }
    scroller.set_policy(Gtk::POLICY_NEVER, Gtk::POLICY_AUTOMATIC);
    scroller.set_overlay_scrolling(false);
    scroller.set_min_content_height(isTooHigh ? maxHeight : -1);
}

void varWindow::suspendKeepAbove() {
    ++openQuestions;
    set_keep_above(false);
}

void varWindow::resumeKeepAbove() {
    if (openQuestions > 0 && --openQuestions == 0) {
        set_keep_above(true);
    }
}

void varWindow::removeRows() {
    deleteChildren(labelColumn);
    deleteChildren(entryColumn);
    deleteChildren(sendColumn);
    nameEntry = nullptr;
}

// Every row, from the first one on, is reused for the input at its position: the row of the name now shows the first
// input. A row for the name returns when the dialog is reopened or the number of inputs changes.
void varWindow::updateRows() {
    const auto labels = labelColumn.get_children();
    const auto entries = entryColumn.get_children();
    deleteChildren(sendColumn);
    nameEntry = nullptr;
    valueEntries.clear();
    inputNames.clear();
    for (std::size_t k = 0; k < labels.size(); ++k) {
        const QzBase::Input& input = object()->Inputs()[k];
        auto& label = dynamic_cast<Gtk::Label&>(*labels[k]);
        auto& entry = dynamic_cast<Gtk::Entry&>(*entries[k]);
        label.set_text(input.name);
        show(entry, input);
        valueEntries.push_back(&entry);
        inputNames.push_back(input.name);
        addSendButton(input.name, entry, static_cast<int>(k));
    }
}

void varWindow::on_ok() {
    apply_changes();
    delete this;
}

void varWindow::exit() {
    delete this;
}

void vkWindow::on_var() {
    if (plugin* node = selectedNode()) {
        lastDialog = new varWindow(this, node);
    }
}
