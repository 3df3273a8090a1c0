#include "plugin.h"
#include "visible.h"

#include "canvasItems.h"
#include "canvasText.h"
#include "colours.h"

#include <QzBase.h>
#include <QzManager.h>
#include <goocanvas.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace {

constexpr double headerHeight = 30;
constexpr double rowHeight = 20;
constexpr double portInset = 5;

/// The name followed by a number, in a buffer of fixed length; a name that does not fit ends the program.
Glib::ustring numbered(const Glib::ustring& name, std::uint16_t number) {
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%s%u", name.c_str(), static_cast<unsigned>(number));
    if (length < 0 || static_cast<std::size_t>(length) >= buffer.size()) {
        std::cerr << "The name " << visible(name) << " is too long to append a number." << std::endl;
        std::abort();
    }
    return buffer.data();
}

/// The canvas library never frees the tooltip of an item, neither with the item nor when another tooltip is set.
void freeTooltip(const Glib::RefPtr<Goocanvas::Item>& item) {
    GooCanvasItemSimpleData* data = GOO_CANVAS_ITEM_SIMPLE(item->gobj())->simple_data;
    g_clear_pointer(&data->tooltip, g_free);
}

/// A larger position can only be corrupt, and would overflow in the toolkit.
constexpr double maxPosition = 1e6;

bool isPlace(double position) {
    return std::abs(position) <= maxPosition;  // NaN is not
}

/// The nearest position that leaves `length` in [0, end]; 0 for NaN.
double nearestPlace(double position, double length, double end) {
    return std::isnan(position) ? 0 : std::clamp(position, 0.0, std::max(0.0, end - length));
}

/// The whole units of `travel`, limited so that the step from `place` ends in [0, end] or does not lead farther away.
double wholeStep(double place, double travel, double end) {
    const double from = std::trunc(place);
    return std::clamp(from + std::trunc(travel), std::min(0.0, from), std::max(std::floor(end), from)) - from;
}

void shift(const Glib::RefPtr<Goocanvas::Item>& item, float dx, float dy) {
    int x = 0;
    int y = 0;
    item->get_property("x", x);
    item->get_property("y", y);
    item->set_property("x", static_cast<double>(static_cast<float>(x) + dx));
    item->set_property("y", static_cast<double>(static_cast<float>(y) + dy));
}

/// Reads the fields directly: a drag asks for thousands of positions per step, and reading properties is slow.
CanvasPoint placeOfText(const plugin::TextItem& text) {
    const GooCanvasTextData* data = text->gobj()->text_data;
    return {data->x, data->y};
}

/// An unknown name is added with position 0. Compares bytes first, which is much faster than the map's comparison by
/// the rules of the user's language.
unsigned short positionOf(NameMap<unsigned short>& index, const Glib::ustring& port) {
    for (const auto& [name, position] : index) {
        if (name.raw() == port.raw()) {
            return position;
        }
    }
    return index[port];
}

}  // namespace

plugin::plugin(QzManager* manager, Goocanvas::Canvas& canvas, QzBase* object, Glib::ustring name, unsigned short kind)
    : manager(manager), canvas(&canvas), object(object) {
    if (this->object) {
        kindName = this->object->GetKind()->name;
    } else {
        this->object = manager->CreatePlugin(kind, freeName(name));
        this->object->SetPosition(100, 100);
        kindName = std::move(name);
    }
    uniqueName = this->object->name;
    draw();
}

plugin::~plugin() {
    freeTooltips();
    if (*self == this) {
        *self = nullptr;
    }
    if (canvas) {
        removeItems();
    }
    if (object) {
        manager->DeletePlugin(manager->IndexOf(object->GetName()));
    }
}

Glib::ustring plugin::freeName(const Glib::ustring& wanted) const {
    Glib::ustring candidate = wanted;
    for (std::uint16_t number = 1; manager->FindPlugin(candidate) != nullptr; ++number) {
        candidate = numbered(wanted, number);
    }
    return candidate;
}

void plugin::draw() {
    const bool isStart = manager->IndexOf(object->GetName()) == 0;
    const Frame frame = measure();
    removeItems();
    drawBox(frame, isStart ? colours::start : colours::other);
    drawInputs(frame);
    drawOutputs(frame);
}

plugin::Frame plugin::measure() {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    object->GetPosition(x, y);
    object->GetExtent(width, height);
    displaced = !isPlace(x) || !isPlace(y);
    const double bottom = isPlace(y) ? y : nearestPlace(y, height + headerHeight, canvasSize.y);
    double canvasY = canvasSize.y - bottom - height - headerHeight;
    object->GetDrawnExtent(width, height);
    const double canvasX = isPlace(x) ? x : nearestPlace(x, width, canvasExtent().x);
    // Deliberate: a redraw never moves a node up or down, while x always comes from the library.
    if (box) {
        box->get_property("y", canvasY);
    }
    return {canvasX, canvasY, width, height};
}

CanvasPoint plugin::canvasExtent() const {
    double left = 0;
    double top = 0;
    CanvasPoint end{0, 0};
    canvas->get_bounds(left, top, end.x, end.y);
    return end;
}

void plugin::freeTooltips() {
    if (box) {
        freeTooltip(box);
    }
    for (const auto* texts : {&inputTexts, &outputTexts}) {
        for (const TextItem& text : *texts) {
            freeTooltip(text);
        }
    }
}

