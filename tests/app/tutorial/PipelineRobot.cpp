#include "PipelineRobot.h"

#include "colours.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

const std::vector<std::uint32_t> selectedFills{colours::startSelected, colours::otherSelected};
const std::vector<std::uint32_t> allFills{colours::start, colours::other, colours::startSelected,
                                          colours::otherSelected};

// Measures of the canvas and of a node, in canvas units; the canvas is not zoomed.
constexpr int canvasHeight = 1200;
constexpr float newPlace = 100;  // of a new box's lower left corner, from the canvas's
constexpr double headerHeight = 30;
constexpr double rowHeight = 20;
constexpr double portInset = 8;
constexpr double handleHeight = 15;

std::string word(int number) {
    return std::to_string(number);
}

std::string areaText(const ScreenArea& area) {
    return word(area.width) + "x" + word(area.height) + "+" + word(area.x) + "+" + word(area.y);
}

template <typename Ports>
int rowOf(const Ports& ports, const std::string& name) {
    const auto found =
        std::find_if(ports.begin(), ports.end(), [&name](const auto* port) { return port->name == name; });
    return found == ports.end() ? -1 : static_cast<int>(found - ports.begin());
}

int kindNumber(const std::string& kind) {
    const auto& kinds = QzManager::GetPlugins();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&kind](const QzKind& known) { return known.name == kind; });
    if (found == kinds.end()) {
        throw std::out_of_range("no kind " + kind);
    }
    return static_cast<int>(found - kinds.begin());
}

}  // namespace

PipelineRobot::PipelineRobot(Session& session) : session(session) {
    expected.SetFontSize(9, 11);
    const ScreenArea canvas = session.canvas();
    origin = {canvas.x, canvas.y + canvas.height - canvasHeight};  // The window opens at the bottom of the canvas.
}

QzBase& PipelineRobot::plugin(const std::string& name) {
    QzBase* found = expected.FindPlugin(name);
    if (!found) {
        throw std::out_of_range("no plug-in " + name);
    }
    return *found;
}

double PipelineRobot::widthOf(const std::string& name) {
    float width = 0;
    float height = 0;
    plugin(name).GetDrawnExtent(width, height);
    return width;
}

ScreenPoint PipelineRobot::toScreen(CanvasPlace place) const {
    return {origin.x + static_cast<int>(std::lround(place.x)), origin.y + static_cast<int>(std::lround(place.y))};
}

ScreenPoint PipelineRobot::handleOf(const std::string& name) {
    const CanvasPlace corner = corners.at(name);
    return toScreen({corner.x + widthOf(name) / 2, corner.y + handleHeight});
}

ScreenPoint PipelineRobot::placeOf(const Port& port) {
    QzBase& node = plugin(port.plugin);
    const CanvasPlace corner = corners.at(port.plugin);
    const int input = rowOf(node.IsExpanded() ? node.FullInputs() : node.ReducedInputs(), port.name);
    if (input >= 0) {
        return toScreen({corner.x + portInset, corner.y + headerHeight + rowHeight * input});
    }
    const int output = rowOf(node.IsExpanded() ? node.FullOutputs() : node.ReducedOutputs(), port.name);
    if (output < 0) {
        throw std::out_of_range(port.plugin + " shows no port " + port.name);
    }
    return toScreen({corner.x + widthOf(port.plugin) - portInset, corner.y + headerHeight + rowHeight * output});
}

bool PipelineRobot::hasCaughtUp() {
    // The program handles events in order. Exporting the image of the canvas has no effect on the document.
    const fs::path image = session.folder() / "test.png";
    fs::remove(image);
    session.pressKeys({"alt+i"});
    const bool isServed = waitFor([&] { return fs::exists(image); });
    fs::remove(image);
    return isServed;
}

bool PipelineRobot::point(ScreenPoint to) {
    pointer = to;
    session.act({"mousemove", word(to.x), word(to.y)});
    return hasCaughtUp();
}

