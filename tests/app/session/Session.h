#pragma once

#include "Pipeline.h"
#include "Screen.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

/// Drives the installed program on a private screen, in a temporary folder. Every step waits until the screen, the
/// program's output or a file shows that it is done, and saves a picture.
class Session {
public:
    /// @param name        prefix of the names of its pictures.
    /// @param environment added to the default environment.
    Session(std::string name, std::map<std::string, std::string> environment);

    bool start(const std::vector<std::string>& arguments);
    bool quit();  ///< @return whether it ended at once, without a question, and with status 0.

    /// Chooses from a menu: `menu` steps to the right of File (negative: to the left), then `entryFromBelow` steps up
    /// from below the last entry. @return whether the window appeared.
    bool choose(int menu, int entryFromBelow, const std::string& title);
    /// Expands a group of a tree, counted from 0, and selects its first entry.
    void chooseInGroup(int group);
    void confirm();  ///< Presses Return.
    void cancel();   ///< Presses Escape.
    bool closeByManager(const std::string& title);

    /// Waits until a start plug-in is on the canvas. @return whether one appeared.
    bool seesPipeline();
    /// Clicks on Start and waits until the library reports once more that the plug-in is done.
    bool run(const std::string& lastPlugin);
    /// Clicks on Start, which is Stop during a run.
    void clickStart();
    /// Waits until the program has written this to standard error. @return whether it has.
    bool hears(const std::string& text);
    /// Picture of the start button on the screen, with the pointer elsewhere, as the content of a file.
    std::string lookOfStart();
    /// Selects a box of the visible pipeline.
    bool select(const SavedPipeline& shown, const std::string& name);
    /// Points at the start plug-in's box and waits for its tooltip. @return whether one appeared.
    bool pointAtStart();
    /// Opens the variables of the selected plug-in.
    bool openVariables(const std::string& name);
    /// Replaces the text in a row of the dialog whose first row has the keyboard focus; row 0 is the name.
    void type(int row, const std::string& text);
    /// Clicks on a button of the variables dialog: 0 "OK", 1 "Apply", 2 "Cancel".
    void pressButton(const std::string& title, int button);
    bool isGone(const std::string& title);
    /// Waits for the list of an entry or a selector. @return its window, empty if none appeared.
    std::string openList();
    bool listIsClosed();
    bool openKindSelector();  ///< Clicks on the kind selector. @return whether its list appeared.
    bool seesMenu();          ///< Waits for a context menu.
    bool seesTooltip();
    void pressKeys(const std::vector<std::string>& keys) const { desktop.pressKeys(keys); }
    void act(const std::vector<std::string>& words) const { desktop.act(words); }  ///< By xdotool.
    bool toFront() { return desktop.activate(window); }  ///< The main window, with the keyboard.
    Screen look();
    /// The part of the screen that shows the canvas.
    ScreenArea canvas();
    /// Makes the main window as large as the screen by a double click on its title bar. @return whether it is.
    bool maximise();
    /// @return whether the canvas has followed.
    bool resize(int width, int height);
    ScreenArea area() const { return desktop.areaOf(window); }  ///< Of the main window.
    /// Moves the window with that title.
    void move(const std::string& title, int x, int y);
    /// Makes the program ask its question before it ends, and waits for it. @return its window, empty if none appeared.
    std::string askToQuit();
    /// Windows of the desktop, from back to front.
    std::vector<std::string> stack() const;
    std::string windowOf(const std::string& title) const { return find(title); }
    ScreenArea areaOf(const std::string& shown) const { return desktop.areaOf(shown); }
    void click(int x, int y) const { desktop.click(x, y); }
    /// Presses Return in that window. @return whether the program ended with status 0.
    bool quitByReturn(const std::string& question);
    /// @param key opens the dialog.
    bool saveAs(const std::filesystem::path& file, const std::string& key = "ctrl+shift+s");
    /// Presses a key in the main window and waits until the file is there.
    bool makes(const std::string& key, const std::filesystem::path& file);

    /// Scrolls until the upper end of the canvas is in view, with the start plug-in at that position.
    bool scrollToTop(const SavedNode& start);
    /// Saves the upper left part of the canvas on the screen, with the size of the picture `model`. Moves the pointer
    /// away first.
    void takeCanvas(const std::filesystem::path& model, const std::filesystem::path& file);

    /// Saves a picture of one window, with its frame.
    void picture(const std::string& title, const std::string& step);
    void picture(const std::string& step);        ///< Of the main window.
    void screenPicture(const std::string& step);  ///< Of the whole screen, with open lists.
    void screenshot(const std::filesystem::path& file) const { desktop.screenshot(file); }
    std::filesystem::path pictureFile(const std::string& step) const;

    std::filesystem::path folder() const { return ownFolder.path(); }
    std::string errors() const { return editor->errors(); }
    std::string output() const { return editor->output(); }

private:
    std::string find(const std::string& title) const;
    bool activate(const std::string& title);
    std::string shownWindow(const std::string& type) const;  ///< A window of the program of that type.

    std::string name;
    std::map<std::string, std::string> environment;
    TemporaryFolder ownFolder;
    Desktop desktop;
    std::unique_ptr<Process> editor;
    std::string window;
    ScreenArea canvasArea;
    int pictures = 0;
};