void plugin::removeItems() {
    hasMoved = true;
    freeTooltips();
    for (const auto* texts : {&inputTexts, &outputTexts}) {
        for (const TextItem& text : *texts) {
            text->remove();
        }
    }
    if (box) {
        titleText->remove();
        kindText->remove();
        box->remove();
    }
    inputTexts.clear();
    outputTexts.clear();
    inputIndex.clear();
    outputIndex.clear();
}

void plugin::drawBox(const Frame& frame, std::uint32_t colour) {
    box = Goocanvas::Rect::create(frame.x, frame.y, frame.width, frame.height + headerHeight);
    // One call for all properties: documents have thousands of boxes.
    g_object_set(box->gobj(), "radius-x", 10.0, "radius-y", 10.0, "fill-color-rgba", colour, "title",
                 object->GetName().c_str(), "can-focus", FALSE, "tooltip", object->description.c_str(), nullptr);
    canvas->get_root_item()->add_child(box);
    const double middle = frame.x + 0.5 * frame.width;
    titleText = addTitle(object->GetName(), {middle, frame.y + 2}, "Sans 8");
    kindText = addTitle(kindName.raw(), {middle, frame.y + 12}, "Sans 5");
}

void plugin::drawInputs(const Frame& frame) {
    double y = frame.y + headerHeight;
    for (const QzBase::Input* input : object->IsExpanded() ? object->FullInputs() : object->ReducedInputs()) {
        const TextItem text =
            makePort(input->name, input->description, {frame.x + portInset, y}, Goocanvas::ANCHOR_WEST);
        g_object_set(text->gobj(), "title", "input", nullptr);
        inputIndex[input->name] = static_cast<unsigned short>(inputTexts.size());
        inputTexts.push_back(text);
        canvas->get_root_item()->add_child(text);
        y += rowHeight;
    }
}

void plugin::drawOutputs(const Frame& frame) {
    double y = frame.y + headerHeight;
    const double x = frame.x + frame.width - portInset;
    for (const QzBase::Output* output : object->IsExpanded() ? object->FullOutputs() : object->ReducedOutputs()) {
        const TextItem text = makePort(output->name, output->description, {x, y}, Goocanvas::ANCHOR_EAST);
        outputIndex[output->name] = static_cast<unsigned short>(outputTexts.size());
        outputTexts.push_back(text);
        canvas->get_root_item()->add_child(text);
        y += rowHeight;
    }
}

plugin::TextItem plugin::addTitle(const std::string& text, CanvasPoint place, const char* font) {
    TextItem item = makeText(*canvas, text, place, Goocanvas::ANCHOR_NORTH, font);
    // Clicks reach the box below.
    g_object_set(item->gobj(), "pointer-events", GOO_CANVAS_EVENTS_NONE, nullptr);
    canvas->get_root_item()->add_child(item);
    return item;
}

plugin::TextItem plugin::makePort(const std::string& name, const std::string& description, CanvasPoint place,
                                  Goocanvas::AnchorType anchor) {
    TextItem item = makeText(*canvas, name, place, anchor, "Sans 8");
    g_object_set(item->gobj(), "can-focus", FALSE, "tooltip", description.c_str(), nullptr);
    return item;
}

void plugin::translate(float dx, float dy) {
    displaced = false;
    hasMoved = true;
    shift(box, dx, dy);
    shift(titleText, dx, dy);
    shift(kindText, dx, dy);
    for (const auto* texts : {&inputTexts, &outputTexts}) {
        for (const TextItem& text : *texts) {
            shift(text, dx, dy);
        }
    }
}

CanvasPoint plugin::follow(CanvasPoint travel) {
    const CanvasPoint before = placeOf(box);
    const CanvasPoint end = canvasExtent();
    double width = 0;
    box->get_property("width", width);
    const double dx = wholeStep(before.x, travel.x, end.x - width);
    const double dy = wholeStep(before.y, travel.y, end.y - headerHeight);
    if (dx == 0 && dy == 0) {
        return {0, 0};
    }
    translate(static_cast<float>(dx), static_cast<float>(dy));
    const CanvasPoint after = placeOf(box);
    return {after.x - before.x, after.y - before.y};
}

void plugin::raise_to_top() {
    box->raise();
    titleText->raise(box);
    kindText->raise(box);
    for (const auto* texts : {&inputTexts, &outputTexts}) {
        for (const TextItem& text : *texts) {
            text->raise(box);
        }
    }
}

CanvasPoint plugin::outputAnchor(const Glib::ustring& port) {
    const std::size_t position = positionOf(outputIndex, port);
    if (position < outputTexts.size()) {
        return placeOfText(outputTexts[position]);
    }
    double width = 0;
    box->get_property("width", width);
    const auto [x, y] = placeOf(box);
    return {x + width - portInset, y + headerHeight};
}

CanvasPoint plugin::inputAnchor(const Glib::ustring& port) {
    const std::size_t position = positionOf(inputIndex, port);
    if (position < inputTexts.size()) {
        return placeOfText(inputTexts[position]);
    }
    const auto [x, y] = placeOf(box);
    return {x + portInset, y + headerHeight};
}

QzBase* plugin::GetPlugin() {
    return object;
}

void plugin::release() {
    object = nullptr;
}

std::shared_ptr<plugin*> plugin::handle() const {
    return self;
}

void plugin::replace(plugin& former) {
    self = former.self;
    *self = this;
    changed = former.changed;
    former.release();
}

void plugin::leaveCanvas() {
    canvas = nullptr;
}
