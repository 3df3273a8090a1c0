#include "TextLayouts.h"

namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

constexpr const char* key = "velmorak-text-layouts";

/// Per font. Plug-ins, and with them their names, come and go; beyond this limit the cache is cleared.
constexpr std::size_t maxTexts = 20000;

cairo_font_options_t* optionsOf(cairo_t* drawing) {
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_surface_get_font_options(cairo_get_target(drawing), options);
    return options;
}

/// Uses the settings of the canvas library's own text items.
PangoContext* makeContext(cairo_t* drawing) {
    PangoContext* context = pango_cairo_create_context(drawing);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    return context;
}

PangoLayout* makeLayout(PangoContext* context, const PangoFontDescription* font, const char* text) {
    PangoLayout* layout = pango_layout_new(context);
    pango_layout_set_text(layout, text, -1);
    pango_layout_set_font_description(layout, font);
    return layout;
}

/// Compatible with the window of the canvas, if it has one already.
cairo_t* makeDrawing(GooCanvas* canvas) {
    GdkWindow* window = gtk_widget_get_window(GTK_WIDGET(canvas));
    const Surface surface(window ? gdk_window_create_similar_surface(window, CAIRO_CONTENT_COLOR_ALPHA, 1, 1)
                                 : cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1),
                          &cairo_surface_destroy);
    return cairo_create(surface.get());
}

}  // namespace

TextLayouts& TextLayouts::of(GooCanvas* canvas) {
    auto* layouts = static_cast<TextLayouts*>(g_object_get_data(G_OBJECT(canvas), key));
    if (!layouts) {
        layouts = new TextLayouts(canvas);
        g_object_set_data_full(G_OBJECT(canvas), key, layouts,
                               [](gpointer former) { delete static_cast<TextLayouts*>(former); });
    }
    return *layouts;
}

GooCanvasStyle* TextLayouts::styleOf(const std::string& font) {
    Style& style = styles[font];
    if (!style) {
        style.reset(goo_canvas_style_new());
        GValue description = G_VALUE_INIT;
        g_value_init(&description, PANGO_TYPE_FONT_DESCRIPTION);
        g_value_take_boxed(&description, pango_font_description_from_string(font.c_str()));
        goo_canvas_style_set_property(style.get(), goo_canvas_style_font_desc_id, &description);
        g_value_unset(&description);
    }
    return style.get();
}

TextLayouts::Extents TextLayouts::extentsOf(const PangoFontDescription* font, const char* text) {
    dropStaleTexts();
    const ByText<Extents>& measured = textsIn(font).extents;
    const auto known = measured.find(std::string_view(text));
    if (known != measured.end()) {
        return known->second;
    }
    const Extents extents = measure(font, text);
    textsIn(font).extents.emplace(text, extents);
    return extents;
}

TextLayouts::Extents TextLayouts::measure(const PangoFontDescription* font, const char* text) {
    if (!context) {
        restartFor(Drawing(makeDrawing(canvas)).get());
    }
    Extents extents{};
    if (matrix.xx == 1 && matrix.yy == 1) {
        pango_layout_get_extents(laidOut(font, text), &extents.ink, &extents.logical);
    } else {  // The cached layouts fit a zoomed canvas.
        const Context own(makeContext(Drawing(makeDrawing(canvas)).get()));
        const Layout layout(makeLayout(own.get(), font, text));
        pango_layout_get_extents(layout.get(), &extents.ink, &extents.logical);
    }
    return extents;
}

PangoLayout* TextLayouts::layoutOf(const PangoFontDescription* font, const char* text, cairo_t* drawing) {
    dropStaleTexts();
    if (!context || !isMadeFor(drawing)) {
        restartFor(drawing);
    }
    return laidOut(font, text);
}

PangoLayout* TextLayouts::laidOut(const PangoFontDescription* font, const char* text) {
    ByText<Layout>& layouts = textsIn(font).layouts;
    auto known = layouts.find(std::string_view(text));
    if (known == layouts.end()) {
        known = layouts.emplace(text, makeLayout(context.get(), font, text)).first;
    }
    return known->second.get();
}

TextLayouts::Texts& TextLayouts::textsIn(const PangoFontDescription* font) {
    for (Texts& each : fonts) {
        if (pango_font_description_equal(each.font.get(), font) != FALSE) {
            return each;
        }
    }
    return fonts.emplace_back(Texts{Font(pango_font_description_copy(font))});
}

bool TextLayouts::isMadeFor(cairo_t* drawing) const {
    cairo_matrix_t wanted;
    cairo_get_matrix(drawing, &wanted);
    const Options wantedOptions(optionsOf(drawing));
    return wanted.xx == matrix.xx && wanted.xy == matrix.xy && wanted.yx == matrix.yx && wanted.yy == matrix.yy &&
           cairo_font_options_equal(wantedOptions.get(), options.get()) != 0;
}

void TextLayouts::restartFor(cairo_t* drawing) {
    for (Texts& each : fonts) {
        each.layouts.clear();
    }
    context.reset(makeContext(drawing));
    options.reset(optionsOf(drawing));
    cairo_get_matrix(drawing, &matrix);
}

void TextLayouts::dropStaleTexts() {
    const guint now = pango_font_map_get_serial(pango_cairo_font_map_get_default());
    bool isStale = now != fontMapSerial;
    for (const Texts& each : fonts) {
        isStale = isStale || each.extents.size() > maxTexts || each.layouts.size() > maxTexts;
    }
    if (isStale) {
        fonts.clear();
        context.reset();
        fontMapSerial = now;
    }
}
