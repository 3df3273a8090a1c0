#pragma once

#include "Session.h"

#include <QzManager.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// An input or an output of a plug-in.
struct Port {
    std::string plugin;
    std::string name;
};

/// A place on the canvas, in canvas units: x to the right, y downwards.
struct CanvasPlace {
    double x = 0;
    double y = 0;
};

/// Inputs with their values, in the order in which they are typed.
using Values = std::vector<std::pair<std::string, std::string>>;

/// Called at the end of a drag, before the button is released.
using WhileHeld = std::function<void()>;

/// Builds a pipeline in the window of a session with real events, and a copy of the pipeline in this process, which
/// gives the positions on the canvas and the expected content of the saved document.
class PipelineRobot {
public:
    /// Requires an open window whose canvas is empty, not scrolled and not zoomed.
    explicit PipelineRobot(Session& session);

    /// Opens the kind selector's list and goes to a kind. @return whether the list opened.
    bool findKind(const std::string& kind);
    /// Chooses the kind that was found. @return whether its box appeared at the position of new boxes.
    bool placeFound();
    bool place(const std::string& kind) { return findKind(kind) && placeFound(); }
    /// Drags a box until its upper left corner is there. @return whether the screen shows it there.
    bool drag(const std::string& name, CanvasPlace to, const WhileHeld& whileHeld = {});
    bool select(const std::string& name);
    /// Opens the variables of the selected plug-in and types the values.
    bool typeValues(const std::string& name, const Values& values);
    /// Presses "OK" in these variables.
    bool acceptValues();
    /// Presses on an output, or on the name of a connected input, and pulls the wire to a point.
    bool pullFrom(const Port& port, ScreenPoint to);
    /// Releases the wire.
    bool release();
    /// Draws a wire from an output to an input.
    bool wire(const Port& output, const Port& input, const WhileHeld& whileHeld = {});
    /// Pulls the wire off an input and drops it on the empty canvas there.
    bool unwire(const Port& input, CanvasPlace emptyPlace, const WhileHeld& whileHeld = {});
    bool collapse(const std::string& name);  ///< Or expands.
    bool setStart(const std::string& name);
    bool remove(const std::string& name);
    /// Opens the context menu of a box by the right button.
    bool openMenu(const std::string& name);
    /// Chooses "Delete", the last entry, from the context menu of that box.
    bool removeByMenu(const std::string& name);

    bool pointAtHandle(const std::string& name);
    /// Points at a port and waits for its tooltip.
    bool pointAt(const Port& port);

    QzManager& copy() { return expected; }
    ScreenPoint handleOf(const std::string& name);
    ScreenPoint placeOf(const Port& port);
    ScreenPoint toScreen(CanvasPlace place) const;

    /// Moves the pointer away from the window, so that no tooltip is in a picture.
    void leaveWindow();
    /// Saves a picture of a part of the canvas, with the pointer.
    void canvasPicture(const std::string& step, CanvasPlace corner, int width, int height);
    /// The same for a part of the screen.
    void screenPicture(const std::string& step, const ScreenArea& part);
    /// Waits until the window has handled all events so far.
    bool hasCaughtUp();

private:
    bool point(ScreenPoint to);
    bool isShown(const std::string& name, const std::vector<std::uint32_t>& fills);
    QzBase& plugin(const std::string& name);
    double widthOf(const std::string& name);
    /// Stores the position as the window does when the button is released over a box.
    void storePlace(const std::string& name);
    void forget(const std::string& name);
    void apply(const std::string& name, const Values& values);

    Session& session;
    QzManager expected{"QzAnalysisFactory"};
    std::map<std::string, CanvasPlace> corners;  ///< Upper left, by plug-in.
    std::string foundKind;
    std::string edited;
    Values typed;
    ScreenPoint pointer{0, 0};
    ScreenPoint origin{0, 0};  ///< The canvas's origin on the screen.
};
