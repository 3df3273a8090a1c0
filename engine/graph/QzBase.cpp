#include "graph/Bindings.h"
#include "graph/Log.h"
#include "graph/ManagerImpl.h"
#include "graph/NodeExtent.h"
#include "graph/preview/ColumnDescriptions.h"

#include <algorithm>
#include <cmath>

using velmorak::outputIndex;

QzBase::QzBase(Part* part) : part(part) {}

QzBase::~QzBase() {
    delete part;
}

void QzBase::Disconnect(const std::string& output, QzBase* receiver, const std::string& input) {
    QzManager::Part& owner = QzManager::Part::of(*part->manager);
    if (!owner.owned.contains(receiver)) {
        return;
    }
    const int from = outputIndex(*this, output);
    const int to = receiver->InputIndex(input);
    if (from < 0 || to < 0) {
        return;
    }
    const Input& fed = Part::of(*receiver).inputs[static_cast<std::size_t>(to)];
    if (fed.source != this || fed.sourceOutput != static_cast<std::uint32_t>(from)) {
        return;
    }
    {
        const std::lock_guard guard(owner.lock);
        velmorak::unbind(*receiver, static_cast<std::size_t>(to));
    }
    owner.journal.noteChange();
    velmorak::refreshColumns({receiver});
}

bool QzBase::Connect(const std::string& input, QzBase* sender, const std::string& output) {
    QzManager::Part& owner = QzManager::Part::of(*part->manager);
    if (!owner.owned.contains(sender)) {
        return false;
    }
    const int from = outputIndex(*sender, output);
    const int to = InputIndex(input);
    if (from < 0 || to < 0) {
        return false;
    }
    {
        const std::lock_guard guard(owner.lock);
        velmorak::bind(*this, static_cast<std::size_t>(to), *sender, static_cast<std::size_t>(from));
    }
    owner.journal.noteChange();
    velmorak::refreshColumns({this});
    return true;
}

/// A document can only hold finite coordinates; others leave the plug-in where it is.
void QzBase::SetPosition(float x, float y) {
    if (!std::isfinite(x) || !std::isfinite(y)) {
        return;
    }
    QzManager::Part& owner = QzManager::Part::of(*part->manager);
    const std::lock_guard guard(owner.lock);
    part->x = x;
    part->y = y;
    owner.journal.noteChange();
}

void QzBase::GetPosition(float& x, float& y) const {
    x = part->x;
    y = part->y;
}

void QzBase::GetOuterExtent(float& width, float& height) const {
    GetExtent(width, height);
    height += velmorak::headerHeight;
}

void QzBase::GetExtent(float& width, float& height) const {
    const velmorak::Extent extent = velmorak::fullExtent(*this);
    width = extent.width;
    height = extent.height;
}

void QzBase::GetDrawnExtent(float& width, float& height) const {
    const velmorak::Extent extent = velmorak::drawnExtent(*this);
    width = extent.width;
    height = extent.height;
}

void QzBase::SetExpanded(bool isExpanded) {
    QzManager::Part& owner = QzManager::Part::of(*part->manager);
    const std::lock_guard guard(owner.lock);
    part->isExpanded = isExpanded;
    owner.journal.noteChange();
}

bool QzBase::IsExpanded() const {
    return part->isExpanded;
}

void QzBase::SetName(const std::string& newName) {
    if (newName == name) {
        return;
    }
    std::string reason;
    if (newName.empty()) {
        reason = "a name must not be empty";
    } else if (velmorak::validUtf8(newName) != newName) {
        reason = "the text is not UTF-8";
    } else if (part->manager->FindPlugin(newName)) {
        reason = "another plug-in has that name";
    }
    if (!reason.empty()) {
        velmorak::printMessage(name + " cannot be renamed to " + velmorak::quote(velmorak::validUtf8(newName)) + ": " +
                               reason + ".");
        return;
    }
    QzManager::Part& owner = QzManager::Part::of(*part->manager);
    const std::lock_guard guard(owner.lock);
    name = newName;
    owner.journal.noteChange();
}

const std::string& QzBase::GetName() const {
    return name;
}

const QzKind* QzBase::GetKind() const {
    return part->record;
}

QzManager* QzBase::GetManager() const {
    return part->manager;
}

std::vector<QzBase::Output>& QzBase::Outputs() {
    return part->outputs;
}

std::vector<QzBase::Output*> QzBase::ReducedOutputs() {
    velmorak::showColumns(*this);
    std::vector<Output*> shown;
    for (Output& output : part->outputs) {
        if (!output.consumers.empty()) {
            shown.push_back(&output);
        }
    }
    return shown;
}

std::vector<QzBase::Output*> QzBase::FullOutputs() {
    velmorak::showColumns(*this);
    std::vector<Output*> shown;
    for (Output& output : part->outputs) {
        shown.push_back(&output);
    }
    return shown;
}

std::vector<QzBase::Input>& QzBase::Inputs() {
    return part->inputs;
}

std::vector<QzBase::Input*> QzBase::ReducedInputs() {
    std::vector<Input*> shown;
    for (Input& input : part->inputs) {
        if (input.source) {
            shown.push_back(&input);
        }
    }
    return shown;
}

std::vector<QzBase::Input*> QzBase::FullInputs() {
    std::vector<Input*> shown;
    for (Input& input : part->inputs) {
        shown.push_back(&input);
    }
    return shown;
}

int QzBase::InputIndex(const std::string& input) const {
    const auto found = std::ranges::find(part->inputs, input, &Input::name);
    return found == part->inputs.end() ? -1 : static_cast<int>(found - part->inputs.begin());
}
