#include "canvasText.h"

#include "TextLayouts.h"

#include <goocanvas.h>

#include <algorithm>

namespace {

constexpr const char* typeName = "VelmorakText";

/// Null if the text has settings that the cache does not support; the canvas library then lays it out itself.
const PangoFontDescription* fontOf(const GooCanvasText* item) {
    const GooCanvasTextData* data = item->text_data;
    if (!data->text || data->width > 0 || data->use_markup || data->alignment != PANGO_ALIGN_LEFT) {
        return nullptr;
    }
    GooCanvasStyle* style = item->parent.simple_data->style;
    const GValue* font = goo_canvas_style_get_property(style, goo_canvas_style_font_desc_id);
    if (!font || goo_canvas_style_get_property(style, goo_canvas_style_hint_metrics_id)) {
        return nullptr;
    }
    return static_cast<const PangoFontDescription*>(g_value_get_boxed(font));
}

const GooCanvasItemSimpleClass* parentClass() {
    return GOO_CANVAS_ITEM_SIMPLE_CLASS(g_type_class_peek(GOO_TYPE_CANVAS_TEXT));
}

double inUnits(int pango) {
    return static_cast<double>(pango) / PANGO_SCALE;
}

/// Fraction of the width that lies left of the anchor.
double leftPart(guint anchor) {
    switch (anchor) {
        case GOO_CANVAS_ANCHOR_N:
        case GOO_CANVAS_ANCHOR_CENTER:
        case GOO_CANVAS_ANCHOR_S:
            return 0.5;
        case GOO_CANVAS_ANCHOR_NE:
        case GOO_CANVAS_ANCHOR_E:
        case GOO_CANVAS_ANCHOR_SE:
            return 1;
        default:
            return 0;
    }
}

/// Fraction of the height that lies above the anchor.
double upperPart(guint anchor) {
    switch (anchor) {
        case GOO_CANVAS_ANCHOR_W:
        case GOO_CANVAS_ANCHOR_CENTER:
        case GOO_CANVAS_ANCHOR_E:
            return 0.5;
        case GOO_CANVAS_ANCHOR_SW:
        case GOO_CANVAS_ANCHOR_S:
        case GOO_CANVAS_ANCHOR_SE:
            return 1;
        default:
            return 0;
    }
}

CanvasPoint originOf(const GooCanvasTextData& text, const PangoRectangle& logical) {
    return {text.x - leftPart(text.anchor) * inUnits(logical.width),
            text.y - upperPart(text.anchor) * inUnits(logical.height)};
}

/// The bounds include ink beyond the logical extents, such as the overhang of italic letters.
void update(GooCanvasItemSimple* simple, cairo_t* drawing) {
    GooCanvasText* item = GOO_CANVAS_TEXT(simple);
    const PangoFontDescription* font = fontOf(item);
    if (!font) {
        parentClass()->simple_update(simple, drawing);
        return;
    }
    const GooCanvasTextData& text = *item->text_data;
    item->layout_width = text.width;
    const auto [ink, logical] = TextLayouts::of(simple->canvas).extentsOf(font, text.text);
    const CanvasPoint origin = originOf(text, logical);
    simple->bounds.x1 = origin.x - std::max(0.0, inUnits(logical.x - ink.x));
    simple->bounds.y1 = origin.y - std::max(0.0, inUnits(logical.y - ink.y));
    simple->bounds.x2 =
        origin.x + inUnits(logical.width) + std::max(0.0, inUnits(ink.x + ink.width - (logical.x + logical.width)));
    simple->bounds.y2 =
        origin.y + inUnits(logical.height) + std::max(0.0, inUnits(ink.y + ink.height - (logical.y + logical.height)));
}

void paint(GooCanvasItemSimple* simple, cairo_t* drawing, const GooCanvasBounds* bounds) {
    const GooCanvasText* item = GOO_CANVAS_TEXT(simple);
    const PangoFontDescription* font = fontOf(item);
    if (!font) {
        parentClass()->simple_paint(simple, drawing, bounds);
        return;
    }
    const GooCanvasTextData& text = *item->text_data;
    PangoLayout* layout = TextLayouts::of(simple->canvas).layoutOf(font, text.text, drawing);
    PangoRectangle logical{};
    pango_layout_get_extents(layout, nullptr, &logical);
    const CanvasPoint origin = originOf(text, logical);
    goo_canvas_style_set_fill_options(simple->simple_data->style, drawing);
    cairo_new_path(drawing);
    cairo_move_to(drawing, origin.x, origin.y);
    pango_cairo_show_layout(drawing, layout);
}

void initialiseClass(gpointer type, gpointer /*data*/) {
    auto* simple = GOO_CANVAS_ITEM_SIMPLE_CLASS(type);
    simple->simple_update = &update;
    simple->simple_paint = &paint;
}

GType textType() {
    const GType known = g_type_from_name(typeName);
    return known != 0 ? known
                      : g_type_register_static_simple(GOO_TYPE_CANVAS_TEXT, typeName, sizeof(GooCanvasTextClass),
                                                      &initialiseClass, sizeof(GooCanvasText), nullptr,
                                                      static_cast<GTypeFlags>(0));
}

/// C++ wrapper of an existing item; takes over the reference. Glib::wrap() would require the bindings to be
/// initialised.
class Wrapped : public Goocanvas::Text {
public:
    explicit Wrapped(GooCanvasText* item) : Goocanvas::Text(item) {}
};

}  // namespace

Glib::RefPtr<Goocanvas::Text> makeText(Goocanvas::Canvas& canvas, const std::string& text, CanvasPoint place,
                                       Goocanvas::AnchorType anchor, const std::string& font) {
    // Fills the fields directly, as the C constructor goo_canvas_text_new() does: setting the properties one by one
    // takes longer than creating the item.
    auto* item = GOO_CANVAS_TEXT(g_object_new(textType(), nullptr));
    GooCanvasTextData& data = *item->text_data;
    data.text = g_strdup(text.c_str());
    data.x = place.x;
    data.y = place.y;
    data.width = 0;
    data.anchor = static_cast<guint>(anchor) & 0x1fU;
    goo_canvas_item_set_style(GOO_CANVAS_ITEM(item), TextLayouts::of(canvas.gobj()).styleOf(font));
    return Glib::RefPtr<Goocanvas::Text>(new Wrapped(item));
}
