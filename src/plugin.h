#pragma once

#include "CanvasPoint.h"
#include "NameOrder.h"

#include <glibmm/refptr.h>
#include <glibmm/ustring.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/rect.h>
#include <goocanvasmm/text.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QzBase;
class QzManager;

/// One analysis plug-in on the canvas: a box with two title lines and a text for each visible port.
///
/// Invariant: every item is a direct child of the canvas's root item, and a redraw replaces all of them. An item
///           that is held across draw() is no longer on the canvas; hold the name of the plug-in instead.
/// Lengths:  canvas units, y downwards; the library stores positions with y upwards.
/// Lifetime: wraps an object of the manager and makes the manager delete it in the destructor, unless released.
/// Threads:  the main thread only.
class plugin {
public:
    using TextItem = Glib::RefPtr<Goocanvas::Text>;

    /// Wraps `object` or, if it is null, makes the manager create one of the kind with that name and number, under a
    /// unique name, at the library's position (100, 100). Draws it at once.
    plugin(QzManager* manager, Goocanvas::Canvas& canvas, QzBase* object, Glib::ustring name, unsigned short kind);

    /// Removes the items from the canvas, then makes the manager delete the object.
    ~plugin();

    plugin(const plugin&) = delete;
    plugin& operator=(const plugin&) = delete;

    /// Creates all items anew. A redraw keeps the box's y and takes x from the library.
    void draw();

    /// Moves every item; positions are truncated to whole units before the step is added.
    void translate(float dx, float dy);

    /// Moves by the whole units of `travel`, but keeps the title bar on the canvas. @return the distance moved.
    CanvasPoint follow(CanvasPoint travel);

    /// Raises the box above everything else on the canvas, and the texts above their box.
    void raise_to_top();

    QzBase* GetPlugin();

    /// Whether the library's position is not on the canvas, so that the box is drawn elsewhere, and not moved since.
    bool isDisplaced() const { return displaced; }

    /// End point of a wire: the position of the port's text. A port that is not shown is added to the index at position
    /// 0; if its side shows no port at all, the wire ends where the first port would be.
    CanvasPoint outputAnchor(const Glib::ustring& port);
    CanvasPoint inputAnchor(const Glib::ustring& port);

    /// Gives up the object: it stays in the manager when this node is destroyed.
    void release();

    /// Gives up the items, before the canvas is destroyed or cleared as a whole.
    void leaveCanvas();

    /// Points to this node or to the one that has replaced it, and to null after that has been deleted too.
    std::shared_ptr<plugin*> handle() const;

    /// Replaces another node of the same object, which gives up the object.
    void replace(plugin& former);

    Glib::RefPtr<Goocanvas::Rect> box;    ///< Empty until the first draw; its "title" is the object's name.
    Glib::ustring uniqueName;             ///< Name when the node was created; a rename does not change it.
    Glib::ustring kindName;               ///< Second title line.
    std::vector<TextItem> inputTexts;     ///< In port order; "title" is "input".
    std::vector<TextItem> outputTexts;    ///< In port order; without "title".
    NameMap<unsigned short> inputIndex;   ///< Name of an input: its position in inputTexts.
    NameMap<unsigned short> outputIndex;  ///< Name of an output: its position in outputTexts.
    bool hasMoved = true;                 ///< Since the main window has laid its wires: an anchor may be elsewhere.
    bool changed = false;  ///< Edited in the variables dialog since the last save; read by the main window only.

private:
    /// Position of the box, and its size without the header.
    struct Frame {
        double x, y, width, height;
    };

    Glib::ustring freeName(const Glib::ustring& wanted) const;
    Frame measure();
    CanvasPoint canvasExtent() const;  ///< Lower right corner; the upper left one is (0, 0).
    void freeTooltips();
    void removeItems();
    void drawBox(const Frame& frame, std::uint32_t colour);
    void drawInputs(const Frame& frame);
    void drawOutputs(const Frame& frame);
    TextItem addTitle(const std::string& text, CanvasPoint place, const char* font);
    TextItem makePort(const std::string& name, const std::string& description, CanvasPoint place,
                      Goocanvas::AnchorType anchor);

    QzManager* manager;
    Goocanvas::Canvas* canvas;
    QzBase* object;
    bool displaced = false;
    TextItem titleText;
    TextItem kindText;
    std::shared_ptr<plugin*> self = std::make_shared<plugin*>(this);
};

/// A port of a node, as a function argument.
struct NodePort {
    plugin& node;
    const Glib::ustring& port;
};
