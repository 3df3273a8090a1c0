#include "plugin.h"
#include "safeFile.h"
#include "vkWindow.h"

#include <cairomm/context.h>
#include <cairomm/surface.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace {

constexpr const char* imageFile = "test.png";

/// Limit of the toolkit's images, in pixels.
constexpr int maxSide = 32767;

// Without nodes, the extent is negative.
bool isImageSide(double length) {
    return length >= 1 && length < maxSide + 1;
}

cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// Empty if an image of that size cannot be created; the C++ class would throw.
Cairo::RefPtr<Cairo::ImageSurface> makeSurface(int width, int height) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return {};
    }
    return Cairo::RefPtr<Cairo::ImageSurface>(new Cairo::ImageSurface(surface, true));
}

void exportImage(Goocanvas::Canvas& canvas, const Goocanvas::Bounds& extent, int width, int height) {
    const auto surface = makeSurface(width, height);
    if (!surface) {
        return;
    }
    const auto context = Cairo::Context::create(surface);
    // Deliberate: this rectangle is neither filled nor stroked, and does not clip.
    context->rectangle(0, 0, 1000, 1000);
    // Deliberate: no translation. The image begins at the origin of the canvas, not at the first box.
    canvas.render(context, extent, 0.0);
    std::string bytes;
    if (cairo_surface_write_to_png_stream(surface->cobj(), append, &bytes) == CAIRO_STATUS_SUCCESS) {
        saveFile(imageFile, bytes);
    }
}

}  // namespace

void vkWindow::on_imgexp() {
    Goocanvas::Bounds extent(5000, 5000, 0, 0);
    for (const plugin* node : liveNodes()) {
        const Goocanvas::Bounds box = node->box->get_bounds();
        extent.set_x1(std::min(extent.get_x1(), box.get_x1()));
        extent.set_y1(std::min(extent.get_y1(), box.get_y1()));
        extent.set_x2(std::max(extent.get_x2(), box.get_x2()));
        extent.set_y2(std::max(extent.get_y2(), box.get_y2()));
    }
    const double width = extent.get_x2() - extent.get_x1();
    const double height = extent.get_y2() - extent.get_y1();
    if (isImageSide(width) && isImageSide(height)) {
        exportImage(canvas, extent, static_cast<int>(width), static_cast<int>(height));
    } else if (std::max(width, height) >= maxSide + 1) {
        std::cerr << "no image of the canvas: the plug-ins take " << std::llround(width) << " x "
                  << std::llround(height) << " units, and an image holds at most " << maxSide << " x " << maxSide
                  << "; move them closer together" << std::endl;
    }
}
