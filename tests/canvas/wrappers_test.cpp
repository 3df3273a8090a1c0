#include <cairomm/context.h>
#include <cairomm/surface.h>
#include <gmock/gmock.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/path.h>
#include <goocanvasmm/rect.h>
#include <goocanvasmm/text.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/window.h>

namespace {

using ::testing::ElementsAre;
using ItemRef = Glib::RefPtr<Goocanvas::Item>;

class Wrappers : public ::testing::Test {
protected:
    Wrappers() {
        canvas.set_bounds(0, 0, 400, 300);
        root = canvas.get_root_item();
    }

    Glib::RefPtr<Goocanvas::Rect> rectangle(double x, double y) {
        auto made = Goocanvas::Rect::create(x, y, 40, 20);
        made->set_property("fill_color", Glib::ustring("black"));
        root->add_child(made);
        return made;
    }

    std::vector<ItemRef> children() {
        std::vector<ItemRef> all;
        for (int i = 0; i < root->get_n_children(); ++i) {
            all.push_back(root->get_child(i));
        }
        return all;
    }

    /// What the signal of the C library returns.
    static bool press(const ItemRef& item, const ItemRef& target) {
        GdkEventButton event{};
        event.type = GDK_BUTTON_PRESS;
        event.x = 7;
        gboolean isHandled = FALSE;
        g_signal_emit_by_name(item->gobj(), "button-press-event", target ? target->gobj() : nullptr, &event,
                              &isHandled);
        return isHandled != FALSE;
    }

