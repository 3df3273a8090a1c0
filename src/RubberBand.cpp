#include "RubberBand.h"

#include "wirePath.h"

#include <locale>
#include <sstream>
#include <string>

namespace {

constexpr double inset = 3.0;

/// Unlike a finished wire, which ends beside its input at whole units, the band ends exactly at the pointer.
std::string curve(CanvasPoint start, CanvasPoint pointer) {
    const double half = (pointer.x - start.x) * 0.5;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "M " << start.x + inset << ' ' << start.y << " C " << start.x + half + inset << ' ' << start.y << ' '
         << pointer.x - half << ' ' << pointer.y << ' ' << pointer.x << ' ' << pointer.y;
    return text.str();
}

}  // namespace

void RubberBand::begin(Goocanvas::Canvas& target, CanvasPoint startPoint, CanvasPoint pointer) {
    remove();
    canvas = &target;
    start = startPoint;
    draw(pointer);
}

void RubberBand::follow(CanvasPoint pointer) {
    if (canvas) {
        remove();
        draw(pointer);
    }
}

void RubberBand::remove() {
    if (path) {
        path->remove();
        path.reset();
    }
}

void RubberBand::draw(CanvasPoint pointer) {
    path = makeWirePath(curve(start, pointer));
    canvas->get_root_item()->add_child(path);
}
