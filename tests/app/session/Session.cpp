#include "Session.h"

#include "colours.h"

#include <cmath>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t ground = 0xABBAC9;
const std::vector<std::uint32_t> startFills{colours::start, colours::startSelected};
const std::vector<std::uint32_t> selectedFills{colours::startSelected, colours::otherSelected};

// Measures of a node, in canvas units; the canvas is not zoomed.
constexpr double handleHeight = 15;
constexpr double halfBorder = 1;
constexpr int nearness = 4;
// Height of the main window's and of the dialogs' row of buttons.
constexpr int halfButton = 12;

/// Counts the lines with the duration of the plug-in, printed at the end of a run.
std::ptrdiff_t countOfRuns(const std::string& errors, const std::string& plugin) {
    const std::regex line(plugin + ": [0-9.]+ s\n");
    return std::distance(std::sregex_iterator(errors.begin(), errors.end(), line), std::sregex_iterator());
}

bool isNear(int first, double second) {
    return std::abs(first - second) <= nearness;
}

}  // namespace

Session::Session(std::string name, std::map<std::string, std::string> environment)
    : name(std::move(name)), environment(std::move(environment)) {}

bool Session::start(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{VELMORAK_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Process::Setting setting = desktop.setting(folder());
    setting.environment.insert(environment.begin(), environment.end());
    editor = std::make_unique<Process>(command, setting);
    window = desktop.windowOf(*editor);
    return !window.empty() && desktop.activate(window);
}

bool Session::quit() {
    desktop.activate(window);
    desktop.pressKeys({"ctrl+q"});
    return editor->wait(20000) == 0;
}

std::string Session::find(const std::string& title) const {
    return desktop.act(
        {"search", "--onlyvisible", "--all", "--pid", std::to_string(editor->id()), "--name", "^" + title + "$"});
}

bool Session::activate(const std::string& title) {
    std::string found;
    return waitFor([&] {
               found = find(title);
               return !found.empty();
           }) &&
           desktop.activate(found);
}

bool Session::choose(int menu, int entryFromBelow, const std::string& title) {
    desktop.activate(window);
    std::vector<std::string> keys{"F10"};
    keys.insert(keys.end(), static_cast<std::size_t>(std::abs(menu)), menu > 0 ? "Right" : "Left");
    keys.insert(keys.end(), static_cast<std::size_t>(entryFromBelow), "Up");
    keys.emplace_back("Return");
    desktop.pressKeys(keys);
    return activate(title);
}

void Session::chooseInGroup(int group) {
    std::vector<std::string> keys{"Home"};
    keys.insert(keys.end(), static_cast<std::size_t>(group), "Down");
    keys.insert(keys.end(), {"shift+Right", "Down"});
    desktop.pressKeys(keys);
}

void Session::confirm() {
    desktop.pressKeys({"Return"});
}

void Session::cancel() {
    desktop.pressKeys({"Escape"});
}

bool Session::closeByManager(const std::string& title) {
    activate(title);
    desktop.pressKeys({"alt+F4"});
    return isGone(title);
}

bool Session::isGone(const std::string& title) {
    return waitFor([&] { return find(title).empty(); });
}

Screen Session::look() {
    Screen screen(desktop, folder() / "look.ppm");
    canvasArea = screen.findPlain(ground, desktop.areaOf(window));
    return screen;
}

ScreenArea Session::canvas() {
    waitFor([this] {
        look();
        return canvasArea.width > 0;
    });
    return canvasArea;
}

bool Session::seesPipeline() {
    return waitFor([this] { return look().find(startFills, canvasArea).width > 0; });
}

bool Session::run(const std::string& lastPlugin) {
    constexpr int patienceMs = 60000;
    const std::ptrdiff_t before = countOfRuns(errors(), lastPlugin);
    // A click while the previous run is still ending would stop that run.
    return waitFor([&] {
        clickStart();
        return waitFor([&] { return countOfRuns(errors(), lastPlugin) > before; }, patienceMs);
    });
}

void Session::clickStart() {
    desktop.activate(window);
    const ScreenArea main = area();
    desktop.click(main.x + main.width / 6, main.y + main.height - halfButton);
}

bool Session::hears(const std::string& text) {
    return waitFor([&] { return errors().find(text) != std::string::npos; });
}

std::string Session::lookOfStart() {
    const ScreenArea main = area();
    const fs::path whole = folder() / "start.png";
    desktop.screenshot(whole);
    std::ostringstream part;
    part << main.width / 3 << "x" << 2 * halfButton << "+" << main.x << "+" << main.y + main.height - 2 * halfButton;
    const fs::path file = folder() / "start.ppm";
    Process({"convert", whole.string(), "-crop", part.str(), "+repage", file.string()}).wait();
    return contentOf(file);
}

bool Session::select(const SavedPipeline& shown, const std::string& name) {
    desktop.activate(window);
    const Screen screen = look();
    const ScreenArea start = screen.find(startFills, canvasArea);
    const double originX = start.x - shown.nodes.front().x - halfBorder;
    const double originY = start.y - shown.nodes.front().y - halfBorder;
    const SavedNode& node = shown.node(name);
    desktop.click(static_cast<int>(originX + node.x + node.width / 2),
                  static_cast<int>(originY + node.y + handleHeight));
    return waitFor([&] {
        const ScreenArea box = look().find(selectedFills, canvasArea);
        return box.width > 0 && isNear(box.x, originX + node.x) && isNear(box.y, originY + node.y);
    });
}

std::string Session::shownWindow(const std::string& type) const {
    std::istringstream windows(
        desktop.act({"search", "--onlyvisible", "--all", "--pid", std::to_string(editor->id()), "--class", "."}));
    for (std::string shown; std::getline(windows, shown);) {
        Process ask({"xprop", "-id", shown, "_NET_WM_WINDOW_TYPE"}, desktop.setting({}));
        ask.wait();
        if (ask.output().find("_NET_WM_WINDOW_TYPE_" + type) != std::string::npos) {
            return shown;
        }
    }
    return "";
}

bool Session::pointAtStart() {
    const ScreenArea box = look().find(startFills, canvasArea);
    const std::string y = std::to_string(box.y + static_cast<int>(handleHeight));
    desktop.act({"mousemove", std::to_string(box.x + box.width / 2), y, "mousemove",
                 std::to_string(box.x + box.width / 2 + 2), y});
    return seesTooltip();
}

bool Session::seesTooltip() {
    return waitFor([this] { return !shownWindow("TOOLTIP").empty(); });
}

void Session::move(const std::string& title, int x, int y) {
    const std::string moved = find(title);
    desktop.act({"windowmove", moved, std::to_string(x), std::to_string(y)});
    waitFor([&] { return desktop.areaOf(moved).x >= x; });
}

std::string Session::askToQuit() {
    desktop.activate(window);
    desktop.pressKeys({"ctrl+q"});
    std::string question;
    waitFor([&] {
        question = shownWindow("DIALOG");
        return !question.empty();
    });
    return question;
}

std::vector<std::string> Session::stack() const {
    Process ask({"xprop", "-root", "_NET_CLIENT_LIST_STACKING"}, desktop.setting({}));
    ask.wait();
    const std::string said = ask.output();
    const std::regex number("0x[0-9a-f]+");
    std::vector<std::string> windows;
    for (std::sregex_iterator found(said.begin(), said.end(), number), end; found != end; ++found) {
        windows.push_back(std::to_string(std::stoul(found->str(), nullptr, 16)));
    }
    return windows;
}

bool Session::quitByReturn(const std::string& question) {
    desktop.activate(question);
    desktop.pressKeys({"Return"});
    return editor->wait(20000) == 0;
}

bool Session::openVariables(const std::string& name) {
    desktop.activate(window);
    desktop.pressKeys({"alt+v"});
    return activate(name + " Variables");
}

void Session::type(int row, const std::string& text) {
    std::vector<std::string> keys(static_cast<std::size_t>(row), "Tab");
    keys.emplace_back("ctrl+a");
    desktop.pressKeys(keys);
    desktop.act({"type", "--delay", "50", text});
}

void Session::pressButton(const std::string& title, int button) {
    activate(title);
    const ScreenArea area = desktop.areaOf(find(title));
    desktop.click(area.x + area.width * (2 * button + 1) / 6, area.y + area.height - halfButton);
}

std::string Session::openList() {
    std::string list;
    waitFor([&] {
        list = shownWindow("COMBO");
        return !list.empty();
    });
    return list;
}

bool Session::listIsClosed() {
    return waitFor([this] { return shownWindow("COMBO").empty(); });
}

bool Session::openKindSelector() {
    desktop.activate(window);
    const ScreenArea main = area();
    desktop.click(main.x + main.width * 5 / 6, main.y + main.height - halfButton);
    return !openList().empty();
}

bool Session::seesMenu() {
    return waitFor([this] { return !shownWindow("POPUP_MENU").empty(); });
}

bool Session::maximise() {
    desktop.activate(window);
    constexpr int halfTitleBar = 10;
    const ScreenArea before = area();
    desktop.act({"mousemove", std::to_string(before.x + before.width / 2), std::to_string(before.y - halfTitleBar),
                 "click", "--repeat", "2", "--delay", "50", "1"});
    return waitFor([&] { return area().width > before.width; }) && desktop.activate(window);
}

bool Session::resize(int width, int height) {
    constexpr int besideCanvas = 60;
    desktop.act({"windowsize", window, std::to_string(width), std::to_string(height)});
    // The server knows the new size before the program has applied it.
    return waitFor([&] {
        look();
        return canvasArea.width > width - besideCanvas && area().width == width;
    });
}

bool Session::saveAs(const fs::path& file, const std::string& key) {
    desktop.activate(window);
    desktop.pressKeys({key});
    if (!activate("Save as")) {
        return false;
    }
    type(0, file.string());
    picture("Save as", "save-as");
    // The button is enabled only after the chooser has checked the name.
    const bool isChosen = waitFor([this] {
        desktop.pressKeys({"Return"});
        return waitFor([this] { return find("Save as").empty(); }, 3000);
    });
    return isChosen && waitFor([&] { return fs::exists(file); });
}

bool Session::makes(const std::string& key, const fs::path& file) {
    desktop.activate(window);
    desktop.pressKeys({key});
    return waitFor([&] { return fs::exists(file); });
}

bool Session::scrollToTop(const SavedNode& start) {
    constexpr const char* up = "4";
    return waitFor([&] {
        const Screen screen = look();
        const ScreenArea box = screen.find(startFills, canvasArea);
        if (box.width > 0 && isNear(box.x, canvasArea.x + start.x) && isNear(box.y, canvasArea.y + start.y)) {
            return true;
        }
        desktop.act({"mousemove", std::to_string(canvasArea.x + canvasArea.width / 2),
                     std::to_string(canvasArea.y + canvasArea.height / 2), "click", "--repeat", "5", up});
        return false;
    });
}

void Session::takeCanvas(const fs::path& model, const fs::path& file) {
    desktop.act({"mousemove", "--sync", "1270", "1190"});
    const fs::path whole = pictureFile("canvas");
    desktop.screenshot(whole);
    Process measure({"identify", "-format", "%wx%h", model.string()});
    measure.wait();
    const std::string area = measure.output() + "+" + std::to_string(canvasArea.x) + "+" + std::to_string(canvasArea.y);
    Process({"convert", whole.string(), "-crop", area, "+repage", file.string()}).wait();
}

fs::path Session::pictureFile(const std::string& step) const {
    return fs::path(VELMORAK_PICTURES) / (name + "-" + step + ".png");
}

void Session::picture(const std::string& title, const std::string& step) {
    // A window's own title would find its frame as well, which has no process.
    const std::string shown = title.empty() ? window : find(title);
    ++pictures;
    const std::string number = (pictures < 10 ? "0" : "") + std::to_string(pictures);
    const fs::path file = pictureFile(number + "-" + step);
    fs::create_directories(file.parent_path());
    Process({"import", "-frame", "-window", shown, file.string()}, desktop.setting({})).wait();
}

void Session::picture(const std::string& step) {
    picture("", step);
}

void Session::screenPicture(const std::string& step) {
    desktop.screenshot(pictureFile(step));
}
