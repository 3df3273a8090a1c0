#include "FileDialogTest.h"

#include <QzManager.h>
#include <goocanvas.h>

namespace {

/// Counts accesses to the children of a canvas item: a search counts each child that it looks at, a removal each child
/// that it moves.
class ChildAccesses {
public:
    explicit ChildAccesses(const Glib::RefPtr<Goocanvas::Item>& parent)
        : methods(GOO_CANVAS_ITEM_GET_IFACE(parent->gobj())) {
        former = *methods;
        counted = 0;
        methods->get_child = [](GooCanvasItem* item, gint position) {
            ++counted;
            return former.get_child(item, position);
        };
        methods->remove_child = [](GooCanvasItem* item, gint position) {
            counted += goo_canvas_item_get_n_children(item) - position;
            former.remove_child(item, position);
        };
    }
    ~ChildAccesses() { *methods = former; }
    ChildAccesses(const ChildAccesses&) = delete;
    ChildAccesses& operator=(const ChildAccesses&) = delete;

    std::size_t count() const { return static_cast<std::size_t>(counted); }

private:
    inline static GooCanvasItemIface former{};
    inline static int counted = 0;
    GooCanvasItemIface* methods;
};

class RemovalOfAll : public FileDialogTest {
protected:
    /// A document of adders in a circle: each feeds the next.
    void openCircle(int plugins) {
        std::string text = script() + "document circle.zedra\n";
        for (int i = 0; i < plugins; ++i) {
            text += " plugin Adder A" + std::to_string(i) + " 100 500\n";
        }
        for (int i = 0; i < plugins; ++i) {
            text += " bind A" + std::to_string((i + 1) % plugins) + " a A" + std::to_string(i) + " sum\n";
        }
        restart(text);
        window->open("circle.zedra");
        ASSERT_EQ(window->pathMap.size(), static_cast<std::size_t>(plugins));
        recording::forgetCalls();
    }

    /// Calls of the library, and accesses to the items on the canvas, until all plug-ins have been removed.
    std::size_t stepsFor(int plugins) {
        openCircle(plugins);
        Answers answers;
        answers.question("Remove existing plugins?\n(Continuing without removal experimental)", Gtk::RESPONSE_YES);
        answers.press("Open", Gtk::RESPONSE_CANCEL);
        const ChildAccesses accesses(window->canvas.get_root_item());
        errorsOf("Open");
        EXPECT_EQ(recording::callsOf("DeletePlugin").size(), static_cast<std::size_t>(plugins));
        EXPECT_EQ(window->canvas.get_root_item()->get_n_children(), 0);
        return recording::calls().size() + accesses.count();
    }
};

TEST_F(RemovalOfAll, takesStepsInProportionToThePlugins) {
    const std::size_t few = stepsFor(50);
    EXPECT_GE(few, 50U * 7U) << "each has six items and a wire";
    EXPECT_LE(stepsFor(100), 2 * few);
    EXPECT_LE(stepsFor(200), 4 * few);
}

TEST_F(RemovalOfAll, leavesNothingOfACircle) {
    openCircle(20);
    window->deleteAll();
    EXPECT_TRUE(manager->plugins.empty());
    EXPECT_TRUE(window->liveNodes().empty());
    EXPECT_TRUE(window->connectionMap.empty());
    EXPECT_TRUE(window->pathMap.empty());
    EXPECT_FALSE(window->nodeOf("A7"));
}

}  // namespace
