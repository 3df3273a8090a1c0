#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/item.h>
#include <goocanvasmm/path.h>

#include <string>
#include <vector>

/// Start and end of a wire, truncated to whole canvas units.
struct WireEnds {
    WireEnds(CanvasPoint output, CanvasPoint input);
    int fromX, fromY, toX, toY;
};

/// A path with the width and colour of a wire. The caller adds it to the canvas.
/// @param data the curve, as the path data of an SVG.
Glib::RefPtr<Goocanvas::Path> makeWirePath(const std::string& data);

/// A curve that leaves the output and enters the input horizontally, three units beside their anchors. Deliberate: its
/// control points cross if the input is to the left of the output.
Glib::RefPtr<Goocanvas::Path> makeWire(const WireEnds& ends);

/// Whether makeWire() would create the same curve.
bool connects(const Glib::RefPtr<Goocanvas::Path>& wire, const WireEnds& ends);

/// Adds new wires to the canvas, each below the previous one and all below the existing items. Inserting them one by
/// one at the bottom would move all other items every time.
void addBelow(const Glib::RefPtr<Goocanvas::Item>& root, const std::vector<Glib::RefPtr<Goocanvas::Path>>& wires);

/// Redraws all wires of the canvas in one pass.
///
/// Invariant: all wires are below all other items, in reverse order of add(): the last one is the lowest, as if each
/// had been moved to the bottom in turn. The group keeps its items from the bottom up, so wire i of n is child n - 1 -
/// i. Connecting the wires one by one gives the same picture, but takes quadratic time. Lifetime: keeps references to
/// the wires, for one use.
class WireStack {
public:
    using Wire = Glib::RefPtr<Goocanvas::Path>;

    WireStack(Glib::RefPtr<Goocanvas::Item> root, std::size_t count);

    /// Adds the next wire, whose ends are where they were. lay() restacks only if some wire is out of order.
    /// @return false if the wire is not on the canvas.
    bool add(Wire& wire);
    /// The same with the current ends of the wire. lay() redraws it only if it has moved.
    bool add(Wire& wire, const WireEnds& ends);

    /// Replaces the wires that have moved. All of them are removed before the first new one is added: removing an item
    /// while the canvas has a pending update would update all items each time.
    void lay();

private:
    struct Moved {
        Wire* wire;
        WireEnds ends;
        int position;
    };

    bool isAt(int position, const Wire& wire) const;

    Glib::RefPtr<Goocanvas::Item> root;
    const GPtrArray* items;  ///< Of the root.
    std::vector<Wire*> wires;
    std::vector<Moved> moved;
    int next;
    bool isInOrder = true;
};
