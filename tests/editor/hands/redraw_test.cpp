#include "HandsTest.h"

#include <cairomm/context.h>
#include <cairomm/surface.h>

namespace {

/// Wires between a number and two adders, while one of them is dragged.
class RedrawnWires : public HandsTest {
protected:
    RedrawnWires() {
        addAt("Number", 50, 700);
        addAt("Adder", 300, 700);
        addAt("Adder", 550, 700);
    }

    std::string picture() {
        window->canvas.update();
        const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 1000, 500);
        const auto context = Cairo::Context::create(surface);
        context->translate(0, -700);
        window->canvas.render(context, Goocanvas::Bounds(0, 700, 1000, 1200), 1.0);
        surface->flush();
        return {reinterpret_cast<const char*>(surface->get_data()),
                static_cast<std::size_t>(surface->get_stride() * surface->get_height())};
    }

    /// The inputs of all wires on the canvas, from bottom to top.
    std::vector<std::string> stack() {
        std::vector<std::string> inputs;
        const auto root = window->canvas.get_root_item();
        for (int i = 0; i < root->get_n_children(); ++i) {
            for (const auto& [input, path] : window->pathMap) {
                if (root->get_child(i) == Glib::RefPtr<Goocanvas::Item>(path)) {
                    inputs.push_back(input[0] + '.' + input[1]);
                }
            }
        }
        return inputs;
    }
};

TEST_F(RedrawnWires, onlyWiresWhoseEndsMoveAreDrawnAnew) {
    window->connect({"Number", "value"}, {"Adder", "a"});
    window->connect({"Number", "value"}, {"Adder", "b"});
    window->connect({"Adder", "sum"}, {"Adder1", "a"});
    recording::forgetCalls();
    window->modified = false;
    const auto before = window->pathMap;
    drag(headOf("Adder1"), {700, 900});
    EXPECT_EQ(window->pathMap.at({"Adder", "a"}), before.at({"Adder", "a"}));
    EXPECT_EQ(window->pathMap.at({"Adder", "b"}), before.at({"Adder", "b"}));
    EXPECT_NE(window->pathMap.at({"Adder1", "a"}), before.at({"Adder1", "a"}));
    EXPECT_FALSE(before.at({"Adder1", "a"})->get_canvas());
    EXPECT_THAT(recording::callsOf("Connect"), testing::IsEmpty());
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}

TEST_F(RedrawnWires, theWiresLookAsIfAllHadBeenDrawnAnew) {
    // Not in the order of their names, and crossing each other.
    window->connect({"Number", "value"}, {"Adder1", "a"});
    window->connect({"Adder", "sum"}, {"Adder", "b"});
    window->connect({"Adder1", "sum"}, {"Adder", "a"});
    window->connect({"Adder", "sum"}, {"Adder1", "b"});
    press(headOf("Adder1"));
    for (const CanvasPoint place : {CanvasPoint{600, 900}, {610, 905}, {400, 1000}}) {
        moveTo(place);
        EXPECT_THAT(stack(), testing::ElementsAre("Adder1.b", "Adder1.a", "Adder.b", "Adder.a"));
        const std::string shown = picture();
        window->connectAll();
        EXPECT_TRUE(shown == picture());
    }
    release();
    expectNothingLeftBehind();
}

TEST_F(RedrawnWires, aWireThatIsNotThereIsDrawnAtTheNextStep) {
    window->connect({"Number", "value"}, {"Adder", "a"});
    window->pathMap.at({"Adder", "a"})->remove();
    drag(headOf("Adder1"), {700, 900});
    EXPECT_EQ(pathsOnCanvas(), 1);
    expectNothingLeftBehind();
}

TEST_F(RedrawnWires, theBindingsAreLookedAtInTheOrderOfTheMapAtEachStep) {
    window->connect({"Number", "value"}, {"Adder", "b"});
    window->connect({"Number", "value"}, {"Adder", "a"});
    press(headOf("Adder1"));
    recording::forgetCalls();
    moveTo({700, 900});
    EXPECT_THAT(recording::callsOf("InputIndex"), testing::ElementsAre("Adder.InputIndex(a)", "Adder.InputIndex(b)"));
    release();
}

}  // namespace
