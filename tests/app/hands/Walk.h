#pragma once

#include "Pipeline.h"
#include "Screen.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>

class QzManager;

/// How the pipeline is looked at during a walk.
struct View {
    std::string name;
    int zoomSteps = 0;  ///< Steps of 10 % from 100 %.
    int width = 0;      ///< Of the window, in pixels; 0: as it opens.
    int height = 0;
};

inline void PrintTo(const View& view, std::ostream* out) {
    *out << view.name;
}

/// The installed program on a screen of its own with a document that is empty or was filled, and hands that know where
/// things are on it. Every action waits until the document that the program saves shows what was done.
class Walk {
public:
    /// @param fill puts plug-ins into the document, the start plug-in in view.
    explicit Walk(View chosen, const std::function<void(QzManager&)>& fill = nullptr);
    ~Walk();

    bool isOpen() const { return !window.empty(); }
    const SavedPipeline& saved() const { return pipeline; }
    const WiredKind& kind() const { return wiredKind; }
    std::filesystem::path document() const { return folder.path() / "walk.zedra"; }
    double scale() const { return zoom; }

    void create();
    /// Drags a box by so many pixels. The box must be in view.
    bool dragBy(const std::string& name, int dx, int dy);
    /// Drags a box by so many pixels, and with the button still down has the window taken away by these words of
    /// xdotool. Lets go, brings the window back and moves the pointer. @return whether the box stays where it was left,
    /// in the document and on the screen.
    bool loseWhileDragging(const std::string& name, ScreenPoint travel, std::vector<std::string> leaving);
    const std::string& windowNumber() const { return window; }
    bool select(const std::string& name);
    bool wire(const std::string& sender, const std::string& receiver, const std::string& input);
    bool pullOff(const std::string& receiver, const std::string& from, const std::string& to);
    /// Presses a key and waits until the saved document is so.
    bool key(const std::string& key, const std::function<bool(const SavedPipeline&)>& isDone);
    void zoomBy(int steps);
    void scroll(int wheelSteps);  ///< Towards the bottom where positive.
    void picture(const std::string& step);
    bool quit();

private:
    void findFilled();
    /// Has the document written once. The program takes its events in turn, so all that came before is done then.
    bool hasCaughtUp();
    bool isShown() const;
    /// Whether the selected box is on the screen where the document says.
    bool isDrawnAsSaved();
    /// Has the document written until it is so.
    bool save(const std::function<bool(const SavedPipeline&)>& isDone);
    /// Finds the canvas in the window, and, by the box that is selected, what part of it is shown.
    void look(const std::string& selected, const std::vector<std::uint32_t>& fills);
    void lookAtSelected();
    ScreenPoint toScreen(double canvasX, double canvasY) const;
    ScreenPoint handleOf(const std::string& name) const;
    ScreenPoint inputOf(const std::string& name, const std::string& input) const;
    ScreenPoint outputOf(const std::string& name) const;
    /// Presses, moves and lets go.
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
    double originX = 0;  ///< Where the canvas's own origin lies on the screen.
    double originY = 0;
    int pictures = 0;
};
