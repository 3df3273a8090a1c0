#pragma once

#include "Recording.h"
#include "plugin.h"
#include "vkWindow.h"

#include <gmock/gmock.h>
#include <gtkmm/dialog.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// The main window, with its protected members accessible to tests.
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

/// The path data of a path on the canvas.
std::string pathText(const Glib::RefPtr<Goocanvas::Path>& path);

/// Runs the main loop until the condition is true. Guards against hanging: after ten seconds, it fails the test at the
/// caller's line and returns false. Clang 14 does not compile the std::source_location of its C++ library.
bool pumpUntil(const std::function<bool()>& condition, const char* file = __builtin_FILE(),
               int line = __builtin_LINE());

/// Runs the main loop until no events are pending.
void pump();

/// A manager that a test makes anew; final, because the destructor of its class is not virtual.
struct OwnManager final : QzManager {
    using QzManager::QzManager;
};

/// An editor with the recording library, which offers a few arithmetic kinds.
class EditorTest : public ::testing::Test {
protected:
    EditorTest();
    ~EditorTest() override;

    /// Kinds: Number (out value), Adder (in a, b; out sum), Splitter (in x; out low, high), Note (no ports).
    /// Examples: "sum.zedra" in "Basics". Documents: see the source.
    static std::string script();

    /// Creates a new manager and a new window, with `text` as the library's script, and clears the recorded calls.
    void restart(const std::string& text);

    /// Closes the window as the program does when it ends.
    void closeWindow();

    /// Adds a plug-in. @return its node.
    plugin& add(const std::string& kind);
    plugin& node(const std::string& name);
    QzBase& object(const std::string& name);

    /// Path data of the wire into the input; empty if there is none.
    std::string pathInto(const std::string& name, const std::string& input);

    /// Names of all boxes on the canvas, from the bottom up.
    std::vector<std::string> boxesOnCanvas();
    int pathsOnCanvas();

    /// Waits for the next dialog, inspects it and answers it; `lastQuestion` keeps its text.
    void answerNext(int response, std::function<void(Gtk::Dialog&)> look = nullptr);

    /// Activates an action, like its menu item or its accelerator.
    void activate(const std::string& action);

    /// Selects a box like a click on it.
    void select(const std::string& name);

    std::optional<OwnManager> manager;
    std::unique_ptr<OpenWindow> window;
    std::string lastQuestion;

private:
    sigc::connection waiting;
};

/// The value of an item's property.
template <typename T>
T propertyOf(const Glib::RefPtr<Goocanvas::Item>& item, const char* name) {
    T value{};
    item->get_property(name, value);
    return value;
}