    Goocanvas::Canvas canvas;
    ItemRef root;
};

TEST_F(Wrappers, anItemHasOneWrapperHoweverItIsReached) {
    const auto box = rectangle(10, 10);
    EXPECT_EQ(root->get_child(0), ItemRef(box));
    EXPECT_EQ(canvas.get_root_item(), root);
    EXPECT_EQ(root->get_child(5), ItemRef());
    EXPECT_EQ(Glib::RefPtr<Goocanvas::Rect>::cast_dynamic(root->get_child(0)), box);
    EXPECT_FALSE(Glib::RefPtr<Goocanvas::Path>::cast_dynamic(root->get_child(0)));
}

TEST_F(Wrappers, anItemLivesWhileItIsOnTheCanvasOrReferredTo) {
    auto box = rectangle(10, 10);
    auto* object = G_OBJECT(box->gobj());
    bool isGone = false;
    g_object_weak_ref(
        object, [](gpointer flag, GObject*) { *static_cast<bool*>(flag) = true; }, &isGone);
    box.reset();
    EXPECT_FALSE(isGone);
    box = Glib::RefPtr<Goocanvas::Rect>::cast_dynamic(root->get_child(0));
    EXPECT_EQ(box->get_parent(), root);
    EXPECT_EQ(box->get_canvas(), &canvas);
    box->remove();
    EXPECT_EQ(box->get_canvas(), nullptr);
    EXPECT_EQ(box->get_parent(), ItemRef());
    EXPECT_EQ(root->get_n_children(), 0);
    EXPECT_FALSE(isGone);
    box.reset();
    EXPECT_TRUE(isGone);
}

TEST_F(Wrappers, itemsAreStackedAsAsked) {
    const auto low = rectangle(0, 0);
    const auto middle = rectangle(0, 0);
    const auto high = rectangle(0, 0);
    low->raise();
    EXPECT_THAT(children(), ElementsAre(middle, high, low));
    low->raise(middle);
    EXPECT_THAT(children(), ElementsAre(middle, high, low)) << "is above it already";
    high->raise(low);
    EXPECT_THAT(children(), ElementsAre(middle, low, high));
    high->lower();
    EXPECT_THAT(children(), ElementsAre(high, middle, low));
    root->move_child(root->find_child(high), 2);
    EXPECT_THAT(children(), ElementsAre(middle, low, high));
    root->remove_child(1);
    EXPECT_EQ(root->find_child(low), -1);
    root->add_child(low, 0);
    EXPECT_THAT(children(), ElementsAre(low, middle, high));
}

TEST_F(Wrappers, itemsAtAPointComeFromTheTop) {
    const auto low = rectangle(10, 10);
    const auto high = rectangle(20, 10);
    canvas.update();
    EXPECT_THAT(canvas.get_items_at(30, 15, true), ElementsAre(high, low));
    EXPECT_THAT(canvas.get_items_at(15, 15, true), ElementsAre(low));
    high->set_property("pointer_events", Goocanvas::EVENTS_NONE);
    EXPECT_THAT(canvas.get_items_at(30, 15, true), ElementsAre(low));
    EXPECT_TRUE(canvas.get_items_at(300, 200, true).empty());
}

TEST_F(Wrappers, slotsGetTheItemBelowThePointerAndTheEvent) {
    const auto box = rectangle(10, 10);
    std::vector<ItemRef> targets;
    double x = 0;
    const auto answer = [&](const ItemRef& target, GdkEventButton* event) {
        targets.push_back(target);
        x = event->x;
        return true;
    };
    sigc::connection connection = root->signal_button_press_event().connect(answer, true);
    EXPECT_TRUE(press(root, box));
    EXPECT_TRUE(press(root, {}));
    EXPECT_THAT(targets, ElementsAre(box, ItemRef()));
    EXPECT_EQ(x, 7);
    connection.block();
    EXPECT_FALSE(press(root, box));
    connection.unblock();
    connection.disconnect();
    EXPECT_FALSE(press(root, box));
    EXPECT_EQ(targets.size(), 2);
}

TEST_F(Wrappers, propertiesHaveTheirEnumerations) {
    const auto text = Goocanvas::Text::create("value", 12.5, 30, -1, Goocanvas::ANCHOR_EAST);
    Goocanvas::AnchorType anchor{};
    text->get_property("anchor", anchor);
    EXPECT_EQ(anchor, Goocanvas::ANCHOR_EAST);
    Goocanvas::PointerEvents events{};
    text->get_property("pointer_events", events);
    EXPECT_EQ(events, Goocanvas::EVENTS_VISIBLE_PAINTED);
    EXPECT_EQ(text->gobj()->text_data->x, 12.5);
    EXPECT_EQ(Goocanvas::Path::create("M 0 0 L 10 10")->gobj()->path_data->path_commands->len, 2U);
}

TEST_F(Wrappers, theCanvasScalesAndDrawsWhatIsOnIt) {
    rectangle(10, 10);
    canvas.set_scale(2);
    EXPECT_EQ(canvas.get_scale(), 2);
    double x = 30;
    double y = 15;
    canvas.convert_to_pixels(x, y);
    EXPECT_THAT((std::vector{x, y}), ElementsAre(60, 30));
    canvas.convert_from_pixels(x, y);
    EXPECT_THAT((std::vector{x, y}), ElementsAre(30, 15));
    double left = 1;
    double top = 1;
    canvas.get_bounds(left, top, x, y);
    EXPECT_THAT((std::vector{left, top, x, y}), ElementsAre(0, 0, 400, 300));

    canvas.update();
    const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_A8, 100, 60);
    canvas.render(Cairo::Context::create(surface), Goocanvas::Bounds(0, 0, 100, 60), 1);
    surface->flush();
    EXPECT_EQ(surface->get_data()[20 * surface->get_stride() + 30], 255);
    EXPECT_EQ(surface->get_data()[20 * surface->get_stride() + 70], 0);
    EXPECT_NEAR(root->get_child(0)->get_bounds().get_x2(), 51, 1);
}

TEST_F(Wrappers, theCanvasOutlivesTheWindowThatShowedIt) {
    {
        Gtk::Window window;
        Gtk::ScrolledWindow scroller;
        window.add(scroller);
        scroller.add(canvas);
        EXPECT_EQ(scroller.get_child(), &canvas);
        window.show_all();
    }
    EXPECT_EQ(canvas.get_parent(), nullptr);
    rectangle(10, 10);
    canvas.update();
    EXPECT_EQ(root->get_n_children(), 1);
}

}  // namespace