void PipelineRobot::leaveWindow() {
    point({5, 5});
}

bool PipelineRobot::isShown(const std::string& name, const std::vector<std::uint32_t>& fills) {
    // Between the title and the first port, where no text is.
    const CanvasPlace corner = corners.at(name);
    const ScreenPoint place = toScreen({corner.x + 12, corner.y + 20});
    return waitFor([&] { return session.look().find(fills, {place.x, place.y, 6, 2}).width > 0; });
}

bool PipelineRobot::findKind(const std::string& kind) {
    foundKind = kind;
    if (!session.openKindSelector()) {
        return false;
    }
    // The list opens at its heading, which is not a kind.
    session.pressKeys(std::vector<std::string>(static_cast<std::size_t>(kindNumber(kind)) + 1, "Down"));
    return true;
}

bool PipelineRobot::placeFound() {
    session.pressKeys({"Return"});
    std::string name = foundKind;
    for (int number = 1; expected.FindPlugin(name); ++number) {
        name = foundKind + word(number);
    }
    QzBase* node = expected.CreatePlugin(static_cast<std::uint16_t>(kindNumber(foundKind)), name);
    node->SetPosition(newPlace, newPlace);
    float width = 0;
    float height = 0;
    node->GetOuterExtent(width, height);
    corners[name] = {newPlace, static_cast<double>(canvasHeight) - newPlace - height};
    return session.listIsClosed() && session.toFront() && hasCaughtUp() && isShown(name, allFills);
}

bool PipelineRobot::drag(const std::string& name, CanvasPlace to, const WhileHeld& whileHeld) {
    const CanvasPlace from = corners.at(name);
    const ScreenPoint handle = handleOf(name);
    point(handle);
    session.act({"mousedown", "1"});
    // The program reads the pointer's position when an event arrives: the pointer must still be there.
    if (!hasCaughtUp()) {
        return false;
    }
    point({handle.x + static_cast<int>(to.x - from.x), handle.y + static_cast<int>(to.y - from.y)});
    if (whileHeld) {
        whileHeld();
    }
    corners[name] = to;
    storePlace(name);
    return release() && isShown(name, selectedFills);
}

void PipelineRobot::storePlace(const std::string& name) {
    const CanvasPlace corner = corners.at(name);
    float width = 0;
    float height = 0;
    plugin(name).GetOuterExtent(width, height);
    plugin(name).SetPosition(static_cast<float>(corner.x), static_cast<float>(canvasHeight - corner.y - height));
}

bool PipelineRobot::select(const std::string& name) {
    const ScreenPoint handle = handleOf(name);
    point(handle);
    session.act({"click", "1"});
    storePlace(name);
    return hasCaughtUp() && isShown(name, selectedFills);
}

bool PipelineRobot::typeValues(const std::string& name, const Values& values) {
    if (!session.openVariables(name)) {
        return false;
    }
    edited = name;
    typed = values;
    int row = 0;
    for (const auto& [input, value] : values) {
        const int inputRow = plugin(name).InputIndex(input) + 1;  // The row of the name comes first.
        const std::string key = inputRow < row ? "shift+Tab" : "Tab";
        session.pressKeys(std::vector<std::string>(static_cast<std::size_t>(std::abs(inputRow - row)), key));
        session.type(0, value);
        row = inputRow;
    }
    session.pressKeys({"Home"});  // Shows the beginning of a long value.
    return true;
}

bool PipelineRobot::acceptValues() {
    session.pressButton(edited + " Variables", 0);
    apply(edited, typed);
    return session.isGone(edited + " Variables") && session.toFront() && hasCaughtUp();
}

void PipelineRobot::apply(const std::string& name, const Values& values) {
    for (const auto& [input, value] : values) {
        expected.SetInputValue(expected.IndexOf(name), plugin(name).InputIndex(input), value);
    }
}

