#include "Journal.h"
#include "Plugin.h"
#include "State.h"

#include <QzSentence.h>

#include <algorithm>
#include <sstream>

struct QzManager::Part {};

namespace {

using recording::Document;
using recording::State;

template <typename... Arguments>
void note(bool edit, const char* operation, const Arguments&... arguments) {
    recording::Journal::instance().note(edit, operation, arguments...);
}

bool isIn(const QzManager& manager, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < manager.plugins.size();
}

std::size_t positionOf(const QzManager& manager, const std::string& name) {
    const auto found = std::find_if(manager.plugins.begin(), manager.plugins.end(),
                                    [&](const QzBase* object) { return object->name == name; });
    return static_cast<std::size_t>(found - manager.plugins.begin());
}

/// The requested name, with a number appended if it is in use.
std::string freeName(const QzManager& manager, const std::string& wanted) {
    std::string name = wanted;
    for (int number = 1; positionOf(manager, name) < manager.plugins.size(); ++number) {
        name = wanted + std::to_string(number);
    }
    return name;
}

QzBase* make(QzManager& manager, std::size_t kind, const std::string& wanted) {
    manager.plugins.push_back(new recording::Plugin(&manager, kind, freeName(manager, wanted)));
    return manager.plugins.back();
}

/// Not recorded: the library's calls to itself are not calls of the editor.
struct Bare : QzBase {
    using QzBase::part;
};

QzBase::Part& insideOf(QzBase& object) {
    return *(object.*&Bare::part);
}

std::map<std::string, QzBase*> appendPlugins(QzManager& manager, const Document& document) {
    const auto& kinds = State::instance().script.kinds;
    std::map<std::string, QzBase*> made;
    for (const auto& entry : document.plugins) {
        const auto kind =
            std::find_if(kinds.begin(), kinds.end(), [&](const QzKind& known) { return known.name == entry.kind; });
        QzBase* object = make(manager, static_cast<std::size_t>(kind - kinds.begin()), entry.name);
        insideOf(*object).x = entry.x;
        insideOf(*object).y = entry.y;
        insideOf(*object).isExpanded = !entry.isCollapsed;
        made[entry.name] = object;
    }
    return made;
}

void bind(const recording::DocumentBinding& binding, const std::map<std::string, QzBase*>& made) {
    QzBase* receiver = made.at(binding.receiver);
    QzBase* sender = made.at(binding.sender);
    auto& inputs = insideOf(*receiver).inputs;
    auto& outputs = insideOf(*sender).outputs;
    const auto input =
        std::find_if(inputs.begin(), inputs.end(), [&](auto& port) { return port.name == binding.input; });
    const auto output =
        std::find_if(outputs.begin(), outputs.end(), [&](auto& port) { return port.name == binding.output; });
    input->source = sender;
    input->sourceOutput = static_cast<std::uint32_t>(output - outputs.begin());
    output->consumers.push_back(receiver);
    output->consumerInputs.push_back(static_cast<int>(input - inputs.begin()));
}

}  // namespace

QzManager::QzManager(const std::string& factory) : part(nullptr) {
    note(true, "QzManager", factory);
}

QzManager::~QzManager() {
    note(true, "~QzManager");
    for (QzBase* object : plugins) {
        delete static_cast<recording::Plugin*>(object);
    }
}

bool QzManager::loadAIDA(const std::string& file) {
    note(true, "loadAIDA", file);
    return true;
}

void QzManager::SetFontSize(int portSize, int titleSize) {
    note(true, "SetFontSize", portSize, titleSize);
}

void QzManager::GetListOfPlugins(const std::vector<std::string>& names) {
    note(true, "GetListOfPlugins", names.size());
}

const std::vector<QzKind>& QzManager::GetPlugins() {
    note(false, "GetPlugins");
    return State::instance().script.kinds;
}

const std::vector<QzExample>& QzManager::GetExamples() {
    note(false, "GetExamples");
    return State::instance().script.examples;
}

void QzManager::ReadDocument(const std::string& file) {
    note(true, "ReadDocument", file);
    const auto& documents = State::instance().script.documents;
    const auto document = documents.find(file.substr(file.rfind('/') + 1));
    if (document == documents.end()) {
        return;
    }
    const auto made = appendPlugins(*this, document->second);
    for (const auto& binding : document->second.bindings) {
        bind(binding, made);
    }
    if (fileName.empty()) {
        fileName = file;
    }
}

void QzManager::SetFileName(const std::string& file) {
    note(true, "SetFileName", file);
    fileName = file;
}

void QzManager::Reset() {
    note(true, "Reset");
}

std::string QzManager::DocumentText() {
    note(false, "DocumentText");
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (QzBase* object : plugins) {
        const QzBase::Part& inside = insideOf(*object);
        text << object->name << " at " << inside.x << ' ' << inside.y;
        for (const QzBase::Input& input : inside.inputs) {
            text << ", " << input.name << " = " << (input.source ? input.source->name : input.value);
        }
        text << '\n';
    }
    return text.str();
}

void QzManager::DeletePlugin(int index) {
    note(true, "DeletePlugin", index);
    if (!isIn(*this, index)) {
        return;
    }
    auto* object = static_cast<recording::Plugin*>(plugins[static_cast<std::size_t>(index)]);
    object->unbindAll();
    plugins.erase(plugins.begin() + index);
    delete object;
}

void QzManager::SetStart(const int& index) {
    note(true, "SetStart", index);
    if (isIn(*this, index)) {
        std::rotate(plugins.begin(), plugins.begin() + index, plugins.begin() + index + 1);
    }
}

QzBase* QzManager::CreatePlugin(std::uint16_t kind, const std::string& uniqueName) {
    note(true, "CreatePlugin", kind, uniqueName);
    return kind < State::instance().script.kinds.size() ? make(*this, kind, uniqueName) : nullptr;
}

void QzManager::SetInputValue(int index, int input, const std::string& value) {
    note(true, "SetInputValue", index, input, value);
    if (isIn(*this, index)) {
        static_cast<recording::Plugin*>(plugins[static_cast<std::size_t>(index)])->setValue(input, value);
        if (State::instance().valueIsSet) {
            State::instance().valueIsSet(*plugins[static_cast<std::size_t>(index)], input);
        }
    }
}

void QzManager::Run() {
    note(true, "Run");
    State::instance().run();
    note(true, "Run has ended");
}

void QzManager::Stop() {
    note(true, "Stop");
    State::instance().stop();
}

QzBase* QzManager::FindPlugin(const std::string& name) {
    note(false, "FindPlugin", name);
    const std::size_t position = positionOf(*this, name);
    return position < plugins.size() ? plugins[position] : nullptr;
}

int QzManager::IndexOf(const std::string& name) {
    note(false, "IndexOf", name);
    const std::size_t position = positionOf(*this, name);
    return position < plugins.size() ? static_cast<int>(position) : -1;
}

extern "C" __attribute__((visibility("default"))) QzSentenceFunction QzSentence;

void QzSentence(const char* sentence) {
    note(false, "Sentence", sentence);
}
