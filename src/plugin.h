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

/// The face of one analysis plug-in on the canvas: a box with two title lines and one text for each port shown.
///
/// Every item is a direct child of the canvas's root item.
/// Lengths:  canvas units, y downwards; the library keeps positions with y upwards.
/// Lifetime: wraps an object of the manager, and has the manager delete it when the node dies (unless released).
/// Threads:  the main thread only.
class plugin {
public:
    using TextItem = Glib::RefPtr<Goocanvas::Text>;

    /// Wraps `object`, or, where it is null, has the manager create one of the kind with that name and number, under
    /// a name of its own, at (100, 100) of the library's frame. Draws at once.
    plugin(QzManager* manager, Goocanvas::Canvas& canvas, QzBase* object, Glib::ustring name, unsigned short kind);

    /// Takes the items off the canvas, then has the manager delete the object.
    ~plugin();

    plugin(const plugin&) = delete;
    plugin& operator=(const plugin&) = delete;

    /// Makes all items anew. A redraw keeps the box's y and takes x from the library.
    void draw();

    /// Moves every item; positions snap to whole units before the step is added.
    void translate(float dx, float dy);

    /// Moves by the whole units of `travel`, as far as the title bar stays on the canvas. @return how far the box went.
    CanvasPoint follow(CanvasPoint travel);

    /// Above everything else on the canvas, the texts above their box.
    void raise_to_top();

    QzBase* GetPlugin();

    /// Whether the library's position is no place on the canvas, and the box is drawn beside it and not moved since.
    bool isDisplaced() const { return displaced; }

    /// Where a wire begins or ends: the place of that port's text. A name that is not shown is entered in the index as
    /// the first port; on a side that shows no port it is the place where the first one would stand.
    CanvasPoint outputAnchor(const Glib::ustring& port);
    CanvasPoint inputAnchor(const Glib::ustring& port);

    /// Lets go of the object: it stays in the manager when this node dies.
    void release();

    /// Lets go of the items, where the canvas goes or is cleared as a whole.
    void leaveCanvas();

    /// Leads to this node, or to the one that succeeded it; to null once that is gone too.
    std::shared_ptr<plugin*> handle() const;

    /// Takes the place of another node of the same object, which lets go of it.
    void succeed(plugin& former);

    Glib::RefPtr<Goocanvas::Rect> box;    ///< Empty until the first draw; its "title" is the object's name.
    Glib::ustring uniqueName;             ///< Name when the node was made; a later rename does not change it.
    Glib::ustring kindName;               ///< Second title line.
    std::vector<TextItem> inputTexts;     ///< In port order; "title" is "input".
    std::vector<TextItem> outputTexts;    ///< In port order; without "title".
    NameMap<unsigned short> inputIndex;   ///< Name of an input: its position in inputTexts.
    NameMap<unsigned short> outputIndex;  ///< Name of an output: its position in outputTexts.
    bool changed = false;  ///< Edited in the variables dialog since the last save. The node itself never reads it.

private:
    /// Where the box goes, and its size without the header.
    struct Frame {
        double x, y, width, height;
    };

    Glib::ustring freeName(const Glib::ustring& wanted) const;
    Frame measure();
    CanvasPoint canvasExtent() const;  ///< Lower right corner of the canvas, which begins at (0, 0).
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

/// One port of a node, while it is worked on.
struct NodePort {
    plugin& node;
    const Glib::ustring& port;
};
