#pragma once

#include "Recording.h"
#include "plugin.h"
#include "vkWindow.h"

#include <gmock/gmock.h>
#include <gtkmm/dialog.h>

#include <functional>
#include <memory>
#include <string>

/// The main window with its insides open to a test.
class OpenWindow : public vkWindow {
public:
    using vkWindow::actionGroup;
    using vkWindow::canvas;
    using vkWindow::connectAll;
    using vkWindow::connectionMap;
    using vkWindow::controlRow;
    using vkWindow::deleteAll;
    using vkWindow::dragging;
    using vkWindow::endGestures;
    using vkWindow::exampleWindow;
    using vkWindow::hasChanges;
    using vkWindow::kindMap;
    using vkWindow::kindSelector;
    using vkWindow::lastDialog;
    using vkWindow::lastPointer;
    using vkWindow::liveNodes;
    using vkWindow::mainBox;
    using vkWindow::manager;
    using vkWindow::menuBar;
    using vkWindow::modified;
    using vkWindow::nodeMenu;
    using vkWindow::nodeOf;
    using vkWindow::pathMap;
    using vkWindow::pluginMap;
    using vkWindow::pluginWindow;
    using vkWindow::pointerOnCanvas;
    using vkWindow::resetButton;
    using vkWindow::rubberBand;
    using vkWindow::scroller;
    using vkWindow::selectedItem;
    using vkWindow::selectedNode;
    using vkWindow::startButton;
    using vkWindow::uiManager;
    using vkWindow::wiring;
    using vkWindow::wiringSource;
    using vkWindow::worker;
};

/// The path's data as it was given to the canvas.
std::string pathText(const Glib::RefPtr<Goocanvas::Path>& path);

/// Lets the main loop turn until the condition holds. @return false when it does not within ten seconds.
bool pumpUntil(const std::function<bool()>& condition);

/// Lets the main loop turn until it has nothing to do.
void pump();

/// An editor over the recording library, with the kinds of a small arithmetic.
class EditorTest : public ::testing::Test {
protected:
    EditorTest();
    ~EditorTest() override;

    /// Kinds: Number (out value), Adder (in a, b; out sum), Splitter (in x; out low, high), Note (no ports).
    /// Examples: "sum.zedra" in "Basics". Documents: see the source.
    static std::string script();

    /// A new manager and a new window, with `text` as the library's script. The calls of this are forgotten.
    void restart(const std::string& text);

    /// As the program does it at its end.
    void closeWindow();

    /// A new plug-in; @return its node.
    plugin& add(const std::string& kind);
    plugin& node(const std::string& name);
    QzBase& object(const std::string& name);

    /// Text of the path drawn into the input, as it was given to the canvas; empty where there is none.
    std::string pathInto(const std::string& name, const std::string& input);

    /// Names of all boxes on the canvas, from the bottom up.
    std::vector<std::string> boxesOnCanvas();
    int pathsOnCanvas();

    /// Looks at the next dialog that comes and answers it; its text is kept in `lastQuestion`.
    void answerNext(int response, std::function<void(Gtk::Dialog&)> look = nullptr);

    /// As a choice from a menu or its accelerator.
    void activate(const std::string& action);

    /// Selects a box as a click on it does.
    void select(const std::string& name);

    std::unique_ptr<QzManager> manager;
    std::unique_ptr<OpenWindow> window;
    std::string lastQuestion;

private:
    sigc::connection waiting;
};

/// The item's property of that name.
template <typename T>
T propertyOf(const Glib::RefPtr<Goocanvas::Item>& item, const char* name) {
    T value{};
    item->get_property(name, value);
    return value;
}
