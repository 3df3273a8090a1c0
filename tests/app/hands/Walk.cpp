#include "Walk.h"

#include "colours.h"

#include <QzManager.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <utility>

namespace {

constexpr std::uint32_t ground = 0xABBAC9;
const std::vector<std::uint32_t> selectedFills{colours::startSelected, colours::otherSelected};
const std::vector<std::uint32_t> allFills{colours::start, colours::other, colours::startSelected,
                                          colours::otherSelected};

// Measures of a node, in canvas units.
constexpr double header = 30;
constexpr double row = 20;
constexpr double portInset = 8;
constexpr double handleHeight = 15;
constexpr double halfBorder = 1;

// A box follows the pointer by whole units.
constexpr double wholeUnit = 1;

double rowOf(const std::vector<std::string>& ports, const std::string& port) {
    return header + row * static_cast<double>(std::find(ports.begin(), ports.end(), port) - ports.begin());
}

std::string word(int number) {
    return std::to_string(number);
}

}  // namespace

Walk::Walk(View chosen, const std::function<void(QzManager&)>& fill) : view(std::move(chosen)) {
    QzManager library("QzAnalysisFactory");
    library.SetFontSize(9, 11);
    if (fill) {
        fill(library);
    }
    std::ofstream(document()) << library.DocumentText();
    editor = std::make_unique<Process>(std::vector<std::string>{VELMORAK_PROGRAM, document().string()},
                                       desktop.setting(folder.path()));
    window = desktop.windowOf(*editor);
    if (window.empty()) {
        return;
    }
    desktop.act({"windowactivate", "--sync", window});
    if (view.width > 0) {
        desktop.act({"windowmove", window, "20", "20"});
        desktop.act({"windowsize", window, word(view.width), word(view.height)});
        // The server knows the new size before the program has applied it.
        waitFor([this] {
            const Screen screen(desktop, folder.path() / "look.ppm");
            return screen.findPlain(ground, desktop.areaOf(window)).width > view.width - 60;
        });
    }
    zoomBy(view.zoomSteps);
    if (fill) {
        findFilled();
    }
}

void Walk::findFilled() {
    waitFor([this] {
        const Screen screen(desktop, folder.path() / "look.ppm");
        return screen.find({colours::start}, desktop.areaOf(window)).width > 0;
    });
    pipeline = SavedPipeline::read(document());
    look(pipeline.nodes.front().name, {colours::start});
}

Walk::~Walk() = default;

void Walk::create() {
    const ScreenArea area = desktop.areaOf(window);
    desktop.click(area.x + area.width * 5 / 6, area.y + area.height - 12);
    // The list opens at its heading, which is not a kind.
    std::vector<std::string> keys(static_cast<std::size_t>(wiredKind.number) + 1, "Down");
    keys.emplace_back("Return");
    desktop.pressKeys(keys);
    const std::size_t count = pipeline.nodes.size() + 1;
    if (save([count](const SavedPipeline& now) { return now.nodes.size() == count; })) {
        selectedName = pipeline.nodes.back().name;
        look(selectedName, allFills);
    }
}

bool Walk::save(const std::function<bool(const SavedPipeline&)>& isDone) {
    return waitFor([&] {
        if (!hasCaughtUp()) {
            return false;
        }
        pipeline = SavedPipeline::read(document());
        return isDone(pipeline);
    });
}

bool Walk::hasCaughtUp() {
    constexpr int patienceMs = 60000;
    const auto former = std::filesystem::last_write_time(document());
    desktop.act({"key", "ctrl+s"});
    return waitFor([&] { return std::filesystem::last_write_time(document()) != former; }, patienceMs);
}

bool Walk::key(const std::string& key, const std::function<bool(const SavedPipeline&)>& isDone) {
    desktop.pressKeys({key});
    return save(isDone);
}

void Walk::zoomBy(int steps) {
    const std::vector<std::string> keys(static_cast<std::size_t>(std::abs(steps)), steps > 0 ? "plus" : "minus");
    desktop.pressKeys(keys);
    zoom += 0.1 * steps;
    if (!selectedName.empty()) {
        lookAtSelected();
    }
}

void Walk::scroll(int wheelSteps) {
    const ScreenPoint middle{canvasArea.x + canvasArea.width / 2, canvasArea.y + canvasArea.height / 2};
    for (int i = 0; i < std::abs(wheelSteps); ++i) {
        desktop.click(middle.x, middle.y, wheelSteps > 0 ? 5 : 4);
    }
    lookAtSelected();
}

void Walk::look(const std::string& selected, const std::vector<std::uint32_t>& fills) {
    const Screen screen(desktop, folder.path() / "look.ppm");
    canvasArea = screen.findPlain(ground, desktop.areaOf(window));
    const ScreenArea box = screen.find(fills, canvasArea);
    const SavedNode& node = pipeline.node(selected);
    originX = box.x - (node.x + halfBorder) * zoom;
    originY = box.y - (node.y + halfBorder) * zoom;
}

void Walk::lookAtSelected() {
    look(selectedName, selectedFills);
}

ScreenPoint Walk::toScreen(double canvasX, double canvasY) const {
    return {static_cast<int>(std::lround(originX + canvasX * zoom)),
            static_cast<int>(std::lround(originY + canvasY * zoom))};
}

