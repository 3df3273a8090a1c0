#include "HandsTest.h"
#include "Model.h"
#include "colours.h"

#include <QzManager.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <set>

namespace {

constexpr int editsEach = 2000;
constexpr int mostNodes = 9;
constexpr int columns = 4;
constexpr double cellWidth = 230;
constexpr double cellHeight = 180;
constexpr double left = 20;
constexpr double top = 560;

/// Edits by hand and by the menus' actions, at random, beside a model of what must come of them.
class RandomEdits : public HandsTest, public testing::WithParamInterface<unsigned> {
protected:
    void edit() {
        switch (model.nodes.empty() ? 0 : pick(12)) {
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
            default:
                return wire();
        }
    }

    void compare();

private:
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
};

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
    const std::string newName = anyOf(std::vector<std::string>{"Adder", "Number", "Alpha", "Zulu", "Mike", "Adder1"});
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
    Glib::ustring name = renamed.name;
    window->reconnect(name);
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