bool PipelineRobot::pullFrom(const Port& port, ScreenPoint to) {
    const ScreenPoint from = placeOf(port);
    point(from);
    session.act({"mousedown", "1"});
    return hasCaughtUp() && point({(from.x + to.x) / 2, (from.y + to.y) / 2}) && point(to);
}

bool PipelineRobot::release() {
    session.act({"mouseup", "1"});
    return hasCaughtUp();
}

bool PipelineRobot::wire(const Port& output, const Port& input, const WhileHeld& whileHeld) {
    bool isDrawn = pullFrom(output, placeOf(input));
    if (whileHeld) {
        whileHeld();
    }
    isDrawn = release() && isDrawn;
    plugin(input.plugin).Connect(input.name, &plugin(output.plugin), output.name);
    return isDrawn;
}

bool PipelineRobot::unwire(const Port& input, CanvasPlace emptyPlace, const WhileHeld& whileHeld) {
    bool isPulled = pullFrom(input, toScreen(emptyPlace));
    if (whileHeld) {
        whileHeld();
    }
    isPulled = release() && isPulled;
    QzBase& receiver = plugin(input.plugin);
    const QzBase::Input& port = receiver.Inputs().at(static_cast<std::size_t>(receiver.InputIndex(input.name)));
    if (port.source) {
        port.source->Disconnect(port.source->Outputs().at(port.sourceOutput).name, &receiver, input.name);
    }
    return isPulled;
}

bool PipelineRobot::collapse(const std::string& name) {
    const bool isSelected = select(name);
    session.pressKeys({"alt+c"});
    plugin(name).SetExpanded(!plugin(name).IsExpanded());
    return isSelected && hasCaughtUp();
}

bool PipelineRobot::setStart(const std::string& name) {
    const bool isSelected = select(name);
    session.pressKeys({"alt+s"});
    expected.SetStart(expected.IndexOf(name));
    return isSelected && hasCaughtUp() && isShown(name, {colours::startSelected});
}

bool PipelineRobot::remove(const std::string& name) {
    const bool isSelected = select(name);
    session.pressKeys({"Delete"});
    forget(name);
    return isSelected && hasCaughtUp();
}

bool PipelineRobot::removeByMenu(const std::string& name) {
    session.pressKeys({"Up", "Return"});
    forget(name);
    return session.toFront() && hasCaughtUp();
}

void PipelineRobot::forget(const std::string& name) {
    expected.DeletePlugin(expected.IndexOf(name));
    corners.erase(name);
}

bool PipelineRobot::pointAtHandle(const std::string& name) {
    return point(handleOf(name));
}

bool PipelineRobot::openMenu(const std::string& name) {
    point(handleOf(name));
    session.act({"click", "3"});
    return session.seesMenu();
}

bool PipelineRobot::pointAt(const Port& port) {
    const ScreenPoint place = placeOf(port);
    point(place);
    // Do not press a key after this: it would hide the tooltip.
    pointer = {place.x - 2, place.y};
    session.act({"mousemove", word(pointer.x), word(pointer.y)});
    return session.seesTooltip();
}

void PipelineRobot::canvasPicture(const std::string& step, CanvasPlace corner, int width, int height) {
    const ScreenPoint start = toScreen(corner);
    screenPicture(step, {start.x, start.y, width, height});
}

void PipelineRobot::screenPicture(const std::string& step, const ScreenArea& part) {
    const fs::path whole = session.folder() / "screen.png";
    session.screenshot(whole);
    // A picture of the screen does not contain the pointer.
    const std::string arrow = "translate " + word(pointer.x) + "," + word(pointer.y) +
                              " polygon 0,0 0,16 4,12.5 7,19 9.5,18 6.5,11.5 11.5,11.5";
    Process({"convert", whole.string(), "-fill", "white", "-stroke", "black", "-draw", arrow, "-crop", areaText(part),
             "+repage", session.pictureFile(step).string()})
        .wait();
}
