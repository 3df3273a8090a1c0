#include "RandomEdits.h"

#include "Widgets.h"
#include "varWindow.h"

#include <QzManager.h>
#include <gtkmm/entry.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int maxNodes = 9;
constexpr std::size_t maxDialogs = 3;
constexpr int columns = 4;
constexpr double cellWidth = 230;
constexpr double cellHeight = 180;
constexpr double left = 20;
constexpr double top = 560;

const std::vector<std::string> someNames = {"Adder", "Number",  "Alpha", "Zulu",       "Mike",       "Adder1",
                                            "x2",    "x\u00B2", "input", "\uFF49nput", "\uFF21lpha", "Twins"};

std::vector<std::string> portsIn(const NameMap<unsigned short>& index) {
    std::vector<std::string> names;
    for (const auto& [name, position] : index) {
        names.push_back(name);
    }
    return names;
}

}  // namespace

RandomEdits::RandomEdits() {
    restart(script() + "kind Twins Data /kinds/data/\n in input 5\n in x2 6\n in x\u00B2 7\n out x\u00B2\n out x2\n");
    showWindow();
    scrollTo({0, top - 10});
}

RandomEdits::~RandomEdits() {
    for (const OpenDialog& open : dialogs) {
        delete open.dialog;
    }
}

void RandomEdits::edit() {
    switch (model.nodes.empty() ? 0 : pick(18)) {
        case 0:
        case 1:
            return add();
        case 2:
            return remove();
        case 3:
            return rename();
        case 4:
            return collapse();
        case 5:
            return setStart();
        case 6:
            return move();
        case 7:
        case 8:
            return pullOff();
        case 9:
            return openDialog();
        case 10:
        case 11:
            return useDialog();
        case 12:
        case 13:
            return reach();
        case 14:
            return click(anyPlace());
        default:
            return wire();
    }
}

CanvasPoint RandomEdits::freeCell() {
    for (int cell = pick(12);; cell = (cell + 5) % 12) {
        const CanvasPoint place{left + cellWidth * (cell % columns), top + cellHeight * (cell / columns)};
        const bool isFree = std::none_of(model.nodes.begin(), model.nodes.end(), [&](const auto& entry) {
            return entry.second.x == place.x && entry.second.y == place.y;
        });
        if (isFree) {
            return place;
        }
    }
}

// Half of them overlap another box, some exactly.
CanvasPoint RandomEdits::anyCell() {
    if (model.nodes.empty() || pick(2) == 0) {
        return freeCell();
    }
    const Model::Node& below = model.nodes.at(anyNode());
    const double shift = 7.0 * pick(12);
    return {std::min(below.x + shift, left + cellWidth * (columns - 1)),
            std::min(below.y + shift, top + cellHeight * 2)};
}

CanvasPoint RandomEdits::anyPlace() {
    const int node = anyNode();
    const plugin& drawn = this->node(nameOf(node));
    const int side = pick(3);
    if (side == 0 && !drawn.outputIndex.empty()) {
        return outputOf(nameOf(node), anyOf(drawn.outputIndex).first);
    }
    if (side == 1 && !drawn.inputIndex.empty()) {
        return inputOf(nameOf(node), anyOf(drawn.inputIndex).first);
    }
    return headOf(nameOf(node));
}

int RandomEdits::numberOf(plugin& node) {
    const auto found = std::find(manager->plugins.begin(), manager->plugins.end(), node.GetPlugin());
    return model.order.at(static_cast<std::size_t>(found - manager->plugins.begin()));
}

RandomEdits::Seen RandomEdits::seenAt(CanvasPoint place) {
    const auto isIn = [](const auto& texts, const auto& item) {
        return std::any_of(texts.begin(), texts.end(), [&](const auto& text) { return text.get() == item.get(); });
    };
    for (const auto& item : window->canvas.get_items_at(place.x, place.y, true)) {
        for (plugin* node : window->liveNodes()) {
            if (node->box.get() == item.get()) {
                return {Seen::Kind::Box, numberOf(*node), ""};
            }
            const bool isInput = isIn(node->inputTexts, item);
            if (isInput || isIn(node->outputTexts, item)) {
                return {isInput ? Seen::Kind::Input : Seen::Kind::Output, numberOf(*node),
                        propertyOf<Glib::ustring>(item, "text")};
            }
        }
    }
    return {};
}

void RandomEdits::pull(CanvasPoint from, CanvasPoint to) {
    const Seen start = seenAt(from);
    if (start.kind == Seen::Kind::Box) {
        const Model::Node& moved = model.nodes.at(start.node);
        to = isInView({moved.x + to.x - from.x, moved.y + to.y - from.y}) ? to : from;
    }
    press(from);
    moveTo({std::round((from.x + to.x) / 2), std::round((from.y + to.y) / 2)});
    moveTo(to);
    const Seen end = seenAt(to);
    release();
    Model::Port source{start.node, start.port};
    if (start.kind == Seen::Kind::Box) {
        selected = start.node;
        looksSelected = true;
        model.nodes.at(selected).x += to.x - from.x;
        model.nodes.at(selected).y += to.y - from.y;
        return;
    }
    if (start.kind == Seen::Kind::Input) {
        const auto fed = model.sources.find(source);
        if (fed == model.sources.end()) {
            return;
        }
        source = fed->second;
        model.unwire(start.node, start.port);
    }
    if (start.kind != Seen::Kind::Nothing && end.kind == Seen::Kind::Input) {
        model.wire(source.first, source.second, end.node, end.port);
    }
}

bool RandomEdits::isInView(CanvasPoint corner) {
    return corner.x >= left && corner.x <= left + cellWidth * (columns - 1) && corner.y >= top &&
           corner.y <= top + cellHeight * 2;
}

