#include "EditorTest.h"
#include "TextLayouts.h"
#include "canvasText.h"

#include <cairomm/context.h>
#include <cairomm/surface.h>

namespace {

using Text = Glib::RefPtr<Goocanvas::Text>;

const std::vector<std::string> samples{"value", "Wj. gÄ", "f", "x\xc2\xb2", "two\nlines", "e\xcc\x81t\xc3\xa9", ""};
const std::vector<std::string> fonts{"Sans 8", "Sans 5", "Serif Italic 20"};

class CanvasText : public EditorTest {
protected:
    Text shared(const std::string& text, CanvasPoint place, Goocanvas::AnchorType anchor, const std::string& font) {
        const Text item = makeText(window->canvas, text, place, anchor, font);
        window->canvas.get_root_item()->add_child(item);
        return item;
    }

    Text stock(const std::string& text, CanvasPoint place, Goocanvas::AnchorType anchor, const std::string& font) {
        const Text item = Goocanvas::Text::create(text, place.x, place.y, 0, anchor);
        item->set_property("font", Glib::ustring(font));
        window->canvas.get_root_item()->add_child(item);
        return item;
    }

    static std::vector<double> boundsOf(const Text& item) {
        const Goocanvas::Bounds bounds = item->get_bounds();
        return {bounds.get_x1(), bounds.get_y1(), bounds.get_x2(), bounds.get_y2()};
    }

    std::string picture(double scale) {
        window->canvas.update();
        const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 400, 400);
        const auto context = Cairo::Context::create(surface);
        context->set_source_rgb(1, 1, 1);
        context->paint();
        context->set_source_rgb(0, 0, 0);
        context->scale(scale, scale);
        window->canvas.render(context, Goocanvas::Bounds(0, 0, 400 / scale, 400 / scale), scale);
        surface->flush();
        return {reinterpret_cast<const char*>(surface->get_data()),
                static_cast<std::size_t>(surface->get_stride() * surface->get_height())};
    }

    std::string pictureOf(const Text& item, double scale) {
        const std::string shown = picture(scale);
        item->remove();
        return shown;
    }
};

TEST_F(CanvasText, hasThePropertiesThatItIsMadeWith) {
    const Text item = shared("value", {12.5, 30}, Goocanvas::ANCHOR_EAST, "Sans 8");
    EXPECT_EQ(propertyOf<Glib::ustring>(item, "text"), "value");
    EXPECT_EQ(propertyOf<Glib::ustring>(item, "font"), "Sans 8");
    EXPECT_EQ(propertyOf<double>(item, "x"), 12.5);
    EXPECT_EQ(propertyOf<double>(item, "y"), 30);
    EXPECT_EQ(propertyOf<double>(item, "width"), 0);
    EXPECT_EQ(propertyOf<Goocanvas::AnchorType>(item, "anchor"), Goocanvas::ANCHOR_EAST);
}

TEST_F(CanvasText, takesTheRoomThatTheCanvasLibrarysOwnTakes) {
    for (const std::string& text : samples) {
        for (const std::string& font : fonts) {
            for (int anchor = Goocanvas::ANCHOR_CENTER; anchor <= Goocanvas::ANCHOR_EAST; ++anchor) {
                const auto at = static_cast<Goocanvas::AnchorType>(anchor);
                const auto expected = boundsOf(stock(text, {100.25, 60}, at, font));
                EXPECT_THAT(boundsOf(shared(text, {100.25, 60}, at, font)),
                            testing::Pointwise(testing::DoubleNear(1e-9), expected))
                    << text << ", " << font << ", anchor " << anchor;
            }
        }
    }
}

TEST_F(CanvasText, looksAsTheCanvasLibrarysOwnAtEveryZoom) {
    for (const double scale : {1.0, 0.5, 1.3, 1.0}) {
        const std::string empty = picture(scale);
        for (const std::string& text : samples) {
            for (const std::string& font : fonts) {
                const std::string expected = pictureOf(stock(text, {150.5, 80}, Goocanvas::ANCHOR_NORTH, font), scale);
                EXPECT_TRUE(pictureOf(shared(text, {150.5, 80}, Goocanvas::ANCHOR_NORTH, font), scale) == expected)
                    << text << ", " << font << ", scale " << scale;
                EXPECT_EQ(expected == empty, text.empty()) << text << ", " << font << ", scale " << scale;
            }
        }
    }
}

TEST_F(CanvasText, looksAsTheCanvasLibrarysOwnAfterItsTextWasChanged) {
    const Text changed = shared("before", {150, 80}, Goocanvas::ANCHOR_WEST, "Sans 8");
    boundsOf(changed);
    changed->set_property("text", Glib::ustring("after"));
    const auto bounds = boundsOf(changed);
    const std::string shown = pictureOf(changed, 1);
    const Text expected = stock("after", {150, 80}, Goocanvas::ANCHOR_WEST, "Sans 8");
    EXPECT_THAT(bounds, testing::Pointwise(testing::DoubleNear(1e-9), boundsOf(expected)));
    EXPECT_TRUE(shown == pictureOf(expected, 1));
}

TEST_F(CanvasText, isBrokenIntoLinesWhereItHasAWidth) {
    const Text broken = shared("one two three four", {150, 80}, Goocanvas::ANCHOR_WEST, "Sans 8");
    broken->set_property("width", 30.0);
    const Text expected = stock("one two three four", {150, 80}, Goocanvas::ANCHOR_WEST, "Sans 8");
    expected->set_property("width", 30.0);
    EXPECT_EQ(boundsOf(broken), boundsOf(expected));
    expected->remove();
    const std::string shown = pictureOf(broken, 1);
    window->canvas.get_root_item()->add_child(expected);
    EXPECT_TRUE(shown == pictureOf(expected, 1));
}

TEST_F(CanvasText, isLaidOutOnceForAllThatReadTheSame) {
    const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 1, 1);
    const auto drawing = Cairo::Context::create(surface);
    TextLayouts& layouts = TextLayouts::of(window->canvas.gobj());
    PangoFontDescription* font = pango_font_description_from_string("Sans 8");
    PangoLayout* layout = layouts.layoutOf(font, "value", drawing->cobj());
    EXPECT_EQ(layouts.layoutOf(font, "value", drawing->cobj()), layout);
    EXPECT_NE(layouts.layoutOf(font, "sum", drawing->cobj()), layout);
    EXPECT_EQ(layouts.layoutOf(font, "value", drawing->cobj()), layout);
    pango_font_description_free(font);
}

}  // namespace
