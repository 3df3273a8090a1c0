#pragma once

#include <cairo.h>
#include <goocanvas.h>
#include <pango/pangocairo.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Cache of text layouts for one canvas: a style per font, and a layout per distinct text and font. A document shows
/// thousands of texts, most of them equal, and the layout is the most expensive part of a text item.
/// Lifetime: owned by the canvas and destroyed with it.
/// Threads:  the main thread only.
class TextLayouts {
public:
    /// In Pango units, relative to the upper left corner of the layout.
    struct Extents {
        PangoRectangle ink, logical;
    };

    /// The cache of that canvas, created on first use.
    static TextLayouts& of(GooCanvas* canvas);

    explicit TextLayouts(GooCanvas* canvas) : canvas(canvas) {}

    /// Shared by all texts in that font: setting a style property on one of them changes all.
    GooCanvasStyle* styleOf(const std::string& font);

    /// Extents at scale 1, whatever the zoom.
    Extents extentsOf(const PangoFontDescription* font, const char* text);

    /// A layout for painting on `drawing`. Valid until the next call.
    PangoLayout* layoutOf(const PangoFontDescription* font, const char* text, cairo_t* drawing);

private:
    template <auto release>
    struct Release {
        template <typename Object>
        void operator()(Object* object) const {
            release(object);
        }
    };
    using Style = std::unique_ptr<GooCanvasStyle, Release<&g_object_unref>>;
    using Layout = std::unique_ptr<PangoLayout, Release<&g_object_unref>>;
    using Context = std::unique_ptr<PangoContext, Release<&g_object_unref>>;
    using Drawing = std::unique_ptr<cairo_t, Release<&cairo_destroy>>;
    using Options = std::unique_ptr<cairo_font_options_t, Release<&cairo_font_options_destroy>>;
    using Font = std::unique_ptr<PangoFontDescription, Release<&pango_font_description_free>>;

    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    template <typename Value>
    using ByText = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;

    struct Texts {
        Font font;
        ByText<Extents> extents = {};
        ByText<Layout> layouts = {};
    };

    Extents measure(const PangoFontDescription* font, const char* text);
    PangoLayout* laidOut(const PangoFontDescription* font, const char* text);
    Texts& textsIn(const PangoFontDescription* font);
    bool isMadeFor(cairo_t* drawing) const;
    void restartFor(cairo_t* drawing);
    void dropStaleTexts();

    GooCanvas* canvas;
    std::map<std::string, Style, std::less<>> styles;
    std::vector<Texts> fonts;
    Context context;          ///< Shared by all cached layouts; empty before the first one.
    Options options;          ///< Font options of the drawing that the cached layouts fit.
    cairo_matrix_t matrix{};  ///< Scale of that drawing; the translation does not matter.
    guint fontMapSerial = 0;  ///< Changes with the installed fonts and their configuration.
};
