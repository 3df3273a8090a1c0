#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/item.h>
#include <goocanvasmm/path.h>

#include <vector>

/// Where a wire begins and ends, in whole canvas units: fractions are cut off.
struct WireEnds {
    WireEnds(CanvasPoint output, CanvasPoint input);
    int fromX, fromY, toX, toY;
};

/// A curve that leaves the output and enters the input horizontally, three units beside their anchors. Where the input
/// lies left of the output its control points cross, deliberately.
Glib::RefPtr<Goocanvas::Path> makeWire(const WireEnds& ends);

/// Whether makeWire() would make the same curve.
bool leads(const Glib::RefPtr<Goocanvas::Path>& wire, const WireEnds& ends);

/// Adds new wires to the canvas, each below the previous one and all below the existing items. Inserting them at the
/// bottom one by one would move all other items each time.
void addBelow(const Glib::RefPtr<Goocanvas::Item>& root, const std::vector<Glib::RefPtr<Goocanvas::Path>>& wires);

/// All wires of a canvas lie below its other items, in the order in which they would if each had been put to the bottom
/// in turn: the last one is the lowest.
/// Lifetime: refers to the wires' places, for one use.
class WireStack {
public:
    using Wire = Glib::RefPtr<Goocanvas::Path>;

    WireStack(Glib::RefPtr<Goocanvas::Item> root, std::size_t count);

    /// The next wire, whose ends are there now. Touches it when it does not lead there, or lies out of order.
    void add(Wire& wire, const WireEnds& ends);

    /// Draws those anew that lead elsewhere. An item is taken off at once, while the canvas has no update to do for it:
    /// it would do one of all its items each time.
    void lay();

private:
    struct Moved {
        Wire* wire;
        WireEnds ends;
        int position;
    };

    bool isAt(int position, const Wire& wire) const;

    Glib::RefPtr<Goocanvas::Item> root;
    std::vector<Wire*> wires;
    std::vector<Moved> moved;
    int next;
    bool isInOrder = true;
};