ScreenPoint Walk::handleOf(const std::string& name) const {
    const SavedNode& node = pipeline.node(name);
    return toScreen(node.x + node.width / 2, node.y + handleHeight);
}

ScreenPoint Walk::inputOf(const std::string& name, const std::string& input) const {
    const SavedNode& node = pipeline.node(name);
    return toScreen(node.x + portInset, node.y + rowOf(node.shownInputs, input));
}

ScreenPoint Walk::outputOf(const std::string& name) const {
    const SavedNode& node = pipeline.node(name);
    return toScreen(node.x + node.width - portInset, node.y + rowOf(node.shownOutputs, wiredKind.output));
}

bool Walk::pull(ScreenPoint from, ScreenPoint to) {
    desktop.act({"mousemove", word(from.x), word(from.y), "mousedown", "1"});
    // The program reads the pointer's position when an event arrives: the pointer must still be there.
    const bool isHeld = hasCaughtUp();
    desktop.act({"mousemove", word((from.x + to.x) / 2), word((from.y + to.y) / 2), "mousemove", word(to.x), word(to.y),
                 "mouseup", "1"});
    return isHeld;
}

bool Walk::dragBy(const std::string& name, int dx, int dy) {
    const ScreenPoint from = handleOf(name);
    const double x = pipeline.node(name).x + dx / zoom;
    const double y = pipeline.node(name).y + dy / zoom;
    if (!pull(from, {from.x + dx, from.y + dy})) {
        return false;
    }
    const bool isThere = save([&](const SavedPipeline& now) {
        return std::abs(now.node(name).x - x) <= wholeUnit && std::abs(now.node(name).y - y) <= wholeUnit;
    });
    selectedName = name;
    lookAtSelected();
    return isThere;
}

bool Walk::loseWhileDragging(const std::string& name, ScreenPoint travel, std::vector<std::string> leaving) {
    const ScreenPoint from = handleOf(name);
    const double x = pipeline.node(name).x + travel.x / zoom;
    const double y = pipeline.node(name).y + travel.y / zoom;
    desktop.act({"mousemove", word(from.x), word(from.y), "mousedown", "1"});
    bool isHeld = hasCaughtUp();
    desktop.act({"mousemove", word(from.x + travel.x), word(from.y + travel.y)});
    isHeld = hasCaughtUp() && isHeld;
    desktop.act(leaving);
    isHeld = waitFor([this] { return !isShown(); }) && isHeld;
    desktop.act({"mouseup", "1"});
    isHeld = desktop.activate(window) && isHeld;
    desktop.act({"mousemove", word(from.x), word(from.y + travel.y / 2)});
    selectedName = name;
    return isHeld && save([&](const SavedPipeline& now) {
               return std::abs(now.node(name).x - x) <= wholeUnit && std::abs(now.node(name).y - y) <= wholeUnit;
           }) &&
           isDrawnAsSaved();
}

bool Walk::isShown() const {
    const std::string shown =
        desktop.act({"search", "--onlyvisible", "--all", "--pid", std::to_string(editor->id()), "--class", "."});
    return shown.find(window) != std::string::npos;
}

bool Walk::isDrawnAsSaved() {
    return waitFor([this] {
        const Screen screen(desktop, folder.path() / "look.ppm");
        const ScreenArea box = screen.find(selectedFills, canvasArea);
        const ScreenPoint corner = toScreen(pipeline.node(selectedName).x, pipeline.node(selectedName).y);
        return box.width > 0 && std::abs(box.x - corner.x) <= 4 && std::abs(box.y - corner.y) <= 4;
    });
}

bool Walk::select(const std::string& name) {
    const ScreenPoint handle = handleOf(name);
    desktop.click(handle.x, handle.y);
    selectedName = name;
    return isDrawnAsSaved();
}

bool Walk::wire(const std::string& sender, const std::string& receiver, const std::string& input) {
    const std::string source = sender + "." + wiredKind.output;
    return pull(outputOf(sender), inputOf(receiver, input)) && save([&](const SavedPipeline& now) {
               const auto& sources = now.node(receiver).sources;
               return sources.count(input) != 0 && sources.at(input) == source;
           });
}

bool Walk::pullOff(const std::string& receiver, const std::string& from, const std::string& to) {
    const std::string source = pipeline.node(receiver).sources.at(from);
    return pull(inputOf(receiver, from), inputOf(receiver, to)) && save([&](const SavedPipeline& now) {
               const auto& sources = now.node(receiver).sources;
               return sources.count(from) == 0 && sources.count(to) != 0 && sources.at(to) == source;
           });
}

void Walk::picture(const std::string& step) {
    ++pictures;
    const std::string number = (pictures < 10 ? "0" : "") + word(pictures);
    const std::string file = "walk-" + view.name + "-" + number + "-" + step + ".png";
    desktop.screenshot(std::filesystem::path(VELMORAK_PICTURES) / file);
}

bool Walk::quit() {
    // The last entry of the first menu; the document has just been saved, so there is no question.
    desktop.pressKeys({"F10", "Up", "Return"});
    return editor->wait(20000) == 0;
}
