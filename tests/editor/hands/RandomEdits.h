#pragma once

#include "HandsTest.h"
#include "Model.h"

#include <random>

class varWindow;

/// Random edits with mouse and menu actions, together with a model of the expected result. Boxes are separate, overlap,
/// or cover each other exactly; many names look alike, or like the name of an input.
class RandomEdits : public HandsTest, public testing::WithParamInterface<unsigned> {
protected:
    RandomEdits();
    ~RandomEdits() override;

    void edit();
    void compare();

private:
    /// A variables dialog and its node, which may have been deleted.
    struct OpenDialog {
        varWindow* dialog;
        int node;
    };

    /// The topmost box or port at a point, found by comparing it with the items of the nodes.
    struct Seen {
        enum class Kind { Nothing, Box, Input, Output } kind = Kind::Nothing;
        int node = -1;
        std::string port;
    };

    int pick(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
    template <typename Container>
    auto anyOf(const Container& container) {
        return *std::next(container.begin(), pick(static_cast<int>(container.size())));
    }
    int anyNode() { return anyOf(model.nodes).first; }
    const std::string& nameOf(int node) const { return model.nodes.at(node).name; }

    CanvasPoint freeCell();
    CanvasPoint anyCell();
    CanvasPoint anyPlace();
    int numberOf(plugin& node);
    Seen seenAt(CanvasPoint place);
    void pull(CanvasPoint from, CanvasPoint to);
    void click(CanvasPoint place) { pull(place, place); }
    void reach();
    static bool isInView(CanvasPoint corner);
    /// Clicks on the title of a node, or on what covers it. @return the node selected then, -1 if none is.
    int select();
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
    void compareNode(int node, QzBase& object);
    void compareWires();
    void compareColours();

    std::mt19937 random{GetParam()};
    Model model;
    int selected = -1;
    bool looksSelected = false;
    std::vector<OpenDialog> dialogs;
};
