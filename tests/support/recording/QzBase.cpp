#include "Journal.h"
#include "Plugin.h"
#include "State.h"

#include <algorithm>

namespace {

constexpr float headerHeight = 30;
constexpr float rowHeight = 20;

template <typename... Arguments>
void note(bool edit, const QzBase& object, const char* operation, const Arguments&... arguments) {
    recording::Journal::instance().note(edit, object.name + '.' + operation, arguments...);
}

template <typename Port>
std::size_t positionOf(const std::vector<Port>& ports, const std::string& name) {
    const auto found = std::find_if(ports.begin(), ports.end(), [&](const Port& port) { return port.name == name; });
    return static_cast<std::size_t>(found - ports.begin());
}

float heightOf(std::size_t inputs, std::size_t outputs) {
    return rowHeight * static_cast<float>(std::max(inputs, outputs));
}

const char* nameOf(const QzBase* object) {
    return object ? object->name.c_str() : "null";
}

template <typename Port, typename Shown>
std::vector<Port*> pointersTo(std::vector<Port>& ports, Shown isShown) {
    std::vector<Port*> found;
    for (Port& port : ports) {
        if (isShown(port)) {
            found.push_back(&port);
        }
    }
    return found;
}

const auto isFed = [](const QzBase::Input& input) { return input.source != nullptr; };
const auto feeds = [](const QzBase::Output& output) { return !output.consumers.empty(); };
const auto any = [](const auto&) { return true; };

}  // namespace

QzBase::QzBase(Part* part) : part(part) {}

QzBase::~QzBase() {
    delete part;
}

namespace recording {

Plugin::Plugin(QzManager* manager, std::size_t kind, const std::string& uniqueName) : QzBase(new Part) {
    const Script& script = State::instance().script;
    name = uniqueName;
    description = script.templates.at(kind).description;
    part->manager = manager;
    part->kind = &script.kinds.at(kind);
    part->width = script.templates[kind].width;
    part->inputs = script.templates[kind].inputs;
    part->outputs = script.templates[kind].outputs;
}

void Plugin::unbindAll() {
    for (Input& input : part->inputs) {
        unbind(input);
    }
    for (Output& output : part->outputs) {
        while (!output.consumers.empty()) {
            auto* consumer = static_cast<Plugin*>(output.consumers.back());
            consumer->unbind(consumer->part->inputs.at(static_cast<std::size_t>(output.consumerInputs.back())));
        }
    }
}

void Plugin::unbind(Input& input) {
    if (!input.source) {
        return;
    }
    Output& output = static_cast<Plugin*>(input.source)->part->outputs.at(input.sourceOutput);
    const auto position = static_cast<int>(&input - part->inputs.data());
    for (std::size_t i = 0; i < output.consumers.size(); ++i) {
        if (output.consumers[i] == this && output.consumerInputs[i] == position) {
            output.consumers.erase(output.consumers.begin() + static_cast<std::ptrdiff_t>(i));
            output.consumerInputs.erase(output.consumerInputs.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
    input.source = nullptr;
}

void Plugin::setValue(int input, const std::string& value) {
    part->inputs.at(static_cast<std::size_t>(input)).value = value;
}

}  // namespace recording

void QzBase::Disconnect(const std::string& output, QzBase* receiver, const std::string& input) {
    note(true, *this, "Disconnect", output, nameOf(receiver), input);
    const std::size_t position = receiver ? positionOf(receiver->part->inputs, input) : 0;
    if (!receiver || position == receiver->part->inputs.size()) {
        return;
    }
    Input& bound = receiver->part->inputs[position];
    if (bound.source == this && part->outputs[bound.sourceOutput].name == output) {
        static_cast<recording::Plugin*>(receiver)->unbind(bound);
    }
}

bool QzBase::Connect(const std::string& input, QzBase* sender, const std::string& output) {
    note(true, *this, "Connect", input, nameOf(sender), output);
    const std::size_t position = positionOf(part->inputs, input);
    const std::size_t source = sender ? positionOf(sender->part->outputs, output) : 0;
    if (!sender || position == part->inputs.size() || source == sender->part->outputs.size()) {
        return false;
    }
    Input& bound = part->inputs[position];
    static_cast<recording::Plugin*>(this)->unbind(bound);
    bound.source = sender;
    bound.sourceOutput = static_cast<std::uint32_t>(source);
    sender->part->outputs[source].consumers.push_back(this);
    sender->part->outputs[source].consumerInputs.push_back(static_cast<int>(position));
    return true;
}

void QzBase::SetPosition(float x, float y) {
    note(true, *this, "SetPosition", x, y);
    part->x = x;
    part->y = y;
}

void QzBase::GetPosition(float& x, float& y) const {
    note(false, *this, "GetPosition");
    x = part->x;
    y = part->y;
}

void QzBase::GetOuterExtent(float& width, float& height) const {
    note(false, *this, "GetOuterExtent");
    width = part->width;
    height = heightOf(part->inputs.size(), part->outputs.size()) + headerHeight;
}

void QzBase::GetExtent(float& width, float& height) const {
    note(false, *this, "GetExtent");
    width = part->width;
    height = heightOf(part->inputs.size(), part->outputs.size());
}

void QzBase::GetDrawnExtent(float& width, float& height) const {
    note(false, *this, "GetDrawnExtent");
    width = part->width;
    height = part->isExpanded
                 ? heightOf(part->inputs.size(), part->outputs.size())
                 : heightOf(pointersTo(part->inputs, isFed).size(), pointersTo(part->outputs, feeds).size());
}

void QzBase::SetExpanded(bool isExpanded) {
    note(true, *this, "SetExpanded", isExpanded ? "true" : "false");
    part->isExpanded = isExpanded;
}

bool QzBase::IsExpanded() const {
    note(false, *this, "IsExpanded");
    return part->isExpanded;
}

void QzBase::SetName(const std::string& newName) {
    note(true, *this, "SetName", newName);
    const auto& plugins = part->manager->plugins;
    const bool isTaken =
        std::any_of(plugins.begin(), plugins.end(), [&](const QzBase* other) { return other->name == newName; });
    if (!newName.empty() && !isTaken) {
        name = newName;
    }
}

const std::string& QzBase::GetName() const {
    note(false, *this, "GetName");
    return name;
}

const QzKind* QzBase::GetKind() const {
    note(false, *this, "GetKind");
    return part->kind;
}

QzManager* QzBase::GetManager() const {
    note(false, *this, "GetManager");
    return part->manager;
}

std::vector<QzBase::Output>& QzBase::Outputs() {
    note(false, *this, "Outputs");
    return part->outputs;
}

std::vector<QzBase::Output*> QzBase::ReducedOutputs() {
    note(false, *this, "ReducedOutputs");
    return pointersTo(part->outputs, feeds);
}

std::vector<QzBase::Output*> QzBase::FullOutputs() {
    note(false, *this, "FullOutputs");
    return pointersTo(part->outputs, any);
}

std::vector<QzBase::Input>& QzBase::Inputs() {
    note(false, *this, "Inputs");
    return part->inputs;
}

std::vector<QzBase::Input*> QzBase::ReducedInputs() {
    note(false, *this, "ReducedInputs");
    return pointersTo(part->inputs, isFed);
}

std::vector<QzBase::Input*> QzBase::FullInputs() {
    note(false, *this, "FullInputs");
    return pointersTo(part->inputs, any);
}

int QzBase::InputIndex(const std::string& input) const {
    note(false, *this, "InputIndex", input);
    const std::size_t position = positionOf(part->inputs, input);
    return position == part->inputs.size() ? -1 : static_cast<int>(position);
}
