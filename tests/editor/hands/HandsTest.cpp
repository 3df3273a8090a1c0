#include "HandsTest.h"

#include <gdkmm/display.h>

#include <goocanvas.h>

#include <cmath>

namespace {

constexpr float canvasHeight = 1200;

GdkDevice* pointerOf(GdkDisplay* display) {
    return gdk_seat_get_pointer(gdk_display_get_default_seat(display));
}

unsigned maskOf(unsigned button) {
    return button > 5 ? 0U : static_cast<unsigned>(GDK_BUTTON1_MASK) << (button - 1);
}

/// Handles the server's events, except the motions caused by moving the pointer: the test sends its own.
void handleAllButPointerEvents() {
    while (GdkEvent* event = gdk_event_get()) {
        const GdkEventType type = event->type;
        if (type != GDK_MOTION_NOTIFY && type != GDK_ENTER_NOTIFY && type != GDK_LEAVE_NOTIFY) {
            gtk_main_do_event(event);
        }
        gdk_event_free(event);
    }
}

}  // namespace

HandsTest::HandsTest() {
    showWindow();
}

void HandsTest::showWindow() {
    window->resize(1000, 800);
    window->show();
    pumpUntil([this] { return window->canvas.get_mapped() && window->scroller.get_height() > 600; });
    pump();
}

plugin& HandsTest::addAt(const std::string& kind, double x, double y) {
    plugin& node = add(kind);
    float width = 0;
    float height = 0;
    node.GetPlugin()->GetOuterExtent(width, height);
    node.GetPlugin()->SetPosition(static_cast<float>(x), canvasHeight - static_cast<float>(y) - height);
    node.translate(static_cast<float>(x - propertyOf<double>(node.box, "x")),
                   static_cast<float>(y - propertyOf<double>(node.box, "y")));
    window->canvas.update();
    recording::forgetCalls();
    window->modified = false;
    return node;
}

CanvasPoint HandsTest::cornerOf(const std::string& name) {
    const auto& box = node(name).box;
    return {propertyOf<double>(box, "x"), propertyOf<double>(box, "y")};
}

CanvasPoint HandsTest::headOf(const std::string& name) {
    return {cornerOf(name).x + 40, cornerOf(name).y + 10};
}

CanvasPoint HandsTest::outputOf(const std::string& name, const std::string& port) {
    const auto& text = node(name).outputTexts.at(node(name).outputIndex.at(port));
    return {propertyOf<double>(text, "x") - 3, propertyOf<double>(text, "y")};
}

CanvasPoint HandsTest::inputOf(const std::string& name, const std::string& port) {
    const auto& text = node(name).inputTexts.at(node(name).inputIndex.at(port));
    return {propertyOf<double>(text, "x") + 3, propertyOf<double>(text, "y")};
}

CanvasPoint HandsTest::nowhere() {
    double x = window->scroller.get_hadjustment()->get_value() + window->scroller.get_width() - 60;
    double y = window->scroller.get_vadjustment()->get_value() + window->scroller.get_height() - 60;
    window->canvas.convert_from_pixels(x, y);
    return {x, y};
}

void HandsTest::scrollTo(CanvasPoint place) {
    window->canvas.scroll_to(place.x, place.y);
    window->canvas.update();
}

void HandsTest::warp(CanvasPoint place) {
    window->canvas.convert_to_pixels(place.x, place.y);
    int left = 0;
    int top = 0;
    window->canvas.get_window()->get_origin(left, top);
    warpTo(left + static_cast<int>(std::lround(place.x - window->scroller.get_hadjustment()->get_value())),
           top + static_cast<int>(std::lround(place.y - window->scroller.get_vadjustment()->get_value())));
}

void HandsTest::warpTo(int screenX, int screenY) {
    GdkDisplay* display = window->get_display()->gobj();
    gdk_device_warp(pointerOf(display), gdk_display_get_default_screen(display), screenX, screenY);
    const bool isThere = pumpUntil([&] {
        int nowX = 0;
        int nowY = 0;
        gdk_device_get_position(pointerOf(display), nullptr, &nowX, &nowY);
        return nowX == screenX && nowY == screenY;
    });
    ASSERT_TRUE(isThere) << screenX << ' ' << screenY << " is not on the screen";
    gdk_display_sync(display);
    handleAllButPointerEvents();
}

