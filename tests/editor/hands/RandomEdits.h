#pragma once

#include "HandsTest.h"
#include "Model.h"

#include <random>

class varWindow;

/// Edits by hand and by the menus' actions, at random, beside a model of what must come of them. Boxes lie apart, upon
/// one another and exactly above one another; names are such as users mistake for one another, or for an input.
class RandomEdits : public HandsTest, public testing::WithParamInterface<unsigned> {
protected:
    RandomEdits();
    ~RandomEdits() override;

    void edit();
    void compare();

private:
    /// A variables dialog, and the node that it was opened for, which may be gone.
    struct OpenDialog {
        varWindow* dialog;
        int node;
    };

    /// What the topmost box or port at a place is, found by the items that the nodes hold.
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
    /// A click on the head of a node, or on what covers it. @return the node that is selected then, -1 where none is.
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
