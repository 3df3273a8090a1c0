#include "HandsTest.h"
#include "Model.h"
#include "Widgets.h"
#include "varWindow.h"

#include <QzManager.h>
#include <gtkmm/entry.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <set>

namespace {

constexpr int editsEach = 2000;
constexpr int mostNodes = 9;
constexpr std::size_t mostDialogs = 3;
constexpr int columns = 4;
constexpr double cellWidth = 230;
constexpr double cellHeight = 180;
constexpr double left = 20;
constexpr double top = 560;

/// Edits by hand and by the menus' actions, at random, beside a model of what must come of them.
class RandomEdits : public HandsTest, public testing::WithParamInterface<unsigned> {
protected:
    ~RandomEdits() override {
        for (const OpenDialog& open : dialogs) {
            delete open.dialog;
        }
    }

    void edit() {
        switch (model.nodes.empty() ? 0 : pick(15)) {
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
            default:
                return wire();
        }
    }

    void compare();

private:
    /// A variables dialog, and the node that it was opened for, which may be gone.
    struct OpenDialog {
        varWindow* dialog;
        int node;
    };

    int pick(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
    template <typename Container>
    auto anyOf(const Container& container) {
        return *std::next(container.begin(), pick(static_cast<int>(container.size())));
    }
    int anyNode() { return anyOf(model.nodes).first; }
    const std::string& nameOf(int node) const { return model.nodes.at(node).name; }

    CanvasPoint freeCell();
    void add();
    void remove();
    void rename();
    void openDialog();
    void useDialog();
    void writeInto(varWindow& dialog);
    void take(const OpenDialog& open);
    void collapse();
    void setStart();
    void move();
    void wire();
    void pullOff();
    void selectBox(int node) { clickOn(headOf(nameOf(node))); }
    void compareNode(int node, QzBase& object);
    void compareWires();

    std::mt19937 random{GetParam()};
    Model model;
    std::vector<OpenDialog> dialogs;
};

const std::vector<std::string> someNames = {"Adder", "Number", "Alpha", "Zulu", "Mike", "Adder1"};

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

void RandomEdits::add() {
    if (model.nodes.size() == mostNodes) {
        return;
    }
    const std::string kind = anyOf(std::vector<std::string>{"Number", "Adder", "Splitter", "Note"});
    const CanvasPoint cell = freeCell();
    model.add(kind, cell.x, cell.y);
    addAt(kind, cell.x, cell.y);
}

void RandomEdits::remove() {
    const int node = anyNode();
    selectBox(node);
    if (pick(3) == 0) {
        press(headOf(nameOf(node)));
    }
    window->on_del();
    release();
    model.remove(node);
}

void RandomEdits::rename() {
    const int node = anyNode();
    const std::string oldName = nameOf(node);
    const std::string newName = anyOf(someNames);
    if (pick(2) == 0) {
        selectBox(node);
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
}

void RandomEdits::openDialog() {
    const int node = anyNode();
    if (dialogs.size() < mostDialogs) {
        selectBox(node);
        window->on_var();
        dialogs.push_back({window->lastDialog, node});
    }
}

// A name and a value, as far as the dialog has rows for them.
void RandomEdits::writeInto(varWindow& dialog) {
    const auto entries = widgetsIn<Gtk::Entry>(dialog);
    if (pick(2) == 0 && !entries.empty()) {
        entries.front()->set_text(anyOf(someNames));
    }
    if (pick(2) == 0 && entries.size() > 1) {
        entries[1]->set_text(std::to_string(pick(1000)));
    }
}

// All rows are handed over, also those that show what was when the dialog was filled.
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
        if (model.sources.count({open.node, node.inputs[i]}) == 0) {
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
    if (label != "Apply") {
        dialogs.erase(open);
    }
}

void RandomEdits::collapse() {
    const int node = anyNode();
    selectBox(node);
    window->on_collapse();
    model.nodes.at(node).isExpanded = !model.nodes.at(node).isExpanded;
}

void RandomEdits::setStart() {
    const int node = anyNode();
    selectBox(node);
    window->on_setstart();
    model.setStart(node);
}

void RandomEdits::move() {
    const int node = anyNode();
    const CanvasPoint cell = freeCell();
    const CanvasPoint head = headOf(nameOf(node));
    const CanvasPoint corner = cornerOf(nameOf(node));
    drag(head, {head.x + cell.x - corner.x, head.y + cell.y - corner.y});
    model.nodes.at(node).x = cell.x;
    model.nodes.at(node).y = cell.y;
}

void RandomEdits::wire() {
    const int sender = anyNode();
    const int receiver = anyNode();
    const auto outputs = model.shownOutputs(sender);
    const auto inputs = model.shownInputs(receiver);
    if (outputs.empty() || inputs.empty()) {
        return;
    }
    const std::string output = anyOf(outputs);
    const std::string input = anyOf(inputs);
    drag(outputOf(nameOf(sender), output), inputOf(nameOf(receiver), input));
    model.wire(sender, output, receiver, input);
}

void RandomEdits::pullOff() {
    if (model.sources.empty()) {
        return;
    }
    const auto [target, source] = anyOf(model.sources);
    // Collapsed nodes show their ports as they were when they were drawn last.
    if (node(nameOf(target.first)).inputIndex.count(target.second) == 0) {
        return;
    }
    press(inputOf(nameOf(target.first), target.second));
    if (pick(4) == 0) {
        press(inputOf(nameOf(target.first), target.second), 1, GDK_2BUTTON_PRESS);
    }
    moveTo(nowhere());
    release();
    model.unwire(target.first, target.second);
}

void RandomEdits::compareNode(int number, QzBase& object) {
    const Model::Node& wanted = model.nodes.at(number);
    ASSERT_EQ(object.name, wanted.name);
    ASSERT_EQ(object.IsExpanded(), wanted.isExpanded);
    const plugin* shown = window->nodeOf(wanted.name);
    ASSERT_TRUE(shown) << wanted.name;
    ASSERT_EQ(window->nodeOf(wanted.name)->GetPlugin(), &object) << wanted.name;
    ASSERT_EQ(propertyOf<Glib::ustring>(shown->box, "title"), wanted.name);
    ASSERT_EQ(propertyOf<double>(shown->box, "x"), wanted.x);
    ASSERT_EQ(propertyOf<double>(shown->box, "y"), wanted.y);
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    object.GetPosition(x, y);
    object.GetOuterExtent(width, height);
    ASSERT_EQ(x, wanted.x);
    ASSERT_EQ(1200 - y - height, wanted.y);
    for (const QzBase::Input& input : object.Inputs()) {
        const auto written = wanted.values.find(input.name);
        ASSERT_TRUE(written == wanted.values.end() || input.value == written->second)
            << wanted.name << '.' << input.name << ": " << input.value;
        const auto source = model.sources.find({number, input.name});
        ASSERT_EQ(input.source != nullptr, source != model.sources.end()) << wanted.name << '.' << input.name;
        if (input.source) {
            ASSERT_EQ(input.source->name, nameOf(source->second.first));
            ASSERT_EQ(input.source->Outputs().at(input.sourceOutput).name, source->second.second);
        }
    }
}

void RandomEdits::compareWires() {
    ASSERT_EQ(window->connectionMap.size(), model.sources.size());
    ASSERT_EQ(window->pathMap.size(), model.sources.size());
    ASSERT_EQ(static_cast<std::size_t>(pathsOnCanvas()), model.sources.size());
    for (const auto& [target, source] : model.sources) {
        const PortRef input{nameOf(target.first), target.second};
        ASSERT_EQ(window->connectionMap.count(input), 1) << input[0] << '.' << input[1];
        const PortRef& output = window->connectionMap.at(input);
        ASSERT_EQ(window->nodeOf(output[0]), window->nodeOf(nameOf(source.first))) << output[0];
        ASSERT_EQ(output[1], source.second);
        ASSERT_TRUE(window->pathMap.at(input)->get_canvas());
    }
}

void RandomEdits::compare() {
    ASSERT_EQ(manager->plugins.size(), model.order.size());
    for (std::size_t i = 0; i < model.order.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(compareNode(model.order[i], *manager->plugins[i]));
    }
    const std::vector<std::string> boxes = boxesOnCanvas();
    ASSERT_EQ(boxes.size(), model.nodes.size());
    ASSERT_EQ(std::set<std::string>(boxes.begin(), boxes.end()).size(), model.nodes.size());
    ASSERT_NO_FATAL_FAILURE(compareWires());
    ASSERT_FALSE(window->rubberBand.isShown());
    ASSERT_FALSE(window->wiring);
    ASSERT_FALSE(window->dragging);
}

TEST_P(RandomEdits, leaveTheCanvasTheMapsAndTheLibraryAsOne) {
    std::cout << "seed " << GetParam() << std::endl;
    scrollTo({0, top - 10});
    for (int number = 0; number < editsEach; ++number) {
        SCOPED_TRACE(number);
        edit();
        ASSERT_NO_FATAL_FAILURE(compare());
        recording::forgetCalls();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEdits, testing::Values(1U, 20U, 300U, 4000U, 50000U));

}  // namespace