void HandsTest::send(GdkEventType type, unsigned button) {
    const CanvasPoint place = window->pointerOnCanvas();
    double x = place.x;
    double y = place.y;
    window->canvas.convert_to_pixels(x, y);
    GdkEvent* event = gdk_event_new(type);
    event->any.window = GDK_WINDOW(g_object_ref(window->canvas.gobj()->canvas_window));
    gdk_event_set_device(event, pointerOf(window->get_display()->gobj()));
    if (type == GDK_MOTION_NOTIFY) {
        event->motion.x = x;
        event->motion.y = y;
        event->motion.state = held;
    } else {
        event->button.x = x;
        event->button.y = y;
        event->button.button = button;
    }
    gtk_main_do_event(event);
    gdk_event_free(event);
}

void HandsTest::turnWheel(GdkScrollDirection direction) {
    GdkEvent* event = gdk_event_new(GDK_SCROLL);
    event->any.window = GDK_WINDOW(g_object_ref(window->canvas.gobj()->canvas_window));
    gdk_event_set_device(event, pointerOf(window->get_display()->gobj()));
    event->scroll.direction = direction;
    event->scroll.state = held;
    gtk_main_do_event(event);
    gdk_event_free(event);
}

void HandsTest::moveTo(CanvasPoint place) {
    warp(place);
    send(GDK_MOTION_NOTIFY, 0);
}

void HandsTest::moveOutside() {
    int left = 0;
    int top = 0;
    window->get_window()->get_origin(left, top);
    warpTo(left + window->get_width() + 100, top + 300);
    send(GDK_MOTION_NOTIFY, 0);
}

void HandsTest::moveBy(int dx, int dy) {
    int x = 0;
    int y = 0;
    gdk_device_get_position(pointerOf(window->get_display()->gobj()), nullptr, &x, &y);
    warpTo(x + dx, y + dy);
    send(GDK_MOTION_NOTIFY, 0);
}

void HandsTest::press(CanvasPoint place, unsigned button, GdkEventType type) {
    warp(place);
    held |= maskOf(button);
    send(type, button);
}

void HandsTest::release(unsigned button) {
    held &= ~maskOf(button);
    send(GDK_BUTTON_RELEASE, button);
}

void HandsTest::drag(CanvasPoint from, CanvasPoint to) {
    press(from);
    moveTo({(from.x + to.x) / 2, (from.y + to.y) / 2});
    moveTo(to);
    release();
}

void HandsTest::clickOn(CanvasPoint place, unsigned button) {
    press(place, button);
    release(button);
}

void HandsTest::doubleClick(CanvasPoint place) {
    clickOn(place);
    press(place);
    press(place, 1, GDK_2BUTTON_PRESS);
    release();
}

Glib::RefPtr<Goocanvas::Item> HandsTest::topItem() {
    const auto root = window->canvas.get_root_item();
    return root->get_child(root->get_n_children() - 1);
}

std::string HandsTest::topPath() {
    const auto path = Glib::RefPtr<Goocanvas::Path>::cast_dynamic(topItem());
    return path ? pathText(path) : "";
}

std::uint32_t HandsTest::colourOf(const std::string& name) {
    return propertyOf<guint>(node(name).box, "fill_color_rgba");
}

bool HandsTest::isBound(const std::string& name, const std::string& input, const std::string& sender,
                        const std::string& output) {
    QzBase& receiver = object(name);
    const QzBase::Input& record = receiver.Inputs().at(static_cast<std::size_t>(receiver.InputIndex(input)));
    return record.source == &object(sender) && record.source->Outputs().at(record.sourceOutput).name == output;
}

void HandsTest::expectNothingLeftBehind() {
    EXPECT_EQ(boxesOnCanvas().size(), manager->plugins.size());
    EXPECT_EQ(static_cast<std::size_t>(pathsOnCanvas()), window->connectionMap.size());
    EXPECT_FALSE(window->rubberBand.isShown());
    EXPECT_FALSE(window->wiring);
    EXPECT_FALSE(window->dragging);
    EXPECT_EQ(window->pathMap.size(), window->connectionMap.size());
    std::size_t bindings = 0;
    for (QzBase* object : manager->plugins) {
        for (const QzBase::Input& input : object->Inputs()) {
            bindings += input.source ? 1 : 0;
        }
    }
    EXPECT_EQ(bindings, window->connectionMap.size());
    for (const auto& [input, output] : window->connectionMap) {
        EXPECT_TRUE(isBound(input[0], input[1], output[0], output[1])) << input[0] << '.' << input[1];
        EXPECT_TRUE(window->pathMap.at(input)->get_canvas());
    }
}
