#pragma once

#include "Pipeline.h"
#include "Screen.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>

class QzManager;

/// Zoom and window size during a walk.
struct View {
    std::string name;
    int zoomSteps = 0;  ///< Steps of 10 % from 100 %.
    int width = 0;      ///< Of the window, in pixels; 0: as it opens.
    int height = 0;
};

inline void PrintTo(const View& view, std::ostream* out) {
    *out << view.name;
}

/// Drives the installed program on a private screen, with an empty or prepared document. Every action waits until the
/// document saved by the program shows the change.
class Walk {
public:
    /// @param fill adds plug-ins to the document, with the start plug-in in view.
    explicit Walk(View chosen, const std::function<void(QzManager&)>& fill = nullptr);
    ~Walk();

    bool isOpen() const { return !window.empty(); }
    const SavedPipeline& saved() const { return pipeline; }
    const WiredKind& kind() const { return wiredKind; }
    std::filesystem::path document() const { return folder.path() / "walk.zedra"; }
    double scale() const { return zoom; }

    void create();
    /// Drags a box by that many pixels. The box must be in view.
    bool dragBy(const std::string& name, int dx, int dy);
    /// Drags a box by that many pixels and, with the button still pressed, makes xdotool take the window away with
    /// these arguments. Then releases the button, brings the window back and moves the pointer. @return whether the box
    /// has stayed where it was, in the document and on the screen.
    bool loseWhileDragging(const std::string& name, ScreenPoint travel, std::vector<std::string> leaving);
    const std::string& windowNumber() const { return window; }
    bool select(const std::string& name);
    bool wire(const std::string& sender, const std::string& receiver, const std::string& input);
    bool pullOff(const std::string& receiver, const std::string& from, const std::string& to);
    /// Presses a key and waits until the saved document meets the condition.
    bool key(const std::string& key, const std::function<bool(const SavedPipeline&)>& isDone);
    void zoomBy(int steps);
    void scroll(int wheelSteps);  ///< Positive: towards the bottom.
    void picture(const std::string& step);
    bool quit();

private:
    void findFilled();
    /// Saves the document once. The program handles events in order, so all previous ones are done then.
    bool hasCaughtUp();
    bool isShown() const;
    /// Whether the selected box is on the screen at its position in the document.
    bool isDrawnAsSaved();
    /// Saves the document until it meets the condition.
    bool save(const std::function<bool(const SavedPipeline&)>& isDone);
    /// Finds the canvas in the window and, from the selected box, its visible part.
    void look(const std::string& selected, const std::vector<std::uint32_t>& fills);
    void lookAtSelected();
    ScreenPoint toScreen(double canvasX, double canvasY) const;
    ScreenPoint handleOf(const std::string& name) const;
    ScreenPoint inputOf(const std::string& name, const std::string& input) const;
    ScreenPoint outputOf(const std::string& name) const;
    /// Presses, moves and releases.
    bool pull(ScreenPoint from, ScreenPoint to);

    View view;
    WiredKind wiredKind = WiredKind::first();
    TemporaryFolder folder;
    Desktop desktop;
    std::unique_ptr<Process> editor;
    std::string window;
    SavedPipeline pipeline;
    std::string selectedName;
    ScreenArea canvasArea;
    double zoom = 1;
    double originX = 0;  ///< The canvas's origin on the screen.
    double originY = 0;
    int pictures = 0;
};