// From anything to anything.
void RandomEdits::reach() {
    const CanvasPoint from = anyPlace();
    pull(from, anyPlace());
}

int RandomEdits::select() {
    click(headOf(nameOf(anyNode())));
    return selected;
}

void RandomEdits::add() {
    if (model.nodes.size() == maxNodes) {
        return;
    }
    const std::string kind = anyOf(std::vector<std::string>{"Number", "Adder", "Splitter", "Note", "Twins", "Twins"});
    const CanvasPoint cell = anyCell();
    model.add(kind, cell.x, cell.y);
    addAt(kind, cell.x, cell.y);
}

void RandomEdits::remove() {
    const int node = select();
    if (node < 0) {
        return;
    }
    const CanvasPoint head = headOf(nameOf(node));
    if (pick(3) == 0 && seenAt(head).node == node && seenAt(head).kind == Seen::Kind::Box) {
        press(head);
    }
    window->on_del();
    release();
    model.remove(node);
    selected = -1;
}

void RandomEdits::rename() {
    const int node = anyNode();
    const std::string oldName = nameOf(node);
    const std::string newName = anyOf(someNames);
    if (pick(2) == 0) {
        select();
    }
    QzBase& renamed = object(oldName);
    renamed.SetName(newName);
    if (!model.isTaken(newName)) {
        model.nodes.at(node).name = newName;
        window->renamePlugin(oldName, newName);
    }
    plugin* drawn = window->nodeOf(oldName);
    drawn->draw();
    drawn->uniqueName = renamed.name;
    window->reconnect(drawn->uniqueName);
    looksSelected = looksSelected || node == selected;
}

void RandomEdits::openDialog() {
    const int node = dialogs.size() < maxDialogs ? select() : -1;
    if (node >= 0) {
        window->on_var();
        dialogs.push_back({window->lastDialog, node});
    }
}

// Writes a name and a value, if the dialog has rows for them.
void RandomEdits::writeInto(varWindow& dialog) {
    const auto entries = widgetsIn<Gtk::Entry>(dialog);
    if (pick(2) == 0 && !entries.empty()) {
        entries.front()->set_text(anyOf(someNames));
    }
    if (pick(2) == 0 && entries.size() > 1 && entries[1]->get_editable()) {
        entries[1]->set_text(std::to_string(pick(1000)));
    }
}

// Takes over all rows, including those that show outdated values, but not those that showed a source.
void RandomEdits::take(const OpenDialog& open) {
    const auto found = model.nodes.find(open.node);
    if (found == model.nodes.end()) {
        return;
    }
    Model::Node& node = found->second;
    const auto entries = widgetsIn<Gtk::Entry>(*open.dialog);
    const std::string name = entries.at(0)->get_text();
    if (!model.isTaken(name)) {
        node.name = name;
    }
    for (std::size_t i = 0; i < node.inputs.size(); ++i) {
        if (model.sources.count({open.node, node.inputs[i]}) == 0 && entries.at(i + 1)->get_editable()) {
            node.values[node.inputs[i]] = entries.at(i + 1)->get_text();
        }
    }
}

void RandomEdits::useDialog() {
    if (dialogs.empty()) {
        return;
    }
    const auto open = dialogs.begin() + pick(static_cast<int>(dialogs.size()));
    const std::string label = anyOf(std::vector<std::string>{"OK", "Apply", "Apply", "Cancel"});
    if (label != "Cancel") {
        writeInto(*open->dialog);
        take(*open);
    }
    buttonIn(*open->dialog, label).clicked();
    if (label != "Cancel" && open->node == selected && node(nameOf(selected)).changed) {
        looksSelected = true;  // Redrawn.
    }
    if (label != "Apply") {
        dialogs.erase(open);
    }
}

void RandomEdits::collapse() {
    const int node = select();
    if (node < 0) {
        return;
    }
    window->on_collapse();
    model.nodes.at(node).isExpanded = !model.nodes.at(node).isExpanded;
    looksSelected = false;
}

void RandomEdits::setStart() {
    const int node = select();
    if (node < 0) {
        return;
    }
    looksSelected = looksSelected || model.order.front() != node;
    window->on_setstart();
    model.setStart(node);
}

void RandomEdits::move() {
    const int node = anyNode();
    const CanvasPoint cell = anyCell();
    const CanvasPoint head = headOf(nameOf(node));
    const CanvasPoint corner = cornerOf(nameOf(node));
    pull(head, {head.x + cell.x - corner.x, head.y + cell.y - corner.y});
}

void RandomEdits::wire() {
    const int sender = anyNode();
    const int receiver = anyNode();
    const auto outputs = portsIn(node(nameOf(sender)).outputIndex);
    const auto inputs = portsIn(node(nameOf(receiver)).inputIndex);
    if (outputs.empty() || inputs.empty()) {
        return;
    }
    const std::string output = anyOf(outputs);
    const std::string input = anyOf(inputs);
    pull(outputOf(nameOf(sender), output), inputOf(nameOf(receiver), input));
}

void RandomEdits::pullOff() {
    if (model.sources.empty()) {
        return;
    }
    const auto [target, source] = anyOf(model.sources);
    // A collapsed node shows the ports that it had at its last redraw.
    if (node(nameOf(target.first)).inputIndex.count(target.second) == 0) {
        return;
    }
    const CanvasPoint place = inputOf(nameOf(target.first), target.second);
    const Seen seen = seenAt(place);
    if (seen.kind != Seen::Kind::Input || Model::Port(seen.node, seen.port) != target) {
        return pull(place, nowhere());
    }
    press(place);
    if (pick(4) == 0) {
        press(place, 1, GDK_2BUTTON_PRESS);
    }
    moveTo(nowhere());
    release();
    model.unwire(target.first, target.second);
}
